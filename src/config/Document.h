// A configuration file as a tree of elements that know where they stand. All who want to know what such a file contains,
// inside the module or out, reads it here.
#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <vector>

namespace config {

/// A place in the text of a document. Lines and characters are counted from 1, line 0 means no place; bytes from 0.
struct Place {
    std::uint32_t line = 0;
    std::uint32_t column = 0;
    std::uint32_t byte = 0;

    friend auto operator<=>(const Place&, const Place&) = default;  // NOLINT(modernize-use-nullptr)
};

struct Element {
    /// What its first child node is: a text, a CDATA section, a comment, a processing instruction, an element, or
    /// what an entity stands for.
    enum class First : std::uint8_t { nothing, text, section, comment, instruction, entity, element };

    std::string name;
    std::string text;         ///< value of the first child node, a comment's or an instruction's, too
    Place place;              ///< of the start tag, or of the reference to the entity that it comes out of
    std::uint32_t end = 0;    ///< the byte behind that
    std::uint32_t rest = 0;   ///< the byte where text behind the first child node begins; 0: there is none
    std::uint32_t stray = 0;  ///< the byte where the first text that is not blank begins; 0: there is none
    std::size_t source = 0;   ///< the number of the entity in whose text it stands; 0: the document's own
    Element* parent = nullptr;
    Element* firstChild = nullptr;
    Element* lastChild = nullptr;
    Element* next = nullptr;  ///< the next child of the same parent
    First first = First::nothing;
    bool fromEntity = false;  ///< stands in the text of an entity, and its parent around the reference to it

    /// The value of its first child node without the blanks and tabs at both ends.
    std::string trimmedText() const;
};

/// Why a document is refused.
struct Refusal {
    enum class Kind : std::uint8_t {
        noParser,       ///< there was no memory for one
        noMemory,       ///< it ran out
        notWellFormed,  ///< the text is not XML
        encoding,       ///< its bytes are not valid in its encoding, or the encoding is unknown
        tooDeep,        ///< elements are nested deeper than `Document::kDeepest`
        outside,        ///< it names something outside of it, which is never opened
        tooMuch,        ///< it has too many parts, or expands to too much
        tooLarge        ///< it has more bytes than `Document::kLargest`
    };
    Kind kind;
    std::string reason;
    Place place;  ///< line 0: the whole document

    /// As in "mismatched tag, line 12, column 7".
    std::string text() const;
};

struct Attribute {
    const Element* element;
    std::string name;
};

struct Document {
    static constexpr std::size_t kLargest = std::size_t{1} << 20U;
    static constexpr std::size_t kDeepest = 256;
    static constexpr std::size_t kMostElements = std::size_t{1} << 15U;
    static constexpr std::size_t kMostAttributesKept = 1000;

    std::string text;              ///< in UTF-8, without a byte order mark; places count in it
    std::deque<Element> elements;  ///< in document order; the first is the root
    std::vector<Attribute> attributes;
    std::optional<Refusal> refusal;
    const Element* open = nullptr;  ///< the innermost element that was open where the document was refused

    const Element* root() const { return refusal || elements.empty() ? nullptr : &elements.front(); }
    /// The place of a byte that does not lie before `from`.
    Place placeOf(std::size_t byte, Place from = {1, 1, 0}) const;
};

/// Reads a document of these bytes. Nothing that it names is opened, and what it takes has its bounds, whatever it
/// holds. Throws only when memory runs out before anything is parsed. Any thread.
Document readDocument(std::string bytes);

}  // namespace config
