// A configuration as a parser that knows positions sees it.
#pragma once

#include "Finding.h"
#include "SourceText.h"

#include <deque>
#include <optional>
#include <string>
#include <vector>

namespace check {

struct Element {
    enum class First : std::uint8_t { nothing, text, section, comment, instruction, entity, element };

    std::string name;
    std::string text;  ///< of the first child node, be it a comment's or an instruction's: the module's text
    Position end;      ///< just behind the start tag
    Position rest;     ///< of text behind the first child node; line 0 when there is none
    Position stray;    ///< of the first text between the child elements; line 0 when there is none
    Element* parent = nullptr;
    Element* firstChild = nullptr;
    Element* lastChild = nullptr;
    Element* next = nullptr;       ///< the next child of the same parent
    First first = First::nothing;  ///< what the first child node is
    bool fromEntity = false;       ///< stands in an entity's text, not in the document's own
};

struct Attribute {
    const Element* element;
    std::string name;
};

struct Document {
    std::deque<Element> elements;  ///< in document order; the first is the root
    std::vector<Attribute> attributes;
    /// Why the module cannot read the document, when the parser knows.
    std::optional<Finding> refusal;
};

/// Reads a document of this text within the module's bounds. The XML toolkit must be running. Opens nothing
/// that the document names. Without `keep` it looks only for a reason to refuse the document, and the
/// elements are not kept.
Document readDocument(const std::string& bytes, const SourceText& source, bool keep = true);

/// From here on the module does not read a file.
constexpr std::size_t kLargestFile = std::size_t{1} << 20U;
constexpr char kTooMuch[] = "reading this document takes more memory than the module allows a configuration";

}  // namespace check
