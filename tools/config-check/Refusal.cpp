// The faults of a file that is not XML, in words for those who have never met a parser's.
#include "Rules.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdio>

namespace check {
namespace {

constexpr std::string_view kBlanks = " \t\r\n";
constexpr Position kStart{1, 1, 0};

bool isName(char c) {
    return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_' || c == ':' ||
           static_cast<signed char>(c) < 0;
}

/// A whole file that was meant to be something else; empty when it may be XML.
std::string kindOfFile(std::string_view text) {
    const std::size_t start = text.find_first_not_of(kBlanks);
    if (start == std::string_view::npos) {
        return "the file is empty";
    }
    text.remove_prefix(start);
    const std::string_view line = text.substr(0, text.find_first_of("\r\n"));
    const std::size_t close = line.find(']');
    const bool isHeading = text.front() == '[' && close != std::string_view::npos &&
                           line.find_first_of("\"{,") == std::string_view::npos;
    const bool isAssignment = isName(text.front()) && line.find('=') != std::string_view::npos;
    const char* const also = ", and a configuration is XML: see the example that comes with the module";
    if (isHeading || isAssignment || text.front() == ';' || text.front() == '#') {
        return std::string("this is a file of names and values (INI)") + also;
    }
    if (text.front() == '{' || text.front() == '[') {
        return std::string("this is JSON") + also;
    }
    return text.front() == '<' ? "" : "the file does not begin with '<': this is not XML";
}

/// A quote that a word processor put in the place of a plain one.
bool isTypographicQuote(std::string_view text) {
    static constexpr std::array<std::string_view, 8> kQuotes{"\u201C", "\u201D", "\u201E", "\u2018",
                                                             "\u2019", "\u201A", "\u00AB", "\u00BB"};
    return std::any_of(kQuotes.begin(), kQuotes.end(),
                       [&](std::string_view one) { return text.starts_with(one); });
}

/// Words for a place where many have stumbled, and the place itself; empty otherwise.
std::string stumble(const config::Document& document, Position& position) {
    const std::string_view text = document.text;
    const auto from = [&](std::size_t byte) { return text.substr(std::min(byte, text.size())); };
    const std::size_t byte = position.byte;
    const std::size_t lineStart = text.substr(0, byte).find_last_of("\r\n") + 1;
    const auto moveTo = [&](std::size_t place) {
        position.column -= static_cast<std::uint32_t>(byte - place);  // back over ASCII only
        position.byte = static_cast<std::uint32_t>(place);
    };
    const std::string_view line = text.substr(lineStart, text.find_first_of("\r\n", lineStart) - lineStart);
    const std::size_t quote = line.find('=');
    if (isTypographicQuote(from(byte)) ||
        (line.starts_with("<?xml") && quote != std::string_view::npos &&
         isTypographicQuote(line.substr(line.find_first_not_of(kBlanks, quote + 1))))) {
        return "a typographic quote stands where XML needs a plain one (\" or ')";
    }
    std::size_t word = byte;
    while (word > lineStart && isName(text[word - 1]) && static_cast<signed char>(text[word - 1]) >= 0) {
        --word;
    }
    if (from(byte).starts_with('&') || (word > lineStart && text[word - 1] == '&')) {
        if (!from(byte).starts_with('&')) {
            moveTo(word - 1);
        }
        const std::size_t end = text.find_first_of(";& \t\r\n<\"", position.byte + 1);
        const bool isReference = end != std::string_view::npos && text[end] == ';' && end > position.byte + 1;
        return isReference
                   ? "there is no entity " + shown(text.substr(position.byte + 1, end - position.byte - 1)) +
                         "; for the character '&' itself write '&amp;'"
                   : "'&' begins a reference to an entity; for the character itself write '&amp;'";
    }
    const std::size_t tag = text.substr(0, byte).find_last_of("<>");
    const bool isInTag = tag != std::string_view::npos && text[tag] == '<';
    if (isInTag && (from(byte).starts_with('<') || (tag + 1 == byte && !from(byte).starts_with('/')))) {
        const std::string_view inTag = text.substr(tag + 1, byte - tag - 1);
        const bool isBare = inTag.find('=') == std::string_view::npos;
        const std::string_view name = inTag.substr(inTag.starts_with('/') ? 1 : 0);
        const std::string_view element = name.substr(0, name.find_first_of(kBlanks));
        if (isBare && !element.empty() && (document.open == nullptr || name != inTag || findTag(element))) {
            return "the tag of " + shown(element) + " has no '>'";
        }
        if (isBare && std::all_of(inTag.begin(), inTag.end(), [](char c) { return c >= ' '; })) {
            moveTo(tag);
        }
        return "'<' begins a tag; for the character itself write '&lt;'";
    }
    return {};
}

/// The parser's reason, or plainer words for it and the place that they are of.
std::string notWellFormed(const config::Document& document, Position& position) {
    const std::string_view text = document.text;
    const std::string& reason = document.refusal->reason;
    if (std::string kind = kindOfFile(text); !kind.empty()) {
        position = kStart;
        return kind;
    }
    if (std::string words = stumble(document, position); !words.empty()) {
        return words;
    }
    const std::string_view rest = text.substr(std::min<std::size_t>(position.byte, text.size()));
    if (reason.starts_with("junk") && rest.size() > 1 && rest.front() == '<' && isName(rest[1])) {
        return "a second root element; a configuration has only one";
    }
    return reason.starts_with("not well-formed") ? reason : "not well-formed: " + reason;
}

std::string badEncoding(const config::Document& document) {
    const config::Refusal& refusal = *document.refusal;
    if (!refusal.reason.ends_with("UTF-8")) {
        return "the encoding is wrong: " + refusal.reason;
    }
    std::array<char, 8> byte{};
    std::snprintf(byte.data(), byte.size(), "0x%02X",
                  static_cast<unsigned char>(document.text[refusal.place.byte]));
    return std::string("the encoding is wrong: the byte ") + byte.data() +
           " is not a character of UTF-8, in which the file is read; save it as UTF-8, or declare in its first line the encoding "
           "that it has, as in <?xml version=\"1.0\" encoding=\"windows-1252\"?>";
}

}  // namespace

Finding refusal(const config::Document& document) {
    using Kind = config::Refusal::Kind;
    const config::Refusal& why = *document.refusal;
    const bool isMalformed = why.kind == Kind::encoding || why.kind == Kind::notWellFormed;
    Finding finding;
    finding.position = why.place.line == 0 ? kStart : why.place;
    finding.kind = why.kind == Kind::tooDeep    ? "too-deep"
                   : why.kind == Kind::tooLarge ? "too-large"
                   : why.kind == Kind::outside  ? "external-name"
                   : isMalformed                ? "not-well-formed"
                                                : "too-much";
    finding.text = why.kind == Kind::tooDeep || why.kind == Kind::tooLarge ? why.reason
                   : why.kind == Kind::outside
                       ? why.reason + "; the module refuses such a document and opens nothing that it names"
                   : why.kind == Kind::encoding      ? badEncoding(document)
                   : why.kind == Kind::notWellFormed ? notWellFormed(document, finding.position)
                                                     : "the module does not read that much: " + why.reason;
    if (document.open != nullptr) {
        finding.notes.push_back(
            {document.open->place, shown(document.open->name) + " is open; it was opened here"});
    }
    finding.notes.push_back(
        {{}, "the module refuses this file, so the start of the logger and of RSM fail with it"});
    return finding;
}

}  // namespace check
