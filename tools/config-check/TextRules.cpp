#include "Rules.h"
#include "platform/Number.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <limits>

namespace check {
namespace {

constexpr std::int32_t kSmallSize = 1024;  // a few entries

bool isLineBreak(char c) {
    return c == '\n' || c == '\r';
}

bool isDigits(const std::string& text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

std::string withoutBreaks(const std::string& text) {
    const std::size_t start = text.find_first_not_of(" \t\r\n");
    return start == std::string::npos ? "" : text.substr(start, text.find_last_not_of(" \t\r\n") - start + 1);
}

/// What the module makes of a text, for the end of a sentence.
std::string readAs(Setting setting, const std::string& text) {
    switch (setting) {
        case Setting::FileSize:
        case Setting::LogRevisionDays:
            return "it is read as " + std::to_string(platform::readNumber(text));
        case Setting::LogLevel:
            return std::string("it is read as ") + shown(isLevel(text) ? text : "info");
        case Setting::FileLogger:
        case Setting::RDListner:
        case Setting::TunnelListner:
        case Setting::FileListner:
            return "any text switches this on";
        default:
            return "it is read as " + shown(text);
    }
}

void checkForm(const Inspection& in, const Element& element, Setting setting) {
    using First = Element::First;
    const std::string name = shown(element.name);
    const std::string text = element.trimmedText();
    switch (element.first) {
        case First::comment:
        case First::instruction:
            in.error(in.textPositionOf(element), "comment-first",
                     std::string(element.first == First::comment ? "a comment" : "an instruction") +
                         " comes first in " + name +
                         ", and the module takes it for the text: " + readAs(setting, text));
            return;
        case First::entity:
            in.error(in.textPositionOf(element), "entity",
                     "the text of " + name + " comes out of an entity, which the module reads as no text");
            return;
        case First::element:
            in.error(in.textPositionOf(element), "no-text",
                     name + " begins with an element, so the module reads no text there");
            return;
        case First::text:
        case First::section:
            break;
        case First::nothing:
            return;
    }
    if (element.rest != 0) {
        in.error(in.afterBlanks(element, element.rest), "cut-text",
                 "what follows in " + name + " is not read: its text ends before; " + readAs(setting, text));
    }
    if (text.empty()) {
        return;
    }
    const bool begins = isLineBreak(text.front());
    if (begins || isLineBreak(text.back())) {
        // A number is read all the same.
        const bool harmless = setting == Setting::FileSize || setting == Setting::LogRevisionDays;
        in.findings.add(harmless ? Severity::warning : Severity::error, element.place, "line-break",
                        "the text of " + name + (begins ? " begins" : " ends") +
                            " with a line break, which belongs to it; " + readAs(setting, text));
    }
}

void checkLevel(const Inspection& in, const Element& element, const std::string& text) {
    if (isLevel(text) || isLineBreak(text.front()) || isLineBreak(text.back())) {
        return;
    }
    const char* meant = nullptr;
    std::string lower = text;
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    for (const config::NamedLevel& level : config::levels()) {
        if (lower.starts_with(level.name) || (text.size() < 10 && difference(text, level.name) <= 1)) {
            meant = level.name.data();
        }
    }
    const bool sameLevel = meant != nullptr && config::levelNamed(meant) == config::levelNamed("info");
    in.findings.add(sameLevel ? Severity::warning : Severity::error, in.textPositionOf(element), "level",
                    shown(text) + " is no level and is read as 'info'" +
                        (sameLevel          ? ", as any other text is; write 'info'"
                         : meant != nullptr ? "; did you mean " + shown(meant) + "?"
                                            : "; levels are trace, info, warn, error, force and audit"));
}

void checkNumber(const Inspection& in, const Element& element, Setting setting, const std::string& text) {
    const std::string digits = withoutBreaks(text);
    const std::int32_t value = platform::readNumber(text);
    const bool size = setting == Setting::FileSize;
    const char* const kind = size ? "size" : "days";
    const std::string read =
        shown(text) + " is read as " + std::to_string(value) + (size ? " bytes" : " days");
    const Position position = in.textPositionOf(element);
    const char* const always = ": an archive for every entry";
    const char* const deletesAll =
        ": at each start all of the log's files are deleted, the log itself included";
    const char* const deletesOlder = ": at each start every file of the log older than a day is deleted";
    if (value < 0 || (value == 0 && size)) {
        in.error(position, kind, read + (size ? always : deletesAll));
    } else if (!isDigits(digits)) {
        in.error(position, kind,
                 read + (value == 0           ? deletesOlder
                         : !size              ? "; only digits are read"
                         : value < kSmallSize ? always
                                              : "; only digits are read, and no unit"));
    } else if (value == std::numeric_limits<std::int32_t>::max()) {
        in.warning(position, kind, read + ", the largest number");
    } else if (size && value < kSmallSize) {
        in.warning(position, kind, read + ": an archive after every few entries");
    } else if (value == 0) {
        in.warning(position, kind, read + deletesOlder);
    }
}

void checkFlag(const Inspection& in, const Element& element, Setting setting, const std::string& text) {
    static constexpr std::array<const char*, 11> kOff{"false", "off",      "no",      "0",     "n",       "f",
                                                      "none",  "disabled", "disable", "never", "inactive"};
    const std::string word = withoutBreaks(text);
    if (std::none_of(kOff.begin(), kOff.end(),
                     [&](const char* off) { return word.size() < 10 && difference(word, off) == 0; })) {
        return;
    }
    in.error(in.textPositionOf(element), "flag",
             shown(element.name) + " is switched on by " + shown(text) + ", as by any text; " +
                 (setting == Setting::FileLogger
                      ? "it cannot be switched off here: leave 'FileListner' empty instead"
                      : "leave it empty to switch it off"));
}

void checkEmpty(const Inspection& in, const Element& element, Setting setting) {
    const std::string name = shown(element.name);
    const Position position = element.place;
    if (setting == Setting::FileLogger) {
        in.warning(
            position, "empty",
            name + " without a text leaves it on; to switch off the log file leave 'FileListner' empty");
    } else if (setting == Setting::LogFilePath || setting == Setting::FileSize ||
               setting == Setting::LogRevisionDays || setting == Setting::LogLevel) {
        in.warning(position, "empty", name + " without a text leaves the setting as it was");
    }
}

/// True when nothing but a text is in the element's first place; other things are reported as such.
bool isPlain(const Element& element) {
    return element.first == Element::First::text || element.first == Element::First::section ||
           element.first == Element::First::nothing;
}

void checkList(const Inspection& in, const Element& list) {
    const std::vector<const Element*> messages = config::messagesOf(list);
    for (const Element* const message : messages) {
        checkForm(in, *message, Setting::TunnelOpen);
        if (isPlain(*message) && message->trimmedText().empty() && message->rest == 0) {
            in.warning(message->place, "empty", "an empty 'Message' is left out of the list");
        }
    }
    // Otherwise the text or the elements in the messages' place are reported.
    if (messages.empty() && list.firstChild == nullptr && list.stray == 0) {
        in.error(list.place, "empty",
                 shown(list.name) + " holds no 'Message', so the module has no text to look for");
    }
}

void checkSetting(const Inspection& in, const Element& element, Setting setting) {
    checkForm(in, element, setting);
    const std::string text = element.trimmedText();
    if (!isPlain(element)) {
        return;
    }
    if (text.empty()) {
        checkEmpty(in, element, setting);
        return;
    }
    switch (setting) {
        case Setting::LogLevel:
            checkLevel(in, element, text);
            break;
        case Setting::FileSize:
        case Setting::LogRevisionDays:
            checkNumber(in, element, setting, text);
            break;
        case Setting::FileLogger:
        case Setting::RDListner:
        case Setting::TunnelListner:
        case Setting::FileListner:
            checkFlag(in, element, setting, text);
            break;
        default:
            break;
    }
}

}  // namespace

void checkTexts(const Inspection& in) {
    for (const config::Reading& reading : in.selection.taken.readings) {
        if (in.findings.full()) {
            return;
        }
        if (reading.row->kind == config::Kind::messages) {
            checkList(in, *reading.element);
        } else {
            checkSetting(in, *reading.element, reading.row->setting);
        }
    }
}

}  // namespace check
