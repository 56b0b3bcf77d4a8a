#include "config/MemoryReserve.h"

#include <atomic>
#include <cstddef>

namespace {

constexpr std::size_t kSize =
    std::size_t{512} * 1024;  // nearly twice what the XML toolkit holds once it is started

std::atomic<char*> reserve{nullptr};
std::atomic<std::new_handler> handlerBefore{nullptr};

void giveUpReserve() {
    if (char* const block = reserve.exchange(nullptr)) {
        delete[] block;
        return;
    }
    const std::new_handler before = handlerBefore;
    if (before == nullptr) {
        throw std::bad_alloc();
    }
    before();
}

}  // namespace

MemoryReserve::MemoryReserve() : previous_(std::get_new_handler()) {
    reserve = new char[kSize];
    handlerBefore = previous_;
    std::set_new_handler(&giveUpReserve);
}

MemoryReserve::~MemoryReserve() {
    std::set_new_handler(previous_);
    delete[] reserve.exchange(nullptr);
}
