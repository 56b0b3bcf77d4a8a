#include "platform/Console.h"

#include "platform/KeptTexts.h"
#include "platform/Mutex.h"
#include "platform/windows/System.h"

#include <atomic>
#include <cstddef>
#include <cstdio>
#include <io.h>
#include <new>
#include <string_view>

namespace platform {
namespace {

/// Standard output as the module's threads share it: one at a time has the role of the writer and may wait
/// for whoever reads; nobody waits for the role.
struct Output {
    Mutex role;
    std::atomic<bool> writerDied{false};  ///< in a write perhaps, which leaves the stream locked for ever
    KeptTexts texts;
};

/// Never destroyed: threads of the host may still be here while the process ends.
Output& output() noexcept {
    alignas(Output) static std::byte storage[sizeof(Output)];
    static Output* const object = ::new (storage) Output;
    return *object;
}

/// The writer's role for a scope, if it is to be had.
class Writer final {
  public:
    explicit Writer(Output& output) noexcept : output_(output) {
        Mutex::Wait outcome = output.role.tryWait();
        if (outcome == Mutex::Wait::Abandoned) {
            output.writerDied = true;
            outcome = output.role.tryWait();
        }
        hasRole_ = outcome == Mutex::Wait::Obtained;
    }
    Writer(const Writer&) = delete;
    Writer& operator=(const Writer&) = delete;
    ~Writer() {
        if (hasRole_) {
            output_.role.release();
        }
    }

    bool isWriter() const noexcept { return hasRole_ || output_.role.creationError() != 0; }
    void write(std::string_view text) const noexcept {
        if (output_.writerDied) {
            writeAround(text);
        } else {
            std::fwrite(text.data(), 1, text.size(), stdout);
        }
    }
    void flush() const noexcept {
        if (!output_.writerDied) {
            std::fflush(stdout);
        }
    }

  private:
    /// The stream's lock cannot be tried, only waited for.
    static void writeAround(std::string_view text) noexcept {
        const auto handle = reinterpret_cast<HANDLE>(::_get_osfhandle(::_fileno(stdout)));
        DWORD written = 0;
        ::WriteFile(handle, text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
    }

    Output& output_;
    bool hasRole_ = false;
};

}  // namespace

void echo(const char* text) noexcept {
    writeOrKeep<Writer>(text, output());
}

void flushEcho() noexcept {
    const Writer writer(output());
    if (writer.isWriter()) {
        writer.flush();
    }
}

void complain(const char* text) noexcept {
    std::fputs(text, stderr);
}

}  // namespace platform
