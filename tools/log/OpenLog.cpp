#include "OpenLog.h"

#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <utility>

namespace logreader {

namespace {

std::shared_ptr<const platform::File> opened(std::string& path) {
    platform::File file = openArchive(path);
    if (!file.isOpen()) {
        // Opening takes nothing but regular files.
        throw std::runtime_error(path + ": " +
                                 (errno == EINVAL ? "not a regular file" : std::strerror(errno)));
    }
    return std::make_shared<platform::File>(std::move(file));
}

}  // namespace

platform::File openArchive(std::string& path) {
    platform::File file = platform::File::open(path, platform::OpenMode::Read);
    if (!file.isOpen() && errno == ENOENT && path.ends_with(".xml")) {
        file = platform::File::open(path + ".gz", platform::OpenMode::Read);
        if (file.isOpen()) {
            path += ".gz";
        } else {
            errno = ENOENT;
        }
    }
    return file;
}

OpenLog::OpenLog(std::string path, std::shared_ptr<const platform::File> file)
    : file_(file ? std::move(file) : opened(path)),
      path_(std::move(path)),
      entries_([this](char* buffer, std::size_t size) {
          try {
              return bytes_.read(buffer, size);
          } catch (const std::runtime_error& error) {
              throw std::runtime_error(path_ + ": " + error.what());
          }
      }) {}

}  // namespace logreader
