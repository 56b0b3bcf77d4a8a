#include "sim/input/Input.h"

#include "sim/windows/WindowsTime.h"

#include <array>
#include <condition_variable>
#include <io.h>
#include <mutex>
#include <thread>
#include <utility>

namespace sim {

namespace {

/// What came in. Readers that nobody waits for any more may stay in a read, and a handler finds nothing but
/// globals: it is never destroyed.
struct Arrived {
    std::mutex mutex;
    std::condition_variable changed;
    std::string bytes;
    bool isOver = false;
    bool isInterrupted = false;
};

Arrived& arrived() {
    static auto& all = *new Arrived;
    return all;
}

/// On a thread of its own, since nothing waits both for input and for a time.
void readAll(int descriptor) {
    std::array<char, 4096> buffer = {};
    int size = 0;
    do {
        size = ::_read(descriptor, buffer.data(), static_cast<unsigned int>(buffer.size()));
        const std::lock_guard lock(arrived().mutex);
        if (size > 0) {
            arrived().bytes.append(buffer.data(), static_cast<std::size_t>(size));
        } else {
            arrived().isOver = true;
        }
        arrived().changed.notify_all();
    } while (size > 0);
}

BOOL WINAPI noteInterrupt(DWORD event) {
    if (event != CTRL_C_EVENT) {
        return FALSE;
    }
    const std::lock_guard lock(arrived().mutex);
    // A second one ends the process at once.
    const bool isFirst = !std::exchange(arrived().isInterrupted, true);
    arrived().changed.notify_all();
    return isFirst ? TRUE : FALSE;
}

}  // namespace

Input::Input(int descriptor, Terminal* terminal) : descriptor_(descriptor), terminal_(terminal) {
    std::thread(readAll, descriptor_).detach();
    ::SetConsoleCtrlHandler(noteInterrupt, TRUE);
}

Input::~Input() {
    ::SetConsoleCtrlHandler(noteInterrupt, FALSE);
}

bool Input::wait(std::chrono::microseconds time) {
    Arrived& all = arrived();
    std::unique_lock lock(all.mutex);
    const auto isNews = [&] {
        return !all.bytes.empty() || (open_ && all.isOver) || (all.isInterrupted && !stopRequested_);
    };
    if (time == std::chrono::microseconds::max()) {
        all.changed.wait(lock, isNews);
    } else if (!all.changed.wait_for(lock, time, isNews)) {
        return false;
    }
    stopRequested_ = all.isInterrupted;
    read();
    return true;
}

/// In the lock of what arrived.
void Input::read() {
    take(std::exchange(arrived().bytes, {}));
    if (arrived().isOver) {
        end();
    }
}

}  // namespace sim
