// The loaded module, among what the simulator shows it.
#pragma once

#include "lib/Module.h"

namespace sim {

/// The module sees the simulation's time as long as the object lives.
class Module final : public agent::Module {
  public:
    /// Throws std::runtime_error naming the path, or the export that is missing.
    explicit Module(const std::string& path);
    Module(const Module&) = delete;
    Module& operator=(const Module&) = delete;
    /// Leaves the module loaded: what it still owns when the process ends is its business, and in its reach.
    ~Module();

    /// Takes the module out of the process, with what it opened. Throws std::runtime_error when it stays.
    void drop();
};

}  // namespace sim
