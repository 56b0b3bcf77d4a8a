#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace logreader {

/// The file that remembers the last entry that was printed, over runs of the program: one line with the entry's id.
class Cursor final {
  public:
    struct Place {
        std::string mark;  ///< of the entry's file
        std::uint64_t offset = 0;
    };

    explicit Cursor(std::string path) : path_(std::move(path)) {}

    /// Where the last run ended; nothing when there was none, or when the file is empty or holds zeros, as a power
    /// cut may leave it. Throws std::runtime_error when something else is there: it is not to be replaced.
    std::optional<Place> read() const;
    /// Puts an id in place of the old one, by a rename: a reader of the file finds one of the two. False, with
    /// `errno`, when it cannot be written.
    bool write(const std::string& id);

    const std::string& path() const { return path_; }

  private:
    std::string path_;
    std::string written_;
};

}  // namespace logreader
