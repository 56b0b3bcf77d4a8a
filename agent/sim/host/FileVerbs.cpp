#include "sim/host/FileVerbs.h"

#include "common/FileText.h"
#include "sim/System.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <limits>
#include <stdexcept>
#include <system_error>
#include <utility>

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
    requireFile(path);
    tools::FileText file = tools::readFile(path, std::numeric_limits<std::size_t>::max());
    if (!file.text && !file.isMissing) {
        throw std::runtime_error(path + ": " + file.reason);
    }
    return std::move(file.text);
}

}  // namespace sim
