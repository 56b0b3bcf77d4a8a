#pragma once

#include "EntryReader.h"
#include "platform/File.h"

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <string>

namespace logreader {

/// What a look at a log file or an archive and at its beginning tells.
struct Beginning {
    std::optional<std::chrono::local_seconds> clock;  ///< of its first entry
    bool clean = false;                               ///< nothing stands in front of that entry
    std::uint64_t mark = 0;                           ///< `markOf` the first thing in it, 0 for an empty file
    std::optional<std::chrono::sys_seconds> modified;  ///< when the file was last written to
};

/// Of a file that cannot be read: as of an empty one.
Beginning beginningOf(const platform::File& file);

/// A number for what an entry says, made of its time and text. That of a file's first entry stays with the file:
/// whatever its name is, wherever it is copied, compressed or not, and while it grows.
std::uint64_t markOf(const Entry& entry);

/// The marks of files that follow one another, as texts: those that begin in the same second with the same entry have
/// their number besides.
class FileMarks final {
  public:
    std::string next(std::optional<std::chrono::local_seconds> clock, std::uint64_t mark);

  private:
    std::optional<std::chrono::local_seconds> clock_;
    std::map<std::uint64_t, int> seen_;  ///< among the files that begin then
};

}  // namespace logreader
