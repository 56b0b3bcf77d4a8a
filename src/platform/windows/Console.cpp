#include "platform/Console.h"

#include "platform/portable/OutputRole.h"
#include "platform/windows/System.h"

#include <cstdio>
#include <io.h>
#include <string_view>

namespace platform {
namespace {

/// The stream for a scope, if the writer's role is free.
class Writer final {
  public:
    explicit Writer(Output& output) noexcept : output_(output), role_(output) {}

    bool isWriter() const noexcept { return role_.mayWrite(); }
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

    const Output& output_;
    const OutputRole role_;
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
