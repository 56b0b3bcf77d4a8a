#pragma once

#include "support/Workspace.h"

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace support {

/// What a replay of a scenario by the agent simulator left: its trace, its exit status and what it printed.
class Replay final {
  public:
    /// Runs the scenario in the workspace's directory, in time zone `zone`, with further options.
    Replay(const Workspace& workspace, const std::string& scenario, const std::string& zone = "UTC",
           const std::string& options = {});

    int exitStatus() const { return exitStatus_; }
    const std::string& printed() const { return printed_; }
    const std::string& bytes() const { return bytes_; }
    const std::vector<nlohmann::json>& events() const { return events_; }

    /// The events of one kind.
    std::vector<nlohmann::json> all(const std::string& event) const;
    /// Times of the events of one kind, as "35 65 95".
    std::string times(const std::string& event) const;
    /// Times of the force polls, as "35..605/30 650": from 35 to 605 every 30 seconds, and one at 650.
    std::string polls() const;
    /// Reported modes with their times, as "5 grace, 65 activity, 605 off".
    std::string modes() const;
    /// The call with this verb, the `index`-th of them; null when there is none.
    nlohmann::json call(const std::string& verb, std::size_t index = 0) const;
    /// True when the module logged exactly this text at this level.
    bool logged(int level, const std::string& text) const { return countLogged(level, text) > 0; }
    int countLogged(int level, const std::string& text) const;
    /// All that was written to standard output.
    std::string standardOutput() const;
    /// What the last "show" of the path found.
    nlohmann::json shown(const std::string& path) const;

  private:
    int exitStatus_ = -1;
    std::string printed_;
    std::string bytes_;
    std::vector<nlohmann::json> events_;
};

/// Value of a property in an "update-asset" event.
std::string property(const nlohmann::json& update, const std::string& name);

}  // namespace support
