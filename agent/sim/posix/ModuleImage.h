// A loaded library in memory.
#pragma once

#include <cstdint>
#include <utility>
#include <vector>

struct dl_phdr_info;

namespace sim {

class ModuleImage final {
  public:
    /// Measures what dlopen() answered as `library`. Throws std::runtime_error when it cannot be found.
    explicit ModuleImage(void* library);

    std::uintptr_t begin() const { return begin_; }
    std::uintptr_t end() const { return end_; }

    /// Keeps a copy of the variables for the rest of the process. What a killed library held would be gone
    /// with its process; here the copy tells leak checkers that it was in use, and only what was lost before
    /// counts as a leak.
    void keepData() const;

  private:
    static int measure(dl_phdr_info* info, std::size_t size, void* self);

    std::uintptr_t base_ = 0;
    std::uintptr_t begin_ = UINTPTR_MAX;
    std::uintptr_t end_ = 0;
    /// Beginnings and ends of the writable parts.
    std::vector<std::pair<std::uintptr_t, std::uintptr_t>> data_;
};

}  // namespace sim
