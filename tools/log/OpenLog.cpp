#include "OpenLog.h"

#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <utility>

namespace logreader {

namespace {

std::runtime_error failure(const std::string& path) {
    // Opening takes nothing but regular files.
    return std::runtime_error(path + ": " + (errno == EINVAL ? "not a regular file" : std::strerror(errno)));
}

platform::File opened(const std::string& path) {
    platform::File file = platform::File::open(path, platform::OpenMode::Read);
    if (!file.isOpen()) {
        throw failure(path);
    }
    return file;
}

}  // namespace

OpenLog::OpenLog(const std::string& path) : OpenLog(path, opened(path)) {}

OpenLog::OpenLog(const std::string& path, platform::File file)
    : path_(path), file_(std::move(file)), entries_([this](char* buffer, std::size_t size) {
          const std::ptrdiff_t length = file_.readAt(bytesRead_, buffer, size);
          if (length < 0) {
              throw failure(path_);
          }
          bytesRead_ += static_cast<std::uint64_t>(length);
          return static_cast<std::size_t>(length);
      }) {}

}  // namespace logreader
