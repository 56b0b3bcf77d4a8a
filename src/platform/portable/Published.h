#pragma once

#include "platform/portable/Lock.h"

#include <memory>

namespace platform {

/// The one object of its kind that all threads use while others may replace it. It is handed out by counted
/// reference: its users keep it, a replaced object goes with the last of them, and no thread waits for
/// another. Any thread. One for the whole process is best a `NoDestructor`.
template <typename T>
class Published final {
  public:
    std::shared_ptr<T> get() const noexcept {
        const Lock lock(mutex_);
        return object_;
    }

    /// Publishes `fresh` (null: nothing) and hands out what was published before.
    std::shared_ptr<T> exchange(std::shared_ptr<T> fresh) noexcept {
        {
            const Lock lock(mutex_);
            object_.swap(fresh);
        }
        return fresh;  // released, if it is, with no lock held
    }

    /// Takes `object` away if it is the one that is published.
    void withdraw(const std::shared_ptr<T>& object) noexcept {
        std::shared_ptr<T> withdrawn;  // released, if it is, with no lock held
        const Lock lock(mutex_);
        if (object_ == object) {
            withdrawn.swap(object_);
        }
    }

    /// Publishes `fresh` unless there is an object; returns the published one.
    std::shared_ptr<T> publishFirst(std::shared_ptr<T> fresh) noexcept {
        const Lock lock(mutex_);
        if (object_ == nullptr) {
            object_ = fresh;
        }
        return object_;
    }

  private:
    mutable Mutex mutex_;
    std::shared_ptr<T> object_;
};

}  // namespace platform
