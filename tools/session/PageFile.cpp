#include "session/PageFile.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace session {

namespace {

namespace fs = std::filesystem;

void check(const std::ofstream& file, const std::string& path) {
    if (!file) {
        throw std::runtime_error(path + ": " + std::strerror(errno));
    }
}

}  // namespace

PageFile::PageFile(std::string path) : path_(std::move(path)) {
    std::error_code none;
    const fs::path place = fs::is_symlink(path_, none) ? fs::weakly_canonical(path_, none) : fs::path(path_);
    renamed_ = place.string();
    // A device or a pipe takes the page as it comes.
    const bool isKept = fs::exists(place, none) && !fs::is_regular_file(place, none);
    written_ = isKept ? renamed_ : renamed_ + ".new";
    check(std::ofstream(written_, std::ios::binary | std::ios::app), path_);
    if (!isKept) {
        fs::remove(written_, none);
    }
}

void PageFile::write(const std::function<void(std::ostream&)>& write) {
    std::ofstream file(written_, std::ios::binary | std::ios::trunc);
    write(file);
    file.close();
    check(file, path_);
    if (std::error_code error; written_ != renamed_ && (fs::rename(written_, renamed_, error), error)) {
        throw std::runtime_error(path_ + ": " + error.message());
    }
}

}  // namespace session
