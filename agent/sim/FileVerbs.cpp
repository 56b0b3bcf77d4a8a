#include "sim/FileVerbs.h"

#include "sim/System.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <system_error>

namespace sim {

namespace {

std::string native(std::string path) {
    std::replace(path.begin(), path.end(), '\\', '/');
    return path;
}

/// Whatever else has that name may not let go of who opens it.
void requireFile(const std::string& path) {
    if (system::isOther(native(path))) {
        throw std::runtime_error(path + ": is not a regular file");
    }
}

[[noreturn]] void fail(const std::string& path, int error) {
    throw std::runtime_error(path + ": " + std::strerror(error));
}

}  // namespace

void writeFile(const std::string& path, const std::string& text, std::chrono::microseconds wall) {
    const std::filesystem::path target = native(path);
    requireFile(path);
    if (target.has_parent_path()) {
        std::filesystem::create_directories(target.parent_path());
    }
    std::ofstream stream(target, std::ios::binary | std::ios::trunc);
    stream << text;
    stream.close();
    if (!stream) {
        fail(path, errno);
    }
    setModified(path, wall);
}

void removeFile(const std::string& path) {
    std::filesystem::remove_all(native(path));
}

void setModified(const std::string& path, std::chrono::microseconds wall) {
    try {
        system::setModified(native(path), wall);
    } catch (const std::system_error& error) {
        throw std::runtime_error(path + ": " + error.code().message());
    }
}

std::optional<std::string> readFile(const std::string& path) {
    const std::string target = native(path);
    requireFile(path);
    std::ifstream stream(target, std::ios::binary);
    if (!stream && (errno == ENOENT || errno == ENOTDIR)) {
        return std::nullopt;
    }
    std::ostringstream contents;
    // An empty file gives the copy nothing to insert, which is not a failure.
    if (!stream || (stream.peek() != std::ifstream::traits_type::eof() && !(contents << stream.rdbuf())) ||
        stream.bad()) {
        fail(path, errno);
    }
    return contents.str();
}

}  // namespace sim
