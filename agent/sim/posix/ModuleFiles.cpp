#include "sim/posix/ModuleFiles.h"

#include <map>
#include <mutex>
#include <utility>

#include <sys/stat.h>
#include <unistd.h>

namespace sim {

namespace {

/// Tells a descriptor from a later one with the same number.
using FileId = std::pair<dev_t, ino_t>;

std::mutex mutex;
std::map<int, FileId> opened;

bool identify(int descriptor, FileId& file) {
    struct stat state = {};
    if (::fstat(descriptor, &state) != 0) {
        return false;
    }
    file = {state.st_dev, state.st_ino};
    return true;
}

}  // namespace

void noteOpened(int descriptor) {
    FileId file;
    if (identify(descriptor, file)) {
        const std::lock_guard lock(mutex);
        opened[descriptor] = file;
    }
}

void closeOpened() {
    const std::lock_guard lock(mutex);
    for (const auto& [descriptor, file] : std::exchange(opened, {})) {
        FileId now;
        if (identify(descriptor, now) && now == file) {
            ::close(descriptor);
        }
    }
}

}  // namespace sim
