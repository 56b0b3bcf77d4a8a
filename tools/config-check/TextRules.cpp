#include "Rules.h"
#include "common/Difference.h"
#include "platform/portable/Number.h"

#include <algorithm>
#include <limits>

namespace check {
namespace {

using tools::difference;
using tools::lowered;
using First = Element::First;
using Row = config::SettingRow;

constexpr std::int32_t kSmallSize = 1024;  // a few entries

bool isLineBreak(char c) {
    return c == '\n' || c == '\r';
}

bool hasBreak(const std::string& text) {
    return isLineBreak(text.front()) || isLineBreak(text.back());
}

std::string withoutBreaks(const std::string& text) {
    const std::size_t start = std::min(text.find_first_not_of(" \t\r\n"), text.size());
    return text.substr(start, text.find_last_not_of(" \t\r\n") + 1 - start);
}

bool isFlag(const Row& row) {
    return row.kind == config::Kind::on || row.kind == config::Kind::flag;
}

bool isNumber(const Row& row) {
    return row.setting == Setting::FileSize || row.setting == Setting::LogRevisionDays;
}

/// True when nothing but a text is in the element's first place; other things are reported as such.
bool isPlain(const Element& element) {
    return element.first == First::text || element.first == First::section || element.first == First::nothing;
}

/// What the module makes of a text, for the end of a sentence.
std::string readAs(const Row& row, const std::string& text) {
    return isFlag(row)
               ? "any text switches this on"
               : "it is read as " + (isNumber(row) ? std::to_string(platform::readNumber(text))
                                     : row.kind == config::Kind::level && !isLevel(text) ? "'info'"
                                                                                         : shown(text));
}

void checkForm(const Inspection& in, const Element& element, const Row& row) {
    const std::string name = shown(element.name);
    const std::string text = element.trimmedText();
    const Position position = in.textPositionOf(element);
    if (element.first == First::comment || element.first == First::instruction) {
        in.error(position, "comment-first", element.first == First::comment ? "a comment" : "an instruction",
                 " comes first in ", name, ", and the module takes it for the text: ", readAs(row, text));
    } else if (element.first == First::entity) {
        in.error(position, "entity", "the text of ", name,
                 " comes from an entity, which the module does not read as text");
    } else if (element.first == First::element) {
        in.error(position, "no-text", name, " begins with an element, so the module reads no text there");
    } else if (element.first != First::nothing) {
        if (element.rest != 0) {
            in.error(in.afterBlanks(element, element.rest), "cut-text", "what follows in ", name,
                     " is not read: its text ends before; ", readAs(row, text));
        }
        if (!text.empty() && hasBreak(text)) {
            // A number is read nevertheless.
            in.report(isNumber(row) ? Severity::warning : Severity::error, element.place, "line-break",
                      "the text of ", name, isLineBreak(text.front()) ? " begins" : " ends",
                      " with a line break, which belongs to it; ", readAs(row, text));
        }
    }
}

void checkLevel(const Inspection& in, const Element& element, const std::string& text) {
    if (isLevel(text) || hasBreak(text)) {
        return;
    }
    std::string_view meant;
    for (const config::NamedLevel& level : config::levels()) {
        if (lowered(text).starts_with(level.name) ||
            (text.size() < 10 && difference(text, level.name) <= 1)) {
            meant = level.name;
        }
    }
    const bool sameLevel = meant == "info";
    in.report(sameLevel ? Severity::warning : Severity::error, in.textPositionOf(element), "level",
              shown(text), " is not a level and is read as 'info'",
              sameLevel       ? ", as any other text is; write 'info'"
              : meant.empty() ? "; levels are trace, info, warn, error, force and audit"
                              : "; did you mean " + shown(meant) + "?");
}

void checkNumber(const Inspection& in, const Element& element, const Row& row, const std::string& text) {
    const std::string digits = withoutBreaks(text);
    const std::int32_t value = platform::readNumber(text);
    const bool size = row.setting == Setting::FileSize;
    const bool isRead = digits.find_first_not_of("0123456789") == std::string::npos;
    const char* const always = ": an archive for every entry";
    const char* const deletesOlder = ": at each start every file of the log older than a day is deleted";
    const char* consequence = nullptr;
    if (value < 0 || (value == 0 && size)) {
        consequence =
            size ? always : ": at each start all of the log's files are deleted, the log itself included";
    } else if (!isRead) {
        consequence = value == 0           ? deletesOlder
                      : !size              ? "; only digits are read"
                      : value < kSmallSize ? always
                                           : "; only digits are read, and no unit";
    } else if (value == std::numeric_limits<std::int32_t>::max()) {
        consequence = ", the largest number";
    } else if (size && value < kSmallSize) {
        consequence = ": an archive after every few entries";
    } else if (value == 0) {
        consequence = deletesOlder;
    }
    if (consequence != nullptr) {
        const bool error = !isRead || value < 0 || (value == 0 && size);
        in.report(error ? Severity::error : Severity::warning, in.textPositionOf(element),
                  size ? "size" : "days", shown(text), " is read as ", std::to_string(value),
                  size ? " bytes" : " days", consequence);
    }
}

void checkFlag(const Inspection& in, const Element& element, const Row& row, const std::string& text) {
    constexpr std::string_view kOff = " false off no 0 n f none disabled disable never inactive ";
    if (isOneOf(kOff, lowered(withoutBreaks(text)))) {
        in.error(in.textPositionOf(element), "flag", shown(element.name), " is switched on by ", shown(text),
                 ", as by any text; ",
                 row.kind == config::Kind::on
                     ? "it cannot be switched off here: leave 'FileListner' empty instead"
                     : "leave it empty to switch it off");
    }
}

void checkSetting(const Inspection& in, const Element& element, const Row& row) {
    checkForm(in, element, row);
    const std::string text = element.trimmedText();
    if (!isPlain(element)) {
        return;
    }
    if (row.kind == config::Kind::on && text.empty()) {
        in.warning(element.place, "empty", shown(element.name),
                   " without a text leaves it on; to switch off the log file leave 'FileListner' empty");
    } else if (text.empty() &&
               (row.section == TagNames::FileLogging || row.setting == Setting::ResumeStatusFile)) {
        in.warning(element.place, "empty", shown(element.name), " without a text ",
                   row.section ? "leaves the setting unchanged"
                               : "names no file: RSM does not survive a restart of the agent");
    } else if (row.kind == config::Kind::level) {
        checkLevel(in, element, text);
    } else if (isNumber(row)) {
        checkNumber(in, element, row, text);
    } else if (isFlag(row)) {
        checkFlag(in, element, row, text);
    }
}

void checkList(const Inspection& in, const Element& list, const Row& row) {
    const std::vector<const Element*> messages = config::messagesOf(list);
    for (const Element* const message : messages) {
        checkForm(in, *message, row);
        if (isPlain(*message) && message->trimmedText().empty() && message->rest == 0) {
            in.warning(message->place, "empty", "an empty 'Message' is left out of the list");
        }
    }
    // Otherwise the text or the elements in the messages' place are reported.
    if (messages.empty() && list.firstChild == nullptr && list.stray == 0) {
        in.error(list.place, "empty", shown(list.name),
                 " holds no 'Message', so the module has no text to look for");
    }
}

}  // namespace

void checkTexts(const Inspection& in) {
    for (const config::Reading& reading : in.taken.readings) {
        if (in.findings.full()) {
            return;
        }
        const auto check = reading.row->kind == config::Kind::messages ? checkList : checkSetting;
        check(in, *reading.element, *reading.row);
    }
}

}  // namespace check
