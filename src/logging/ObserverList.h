#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

/// Observers of a subject in the order in which they were attached; not owned. An observer attached twice is
/// called twice.
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

    /// Calls `call` for each observer that is attached at the start.
    template <typename Call>
    void notify(Call&& call) const {
        const std::size_t count = observers_.size();
        for (std::size_t i = 0; i < count && i < observers_.size(); ++i) {
            call(*observers_[i]);
        }
    }

  private:
    std::vector<ObserverType*> observers_;
};
