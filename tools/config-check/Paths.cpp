#include "Paths.h"

#include <algorithm>
#include <system_error>

namespace check {

std::filesystem::path nativePath(const std::string& path) {
    std::string native = path;
    std::replace(native.begin(), native.end(), '\\', '/');
    return native;
}

std::filesystem::path fromHere(const std::string& path) {
    std::error_code error;
    const std::filesystem::path absolute = std::filesystem::absolute(nativePath(path), error);
    return (error ? nativePath(path) : absolute).lexically_normal();
}

bool isRelative(const std::string& path) {
    return nativePath(path).is_relative();
}

}  // namespace check
