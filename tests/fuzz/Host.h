// What the fuzz targets share: a host with a directory of its own, whose output goes nowhere.
#pragma once

#include "lib/AgentHost.h"
#include "support/Workspace.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

namespace fuzz {

/// Made once a process. Its files lie in a directory of its own, which is removed when the process ends.
class Host final {
  public:
    static Host& instance() {
        static Host host;
        return host;
    }

    std::string path(const char* name) const { return workspace_.path(name).string(); }
    void write(const char* name, std::string_view text) const {
        std::FILE* const file = std::fopen(path(name).c_str(), "w");
        std::fwrite(text.data(), 1, text.size(), file);
        std::fclose(file);
    }

  private:
    Host() {
        if (std::freopen("/dev/null", "w", stdout) == nullptr) {
            std::abort();
        }
    }

    support::Workspace workspace_;
    agent::AgentHost agent_;
};

inline std::string_view text(const std::uint8_t* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}

/// Ends the run with a finding when the module did not do what it must.
inline void require(bool kept) {
    if (!kept) {
        std::abort();
    }
}

}  // namespace fuzz
