#include "Rules.h"
#include "platform/agent/Logging.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace check {
namespace {

constexpr std::size_t kLongestShown = 60;

}  // namespace

Position Inspection::afterBlanks(const Element& element, std::size_t byte) const {
    const std::size_t found = document.text.find_first_not_of(" \t\r\n", byte);
    return document.placeOf(found == std::string::npos ? byte : found, element.place);
}

Position Inspection::tagOf(Setting setting, Position otherwise) const {
    const Element* const element = selection[setting];
    return element == nullptr ? otherwise : element->place;
}

std::string shown(std::string_view text) {
    std::string out = "'";
    std::size_t length = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        const bool continues = (byte & 0xC0U) == 0x80U;
        if (!continues && ++length > kLongestShown) {
            return out + "...'";
        }
        // U+0080 to U+009F, which a terminal may obey, are C2 80 to C2 9F.
        const bool high =
            byte == 0xC2U && i + 1 < text.size() && static_cast<unsigned char>(text[i + 1]) < 0xA0U;
        if (byte == '\n') {
            out += "\\n";
        } else if (byte == '\r') {
            out += "\\r";
        } else if (byte == '\t') {
            out += "\\t";
        } else if (byte < 0x20U || byte == 0x7FU || high) {
            std::array<char, 8> code{};
            std::snprintf(code.data(), code.size(), "\\x%02x",
                          high ? static_cast<unsigned char>(text[++i]) : byte);
            out += code.data();
        } else {
            out += text[i];
        }
    }
    return out + "'";
}

std::string_view nameOfLevel(std::int32_t number) {
    const auto levels = config::levels();
    const auto found = std::find_if(levels.begin(), levels.end(),
                                    [&](const config::NamedLevel& one) { return one.number == number; });
    return found == levels.end() ? "" : found->name;
}

bool isLevel(std::string_view name) {
    return nameOfLevel(config::levelNamed(name)) == name;
}

const char* writtenAtLevel(std::int32_t number) {
    switch (number) {
        case level::kTrace:
            return "every message";
        case level::kInfo:
            return "every message but those of level trace";
        case level::kWarn:
            return "messages of the levels warn, error and force, and no audit message";
        case level::kError:
            return "messages of the levels error and force, and no audit message";
        case level::kAudit:
            return "nothing at all";
        default:
            return "messages of level force only";
    }
}

}  // namespace check
