#include "Rules.h"
#include "platform/agent/Logging.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace check {
namespace {

constexpr std::size_t kLongestShown = 60;
constexpr std::array<Level, 7> kLevels{{
    {"trace", level::kTrace, "every message"},
    {"info", level::kInfo, "every message but those of level trace"},
    {"warn", level::kWarn, "messages of the levels warn, error and force, and no audit message"},
    {"error", level::kError, "messages of the levels error and force, and no audit message"},
    {"force", level::kForce, "messages of level force only"},
    {"audit", level::kAudit, "nothing at all"},
    {"", 80, "messages of level force only"},
}};

}  // namespace

Position Inspection::tagOf(const Element& element) const {
    return findings.full() ? element.end : source.startOfTag(element.end);
}

Position Inspection::textPositionOf(const Element& element) const {
    return findings.full() ? element.end : source.afterBlanks(element.end);
}

Position Inspection::tagOf(Setting setting, Position otherwise) const {
    const Element* const element = selection[setting];
    return element == nullptr ? otherwise : tagOf(*element);
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

const Level* levelNamed(std::string_view name) {
    const auto* const found = std::find_if(kLevels.begin(), kLevels.end(), [&](const Level& level) {
        return !name.empty() && name == level.name;
    });
    return found == kLevels.end() ? nullptr : found;
}

const Level* levelNumbered(std::int32_t number) {
    const auto* const found = std::find_if(kLevels.begin(), kLevels.end(),
                                           [&](const Level& level) { return level.number == number; });
    return found == kLevels.end() ? nullptr : found;
}

}  // namespace check
