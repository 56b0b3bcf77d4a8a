#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

/// Observers of a subject in the order in which they were attached; not owned. An observer attached twice is
/// called twice. One thread at a time.
template <typename ObserverType>
class ObserverList final {
  public:
    void attach(ObserverType* observer) {
        if (observer != nullptr) {
            observers_.push_back(observer);
        }
    }

    /// Removes the first entry equal to `observer`, if there is one.
    void detach(const ObserverType* observer) {
        if (const auto found = std::find(observers_.begin(), observers_.end(), observer);
            found != observers_.end()) {
            observers_.erase(found);
        }
    }

    std::size_t count() const noexcept { return observers_.size(); }
    /// The observer at a position, or null when one before it has been detached.
    ObserverType* at(std::size_t position) const noexcept {
        return position < observers_.size() ? observers_[position] : nullptr;
    }

  private:
    std::vector<ObserverType*> observers_;
};
