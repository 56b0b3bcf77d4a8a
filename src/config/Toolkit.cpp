#include "config/Toolkit.h"

#include "platform/Immortal.h"
#include "platform/Lock.h"
#include "platform/agent/Logging.h"

#include <cstddef>
#include <new>
#include <stdexcept>
#include <string>

#include <xercesc/util/OutOfMemoryException.hpp>
#include <xercesc/util/PanicHandler.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/XMLException.hpp>
#include <xercesc/util/XMLUni.hpp>

namespace {

// Somewhat more than the toolkit needs to start (it holds 420 KiB then) and to stop.
constexpr std::size_t kStartMemory = std::size_t{512} << 10U;
constexpr std::size_t kStopMemory = std::size_t{4} << 10U;

/// Throws std::bad_alloc when there is no such block. Asked before a step that cannot be undone: the
/// toolkit's start leaves a ruin when it finds no memory, and its stop ends the process.
void askForMemory(std::size_t size) {
    ::operator delete(::operator new(size));
}

/// In place of the toolkit's own handler, which ends the process.
class ThrowingPanicHandler final : public xercesc::PanicHandler {
  public:
    void panic(const PanicReasons reason) override { throw std::runtime_error(getPanicReasonString(reason)); }
};

enum class Run { Stopped, Going, Broken };

struct Toolkit {
    ThrowingPanicHandler panicHandler;
    Run run = Run::Stopped;
    int loads = 0;  ///< under way

    ~Toolkit() {
        if (run == Run::Going) {
            try {
                askForMemory(kStopMemory);
                xercesc::XMLPlatformUtils::Terminate();
            } catch (...) {
                // The library is being unloaded: there is nobody to tell.
            }
            run = Run::Broken;
        }
    }
} theToolkit;
platform::Immortal<platform::Mutex> toolkitLock;  ///< of what stands in it, and of its steps

/// 8-bit form of a message of the toolkit, which does not run and cannot convert it.
std::string narrowed(const XMLCh* message) {
    std::string text;
    for (; message != nullptr && *message != 0; ++message) {
        text += *message < 0x80 ? static_cast<char>(*message) : '?';
    }
    return text;
}

void initialize() {
    using xercesc::XMLPlatformUtils;
    try {
        XMLPlatformUtils::Initialize(xercesc::XMLUni::fgXercescDefaultLocale, nullptr,
                                     &theToolkit.panicHandler);
    } catch (...) {
        // The toolkit counts this start, and answers the next one as if it ran. It may outlive this library in
        // the process, and one that runs has a memory manager: the library that is loaded next looks at that.
        XMLPlatformUtils::fgMemoryManager = nullptr;
        throw;
    }
    if (XMLPlatformUtils::fgMemoryManager == nullptr) {
        throw std::runtime_error("an earlier start failed");
    }
}

/// Does the step that leads from a run to another one; no other load may be using the toolkit when
/// it is stopped.
template <typename Step>
void change(Run from, Run result, std::size_t memory, const char* failureFormat, Step&& step) {
    std::string failure;
    try {
        const platform::Lock lock(*toolkitLock);
        if (theToolkit.run != from || (result == Run::Stopped && theToolkit.loads != 0)) {
            return;
        }
        askForMemory(memory);
        theToolkit.run = Run::Broken;
        step();
        theToolkit.run = result;
        return;
    } catch (const xercesc::XMLException& exception) {
        failure = narrowed(exception.getMessage());
    } catch (const xercesc::OutOfMemoryException&) {
        failure = "out of memory";
    } catch (const std::exception& exception) {
        failure = exception.what();
    }
    KRXLog(level::kForce, failureFormat, failure.c_str());
}

}  // namespace

void toolkit::start() {
    {
        const platform::Lock lock(*toolkitLock);
        ++theToolkit.loads;
    }
    change(Run::Stopped, Run::Going, kStartMemory, "XML toolkit initialization error: %s", initialize);
}

void toolkit::leave() noexcept {
    const platform::Lock lock(*toolkitLock);
    --theToolkit.loads;
}

void toolkit::stop() {
    change(Run::Going, Run::Stopped, kStopMemory, "XML toolkit teardown error: %s",
           [] { xercesc::XMLPlatformUtils::Terminate(); });
}

bool toolkit::isRunning() noexcept {
    const platform::Lock lock(*toolkitLock);
    return theToolkit.run == Run::Going;
}
