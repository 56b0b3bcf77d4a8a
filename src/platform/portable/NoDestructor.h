#pragma once

#include <cstddef>
#include <new>

namespace platform {

/// Storage for a value that is never destroyed: threads may still use it while the process ends.
template <typename T>
class NoDestructor final {
  public:
    NoDestructor() noexcept { ::new (static_cast<void*>(storage_)) T; }
    NoDestructor(const NoDestructor&) = delete;
    NoDestructor& operator=(const NoDestructor&) = delete;

    T& operator*() noexcept { return *std::launder(reinterpret_cast<T*>(storage_)); }
    T* operator->() noexcept { return &**this; }

  private:
    alignas(T) std::byte storage_[sizeof(T)];
};

}  // namespace platform
