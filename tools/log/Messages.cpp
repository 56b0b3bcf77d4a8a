#include "Messages.h"

#include "ShownText.h"
#include "platform/Console.h"

namespace logreader {

void complain(std::string_view text) {
    platform::complain(("zephan-log: " + shownInLine(text) + "\n").c_str());
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
