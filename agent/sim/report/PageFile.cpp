#include "sim/report/PageFile.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <stdexcept>
#include <utility>

namespace sim {

namespace {

void check(const std::ofstream& file, const std::string& path) {
    if (!file) {
        throw std::runtime_error(path + ": " + std::strerror(errno));
    }
}

}  // namespace

PageFile::PageFile(std::string path) : path_(std::move(path)) {
    check(std::ofstream(path_, std::ios::binary | std::ios::app), path_);
}

void PageFile::write(std::string_view page) {
    std::ofstream file(path_, std::ios::binary | std::ios::trunc);
    file.write(page.data(), static_cast<std::streamsize>(page.size()));
    file.close();
    check(file, path_);
}

}  // namespace sim
