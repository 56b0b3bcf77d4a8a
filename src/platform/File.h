#pragma once

#include "NativeHandles.h"  // of the system that is built for

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace platform {

enum class OpenMode {
    Read,
    ReadWrite,  ///< must exist
    Create,     ///< for reading and writing, made when missing, never emptied
    Append      ///< made when missing, never emptied; every write goes to the end
};

/// What can be seen of a file without opening it. Of one that is not regular only its kind is told.
struct Look {
    enum class Kind {
        Unknown,  ///< it could not be looked at
        Missing,
        Regular,
        Other
    };
    Kind kind = Kind::Unknown;
    std::int64_t size = 0;  ///< bytes
    std::uint64_t device = 0;
    std::uint64_t number = 0;  ///< of the file, on its device
    std::uint32_t mode = 0;
    std::uint32_t owner = 0;
    std::uint32_t group = 0;

    bool isSameFile(const Look& other) const noexcept {
        return kind == other.kind && device == other.device && number == other.number;
    }
    /// Whether also who may do what with it is unchanged.
    bool hasSameAccess(const Look& other) const noexcept {
        return isSameFile(other) && mode == other.mode && owner == other.owner && group == other.group;
    }
};

/// A regular file, open or not. Paths may be spelled with slashes or backslashes. Descriptors are
/// close-on-exec and never one of the three standard ones; anything but a regular file counts as not to be
/// opened, is left alone, and no open ever blocks. Not for use by two threads at once.
class File final {
  public:
    static constexpr std::size_t kLargestRecord = 1024;  ///< bytes, of `overwriteStart`

    File() noexcept = default;
    File(File&& other) noexcept : descriptor_(std::exchange(other.descriptor_, kNoFile)) {}
    File& operator=(File&& other) noexcept {
        if (this != &other) {
            close();
            descriptor_ = std::exchange(other.descriptor_, kNoFile);
        }
        return *this;
    }
    ~File() { close(); }

    /// A closed file when it cannot be opened. `errno` says why: EINVAL when it is not a regular file, EBUSY when
    /// another program keeps it to itself.
    static File open(const std::string& path, OpenMode mode) noexcept;

    bool isOpen() const noexcept { return descriptor_ != kNoFile; }
    void close() noexcept;

    /// The length in bytes, 0 when it cannot be told.
    std::int64_t size() const noexcept;
    /// Seconds (UTC scale) of the last modification, nothing when it cannot be told.
    std::optional<std::int64_t> modifiedAt() const noexcept;
    /// Reads from the start until `buffer` is full or the file ends; the number of bytes read.
    std::size_t readStart(char* buffer, std::size_t size) const noexcept;
    /// Reads up to `size` bytes from a position on; the number of bytes read, 0 at the end, -1 when the file
    /// cannot be read.
    std::ptrdiff_t readAt(std::uint64_t position, char* buffer, std::size_t size) const noexcept;
    /// The whole contents, but at most their first `limit` bytes; nothing when they cannot be read. Throws
    /// only when memory runs out.
    std::optional<std::string> readWhole(std::size_t limit) const;
    /// Writes all of `text` at the end (mode `Append`), its line ends in the system's own spelling: how many
    /// bytes that took. A write that only part of fits is taken back, so that no torn text stays behind,
    /// unless another process has written behind it: nobody else's text is cut. Nothing when not all was
    /// written. The caller has to keep its thread.
    std::optional<std::size_t> append(std::string_view text) noexcept;
    /// Writes `record` over the start of the file in one piece: a process killed at any instant leaves the
    /// old bytes or the new ones. False when the write fails, after which the old bytes are put back, or the
    /// record is too large.
    bool overwriteStart(std::string_view record) noexcept;
    /// Cuts the file to this length. False when it fails.
    bool truncate(std::int64_t size) noexcept;
    /// Waits until the contents are on the disk. False when it fails.
    bool sync() noexcept;

    Look look() const noexcept;
    /// True when both are open on the same file.
    bool isSameFile(const File& other) const noexcept;

  private:
    friend class Directory;
    explicit File(NativeFile descriptor) noexcept : descriptor_(descriptor) {}

    NativeFile descriptor_ = kNoFile;
};

/// Removes a file (not a directory). False when it fails.
bool removeFile(const std::string& path) noexcept;

/// The path in the system's own spelling, and independent of the process's working directory from now on.
/// Throws only when memory runs out.
std::string absolutePath(const std::string& path);
/// Waits until the name of a file is on the disk: what was synced of a new file is lost with its name. Some
/// file systems cannot do that.
void syncName(const std::string& path) noexcept;

/// Position of a path's last separator of either kind, or `npos`.
inline std::size_t lastSeparator(std::string_view path) noexcept {
    return path.find_last_of("/\\");
}

}  // namespace platform
