#include "common/FileText.h"

#include "platform/File.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>

namespace tools {

FileText readFile(const std::string& path, std::size_t limit) {
    namespace fs = std::filesystem;
    errno = 0;
    const platform::File file = platform::File::open(path, platform::OpenMode::Read);
    if (file.isOpen()) {
        auto text = file.readWhole(limit);
        return {text, false, text ? "" : "cannot be read"};
    }
    const int error = errno;
    std::error_code none;
    const fs::file_status found = fs::status(platform::absolutePath(path), none);
    const bool isMissing = found.type() == fs::file_type::not_found;
    return {std::nullopt, isMissing,
            fs::is_directory(found)                            ? "is a directory"
            : fs::exists(found) && !fs::is_regular_file(found) ? "is not a regular file"
            : error != 0                                       ? std::strerror(error)
            : isMissing                                        ? std::strerror(ENOENT)
                                                               : "cannot be read"};
}

}  // namespace tools
