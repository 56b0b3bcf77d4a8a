#include "lib/SystemThread.h"

#include <cstddef>
#include <cstdint>
#include <list>
#include <mutex>
#include <vector>

#include <pthread.h>

/// Of the address sanitizer, if there is one.
// NOLINTNEXTLINE(bugprone-reserved-identifier): its name
extern "C" void __asan_unpoison_memory_region(const volatile void* begin, std::size_t size)
    __attribute__((weak, visibility("default")));

namespace agent::system {

namespace {

/// The address sanitizer would take what the frames up to `bottom` marked on the stack for marks of those
/// that come after them.
__attribute__((noinline)) void forgetFrames(const void* bottom) {
    if (__asan_unpoison_memory_region != nullptr) {
        const void* here = __builtin_frame_address(0);
        __asan_unpoison_memory_region(here, static_cast<std::size_t>(static_cast<const char*>(bottom) -
                                                                     static_cast<const char*>(here)));
    }
}

}  // namespace

bool canUnwind() {
    return true;
}

bool admitUnwinding(bool admitted) {
    int before = 0;
    pthread_setcancelstate(admitted ? PTHREAD_CANCEL_ENABLE : PTHREAD_CANCEL_DISABLE, &before);
    return before == PTHREAD_CANCEL_ENABLE;
}

void unwind(std::thread& thread) {
    pthread_cancel(thread.native_handle());
}

void beUnwound(const void* bottom) {
    forgetFrames(bottom);
    admitUnwinding(true);
    pthread_testcancel();
}

void nameThread(const std::string& name) {
    pthread_setname_np(pthread_self(), name.c_str());
}

/// Keeps a copy of the stack from here to `bottom` for the rest of the process.
__attribute__((no_sanitize("address", "thread"), noinline)) void forgiveFrames(const void* bottom) {
    static auto& mutex = *new std::mutex;
    static auto& kept = *new std::list<std::vector<std::uintptr_t>>;
    const volatile std::uintptr_t here = 0;
    const volatile std::uintptr_t* word = &here;
    std::vector<std::uintptr_t> words(
        static_cast<std::size_t>(static_cast<const volatile std::uintptr_t*>(bottom) - word));
    std::uintptr_t* const target = words.data();
    for (std::size_t i = 0; i < words.size(); ++i) {
        target[i] = word[i];
    }
    const std::lock_guard lock(mutex);
    kept.push_back(std::move(words));
}

}  // namespace agent::system
