#pragma once

#include "Listing.h"
#include "OpenLog.h"

#include <memory>
#include <string>

namespace logreader {

/// Reads a log file as it grows, and over its rotations: each entry is printed once, whether its file is
/// still the log file or an archive by then.
class Follower final {
  public:
    /// `file` is the log file, closed when there is none yet. `listing` must outlive this.
    Follower(std::string path, platform::File file, Listing& listing);

    /// Prints what was written since the last look. What stands at the end of the file waits for one more
    /// look, since its other half may follow. Throws std::runtime_error when a file cannot be read.
    void look();

  private:
    bool printNew();
    void printRest();
    void goOver(platform::File present);

    std::string path_;
    Listing& listing_;
    std::unique_ptr<OpenLog> log_;  ///< null until the file is there
};

/// Prints all entries.
void printAll(OpenLog& log, Listing& listing);

}  // namespace logreader
