#include "WrongOption.h"

#include <string_view>

#include <getopt.h>

namespace tools {

std::string wrongOption(int found, const option* known, char** words) {
    const std::string_view word = words[::optind - 1];  // of a letter it may be the one before
    const std::string_view name = word.starts_with("--") ? word.substr(2, word.find('=') - 2) : "";
    bool isLong = false;
    for (; known->name != nullptr; ++known) {
        isLong = isLong ||
                 (known->val == ::optopt && !name.empty() && std::string_view(known->name).starts_with(name));
    }
    const char* const fault = found == ':' ? "no value for option "
                              : isLong     ? "no value belongs to option "
                                           : "unknown option ";
    return fault +
           (isLong || ::optopt == 0 ? std::string(word) : std::string("-") + static_cast<char>(::optopt));
}

}  // namespace tools
