#include "Messages.h"

#include "common/ShownText.h"
#include "platform/Console.h"

#include <cerrno>
#include <cstring>

namespace logreader {

void complain(std::string_view text) {
    platform::complain(("zephan-log: " + shownInLine(text) + "\n").c_str());
}

void writeOut(std::string_view text, std::FILE* output) {
    if (std::fwrite(text.data(), 1, text.size(), output) != text.size() || std::fflush(output) != 0) {
        throw OutputError(std::string("standard output: ") + std::strerror(errno));
    }
}

std::string shownInLine(std::string_view text) {
    std::string shown;
    for (;;) {
        const std::size_t lineEnd = text.find('\n');
        appendShown(shown, text.substr(0, lineEnd), {});
        if (lineEnd == std::string_view::npos) {
            return shown;
        }
        shown += "\\x0a";
        text.remove_prefix(lineEnd + 1);
    }
}

}  // namespace logreader
