#pragma once

#include "config/XMLConfigData.h"
#include "controller/ZephanRSMSingleTon.h"
#include "logging/FollowedLines.h"
#include "platform/agent/Logging.h"
#include "platform/portable/EchoWithoutWait.h"
#include "platform/portable/Guard.h"
#include "platform/portable/NoDestructor.h"

#include <chrono>
#include <optional>
#include <stdexcept>
#include <string>

namespace entry {

/// One start or stop at a time: each waits for the one under way, but none without end. A start may be held
/// up by the host, in its log or at standard output, so a stop waits only a moment for it; a start waits as
/// long as a stop takes. What they do harms nobody when they overlap after all: the objects are counted, and
/// each removes only what it found.
class Lifecycle final {
  public:
    enum class Kind { Start, Stop };

    explicit Lifecycle(Kind kind) noexcept {
        if (kind == Kind::Stop) {
            echo_.emplace(platform::EchoWithoutWait::Kind::Stop);
        }
        const std::chrono::milliseconds patience(kind == Kind::Start ? 4000 : 100);
        platform::Mutex::Wait outcome = mutex().waitFor(patience);
        // Left behind by a thread that ended in its start or stop.
        while (outcome == platform::Mutex::Wait::Abandoned) {
            outcome = mutex().waitFor(patience);
        }
        held_ = outcome == platform::Mutex::Wait::Obtained;
    }
    Lifecycle(const Lifecycle&) = delete;
    Lifecycle& operator=(const Lifecycle&) = delete;
    ~Lifecycle() {
        if (held_) {
            mutex().release();
        }
    }

    /// The controller for a start. One that is being stopped does not count: anything started on it would be ended with it.
    /// When no stop can be under way, it was left so by a thread that ended in its stop, and makes room.
    ZephanRSMSingleTon::Reference controllerForStart() const {
        const auto present = ZephanRSMSingleTon::existing();
        if (present != nullptr && present->isStopping()) {
            if (!held_) {
                return nullptr;
            }
            ZephanRSMSingleTon::destroyInstance();
        }
        return ZephanRSMSingleTon::getInstance();
    }

  private:
    static platform::Mutex& mutex() noexcept {
        static platform::NoDestructor<platform::Mutex> mutex;
        return *mutex;
    }

    std::optional<platform::EchoWithoutWait> echo_;
    bool held_ = false;
};

/// Loads the configuration for a start. False, with a log line, when it cannot be loaded.
inline bool load(const std::string& path) {
    try {
        loadConfiguration(path);
        return true;
    } catch (const std::runtime_error& error) {
        KRXLog(level::kError, "\n %s \n", error.what());
        return false;
    }
}

/// Takes controller and configuration away, as a stop does that leaves nothing running: both, whatever the
/// agent throws for the lines of that.
inline void endAll() {
    platform::attempt(&ZephanRSMSingleTon::destroyInstance);
    XMLConfigData::destroyInstance();
}

}  // namespace entry
