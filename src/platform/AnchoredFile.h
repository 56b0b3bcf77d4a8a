#pragma once

#include "platform/File.h"

#include <array>

namespace platform {

/// A path that is opened again and again. Its directory is held open, which makes each opening cheaper. Not
/// for use by two threads at once.
class AnchoredFile final {
  public:
    AnchoredFile() noexcept = default;
    AnchoredFile(const AnchoredFile&) = delete;
    AnchoredFile& operator=(const AnchoredFile&) = delete;
    ~AnchoredFile();

    /// Sets the path; a path longer than the system takes cannot be opened.
    void setPath(std::string_view path) noexcept;
    /// Takes a fresh hold of the directory; to be called now and then, since the one held may have been
    /// replaced.
    void refresh() noexcept;

    /// As `File::open`.
    File open(OpenMode mode) noexcept;
    /// Opens for reading and answers the length, -1 when it cannot be opened. The cheapest look at a file:
    /// what the path leads to is not examined further.
    std::int64_t probeSize() const noexcept;

  private:
    std::array<char, 4096> path_{};
    const char* name_ = path_.data();  ///< behind the directory part
    int directory_ = -1;
};

}  // namespace platform
