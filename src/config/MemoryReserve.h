#pragma once

#include <new>

/// While it lives, an allocation of the C++ library that finds no memory gets it from a reserve which was set
/// aside at its construction. For short steps that must not stop half-way. One at a time; other threads of
/// the process are served from the reserve, too.
class MemoryReserve final {
  public:
    /// Throws std::bad_alloc when the reserve cannot be had.
    MemoryReserve();
    MemoryReserve(const MemoryReserve&) = delete;
    MemoryReserve& operator=(const MemoryReserve&) = delete;
    ~MemoryReserve();

  private:
    std::new_handler previous_;
};
