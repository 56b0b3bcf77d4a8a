#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace tools {

/// The text of a file, or why it has none.
struct FileText {
    std::optional<std::string> text;
    bool isMissing = false;
    std::string reason;  ///< as in "is a directory"
};

/// At most the first `limit` bytes of a regular file; anything else is left alone.
FileText readFile(const std::string& path, std::size_t limit);

}  // namespace tools
