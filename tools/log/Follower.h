#pragma once

#include "Archives.h"
#include "Listing.h"
#include "OpenLog.h"
#include "TimeZone.h"

#include <memory>
#include <string>
#include <vector>

namespace logreader {

/// Reads a log file as it grows, and over its rotations: each entry is printed once, whether its file is still the log
/// file or an archive by then. New entries are found by the files, not by their times: the clock may be set back.
class Follower final {
  public:
    /// `log` is the log file, not open when there is none yet; of the archives, those `known` are not to be printed.
    /// `listing` must outlive this. `quiet`: no word about a log that was replaced or emptied.
    Follower(const LogFile& log, std::vector<ArchiveIdentity> known, TimeZone logZone, Listing& listing,
             bool quiet);

    /// Prints what was written since the last look. What stands at the end of the file waits for one more
    /// look, since its other half may follow. Throws std::runtime_error when a file cannot be read.
    void look();

  private:
    void follow(platform::File file);
    bool printNew();
    void printRest();
    void goOver(platform::File present);
    std::vector<LogFile> inOrder(Archives& archives, const platform::File& present) const;
    bool isKnown(const ArchiveIdentity& archive) const;
    bool isWhatWasFollowed(const LogFile& archive) const;
    void note(const std::string& text) const;

    std::string path_;
    std::vector<ArchiveIdentity> known_;  ///< in order
    TimeZone logZone_;
    Listing& listing_;
    bool quiet_;
    std::unique_ptr<OpenLog> log_;  ///< null until the file is there
};

/// Prints all entries of a file. False, after a word about it, when it could not be read.
bool printAll(const LogFile& file, Listing& listing);
/// The same of what a reader reads; throws what that throws.
void printAll(const std::string& path, EntryReader& entries, Listing& listing);

}  // namespace logreader
