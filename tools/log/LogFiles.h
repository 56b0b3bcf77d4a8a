#pragma once

#include "Archives.h"
#include "TimeZone.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace logreader {

/// All files to be read for the ones named on a command line, each once: archives, oldest first, then log files as they
/// were named. They are handed out from the end. Log files are opened at once, so that a rotation that comes between
/// this and the reading loses nothing.
class LogFiles final {
  public:
    /// `followed`: a log file whose archives, as far as they are not among these, are read as they come.
    LogFiles(const std::vector<std::string>& named, const TimeZone& zone, bool followed = false);

    /// The files before those handed out, in their order; none when there are no more. They can be read without those
    /// before them: they begin with an entry whose moment is certain, and in another second than the file before.
    std::vector<LogFile> older();
    /// One that was handed out, by its `place`: of a hundred thousand only those are kept, which takes little room.
    LogFile at(std::uint32_t place) const;
    /// Calls `read` for all that are left, in their order.
    void forAll(const std::function<void(const LogFile&)>& read);
    /// Hands all out anew.
    void restart();
    /// False when a folder could not be listed.
    bool isWhole() const { return isWhole_; }
    /// False when none of the files that are left can hold an entry of this moment or a later one.
    bool mayHoldFrom(std::chrono::sys_seconds moment);
    /// See `Archives`. Before the first `older`.
    void leaveOutFrom(std::chrono::sys_seconds moment) { archives_.leaveOutFrom(moment); }
    bool clockWasSetBack() const { return archives_.clockWasSetBack(); }
    bool orderIsUnsure() const { return archives_.orderIsUnsure(); }
    std::vector<ArchiveIdentity> archives() const { return archives_.identities(); }

  private:
    void openWithArchives(const std::string& path, bool followed);
    std::optional<LogFile> next();

    TimeZone zone_;
    Archives archives_;
    std::vector<LogFile> logs_;
    std::size_t logsLeft_ = 0;
    std::optional<LogFile> ahead_;  ///< the one before those handed out
    bool begun_ = false;
    bool isWhole_ = true;
};

}  // namespace logreader
