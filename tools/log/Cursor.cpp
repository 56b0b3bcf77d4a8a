#include "Cursor.h"

#include "platform/File.h"

#include <cerrno>
#include <cstdio>
#include <memory>
#include <re2/re2.h>
#include <stdexcept>

#include <unistd.h>

namespace logreader {

std::optional<Cursor::Place> Cursor::read() const {
    constexpr std::size_t kLongest = 100;
    const platform::File file = platform::File::open(path_, platform::OpenMode::Read);
    if (!file.isOpen() && errno == ENOENT) {
        return std::nullopt;
    }
    const auto text = file.readWhole(kLongest);
    Place place;
    if (text && RE2::FullMatch(*text, R"(([0-9a-f]{16}(?:\.\d+)?)-(\d+)\n)", &place.mark, &place.offset)) {
        return place;
    }
    if (!text || text->find_first_not_of('\0') != std::string::npos) {
        throw std::runtime_error(path_ + ": not a cursor, so it is left alone");
    }
    return std::nullopt;
}

bool Cursor::write(const std::string& id) {
    if (id == written_) {
        return true;
    }
    // "x": whatever has that name, or is led to by it, is somebody else's.
    const std::string fresh = path_ + ".new" + std::to_string(::getpid());
    const auto close = [](std::FILE* file) { std::fclose(file); };
    std::unique_ptr<std::FILE, decltype(close)> file(std::fopen(fresh.c_str(), "wxe"), close);
    if (!file) {
        return false;
    }
    if (std::fputs((id + "\n").c_str(), file.get()) < 0 || std::fclose(file.release()) != 0 ||
        std::rename(fresh.c_str(), path_.c_str()) != 0) {
        const int error = errno;
        std::remove(fresh.c_str());
        errno = error;
        return false;
    }
    written_ = id;
    return true;
}

}  // namespace logreader
