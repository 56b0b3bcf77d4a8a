#pragma once

#include "platform/File.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace platform {

enum class Renaming {
    Done,
    NameTaken,  ///< the new name exists, nothing was changed
    Failed
};

/// A directory that is held, or none. Its files are named as `list` names them, with whatever
/// characters; nothing behind a symbolic link is removed or renamed. The hold stays with the directory when
/// that is moved; without one all fails. Not for use by two threads at once.
class Directory final {
  public:
    Directory() noexcept = default;
    Directory(const Directory&) = delete;
    Directory& operator=(const Directory&) = delete;
    ~Directory() { close(); }

    /// Takes hold of the directory that the path leads to now, instead of the one held before, which stays
    /// when that fails. 0, or the error number (2 when there is no such directory).
    int open(std::string_view path) noexcept;
    void close() noexcept;

    /// Appends the names of all entries, "." and ".." included, in any order. 0, or the error number; the
    /// names are then those up to the failure. Throws only when memory runs out.
    int list(std::vector<std::string>& names) const;
    /// As `File::open`.
    File openFile(const std::string& name, OpenMode mode) const noexcept;
    /// What stands at the name, behind symbolic links. On POSIX nothing is opened.
    Look look(const std::string& name) const noexcept;
    /// False when the system says that the process may not read what stands at the name. Opens nothing.
    bool mayRead(const std::string& name) const noexcept;
    /// Seconds (UTC scale) of the last modification of a regular file, or of a symbolic link, for which that
    /// of the file that it leads to counts when it is the later one; nothing for other things.
    std::optional<std::int64_t> modifiedAt(const std::string& name) const noexcept;
    /// Gives that time to a file, or to a symbolic link itself. False when it fails.
    bool setModifiedAt(const std::string& name, std::int64_t moment) const noexcept;
    /// Removes a file or a symbolic link. False when it fails.
    bool remove(const std::string& name) const noexcept;
    /// Renames what leads to a regular file, and nothing else, without replacing what exists. (A file system
    /// that cannot ensure the latter is asked before.) `to` is a name in this directory or an absolute path.
    Renaming rename(const std::string& from, const std::string& to) const noexcept;

  private:
    NativeDirectory descriptor_ = kNoDirectory;
};

}  // namespace platform
