#include "Rules.h"
#include "common/ShownText.h"
#include "config/Encoding.h"

#include <algorithm>
#include <system_error>

namespace check {

Inspection::Inspection(const std::string& path, const config::Document& read,
                       const std::optional<std::string>& schedulePath, Findings& target)
    : file(path),
      document(read),
      schedule(schedulePath),
      findings(target),
      taken(config::takeSettings(read)),
      settings(taken.settings) {
    for (const config::Reading& reading : taken.readings) {
        looked.emplace(reading.element, reading.row->tag);
        if (reading.row->kind == config::Kind::messages) {
            for (const Element* const message : config::messagesOf(*reading.element)) {
                looked.emplace(message, TagNames::Message);
            }
        }
    }
    for (const Element* child = root().firstChild; child != nullptr; child = child->next) {
        const std::optional<Tag> tag = findTag(child->name);
        if (tag && !child->fromEntity && isSection(*tag)) {
            looked.emplace(child, *tag);
        }
    }
}

Position Inspection::afterBlanks(const Element& element, std::size_t byte) const {
    const std::size_t found = document.text.find_first_not_of(" \t\r\n", byte);
    return document.placeOf(found == std::string::npos ? byte : found, element.place);
}

Position Inspection::tagOf(Setting setting, Position otherwise) const {
    const Element* const element = originOf(setting);
    return element == nullptr ? otherwise : element->place;
}

void Inspection::pathError(Position position, const char* kind, const std::string& text,
                           const std::string& path) const {
    Finding& finding = error(position, kind, text);
    if (nativePath(path).is_relative()) {
        finding.notes.push_back(
            {position, joined(shown(path), " is relative to the agent's working directory; from here it is ",
                              shown(fromHere(path).string()))});
    }
}

std::string takeVisible(std::string_view& text) {
    const std::string_view character =
        text.substr(0, std::max<std::size_t>(config::characterLength(text), 1));
    text.remove_prefix(character.size());
    std::string taken;
    if (const std::size_t blank = std::string_view("\n\r\t").find(character);
        blank != std::string_view::npos) {
        taken = {'\\', "nrt"[blank]};
    } else {
        logreader::appendShown(taken, character, {});
    }
    return taken;
}

std::string visible(std::string_view text) {
    std::string all;
    while (!text.empty()) {
        all += takeVisible(text);
    }
    return all;
}

std::string shown(std::string_view text) {
    constexpr std::size_t kLongestShown = 60;
    std::string out = "'";
    for (std::size_t length = 0; !text.empty(); ++length) {
        if (length == kLongestShown) {
            return out + "...'";
        }
        out += takeVisible(text);
    }
    return out + "'";
}

bool isOneOf(std::string_view list, std::string_view word) {
    return word.find(' ') == std::string_view::npos &&
           list.find(joined(" ", word, " ")) != std::string_view::npos;
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

std::filesystem::path nativePath(const std::string& path) {
    std::string native = path;
    std::replace(native.begin(), native.end(), '\\', '/');
    return native;
}

std::filesystem::path fromHere(const std::string& path) {
    std::error_code error;
    const std::filesystem::path absolute = std::filesystem::absolute(nativePath(path), error);
    return (error ? nativePath(path) : absolute).lexically_normal();
}

}  // namespace check
