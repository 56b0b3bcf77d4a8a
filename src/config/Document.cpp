#include "config/Document.h"

#include "config/Encoding.h"
#include "platform/portable/ScopeGuard.h"
#include "platform/portable/Text.h"

#include <algorithm>
#include <cstring>
#include <exception>
#include <functional>
#include <utility>

// The header keeps the limits of expansion for those who ask in this way.
#define XML_DTD
#include <expat.h>

namespace config {
namespace {

// An entity is expanded by a call of its own within that of the entity around it.
constexpr std::size_t kMostEntities = 256;
// What a document may expand to: this much, and beyond it this many times what it is.
constexpr std::size_t kFreeExpansion = std::size_t{1} << 20U;
constexpr std::size_t kMostExpansion = 8;
constexpr std::size_t kMostAttributes = std::size_t{1} << 15U;
// Each of them is looked for among those declared for its element before it.
constexpr std::size_t kMostDeclaredAttributes = 4096;

constexpr char kOutOfMemory[] = "out of memory";
constexpr char kExpandsTooMuch[] = "its entities and defaults expand to too much";

std::string quoted(const char* text) {
    return std::string("'") + text + "'";
}

Place placeIn(XML_Parser parser) {
    return {static_cast<std::uint32_t>(::XML_GetCurrentLineNumber64(parser)),
            static_cast<std::uint32_t>(::XML_GetCurrentColumnNumber64(parser) + 1),
            static_cast<std::uint32_t>(::XML_GetCurrentByteIndex64(parser))};
}

/// Makes the tree of what the parser reports.
class TreeBuilder final {
  public:
    TreeBuilder(Document& document, XML_Parser parser)
        : document_(document),
          parser_(parser),
          charactersLeft_(std::max(kFreeExpansion, kMostExpansion * document.text.size())) {
        ::XML_SetUserData(parser, this);
        ::XML_SetElementHandler(parser, Handler<&TreeBuilder::startElement>::call,
                                Handler<&TreeBuilder::endElement>::call);
        ::XML_SetCharacterDataHandler(parser, Handler<&TreeBuilder::characters>::call);
        ::XML_SetProcessingInstructionHandler(parser, Handler<&TreeBuilder::instruction>::call);
        ::XML_SetCommentHandler(parser, Handler<&TreeBuilder::comment>::call);
        ::XML_SetCdataSectionHandler(parser, Handler<&TreeBuilder::startSection>::call,
                                     Handler<&TreeBuilder::endSection>::call);
        ::XML_SetStartDoctypeDeclHandler(parser, Handler<&TreeBuilder::startType>::call);
        ::XML_SetEntityDeclHandler(parser, Handler<&TreeBuilder::entity>::call);
        ::XML_SetAttlistDeclHandler(parser, Handler<&TreeBuilder::declaredAttribute>::call);
        ::XML_SetSkippedEntityHandler(parser, Handler<&TreeBuilder::skippedEntity>::call);
        ::XML_SetDefaultHandlerExpand(parser, Handler<&TreeBuilder::markup>::call);
        ::XML_SetParamEntityParsing(parser, XML_PARAM_ENTITY_PARSING_ALWAYS);
        ::XML_SetBillionLaughsAttackProtectionMaximumAmplification(parser, float{kMostExpansion});
        ::XML_SetBillionLaughsAttackProtectionActivationThreshold(parser, kFreeExpansion);
    }
    TreeBuilder(const TreeBuilder&) = delete;
    TreeBuilder& operator=(const TreeBuilder&) = delete;

    const Element* open() const noexcept { return open_; }

  private:
    /// A member function as the parser calls it. Nothing is thrown through the parser, but for the unwinding of a
    /// thread that is ended.
    template <auto Method>
    struct Handler;
    template <typename... Arguments, void (TreeBuilder::*Method)(Arguments...)>
    struct Handler<Method> {
        static void call(void* self, Arguments... arguments) {
            auto& builder = *static_cast<TreeBuilder*>(self);
            if (builder.document_.refusal) {
                return;
            }
            try {
                (builder.*Method)(arguments...);
            } catch (const std::exception&) {
                builder.refuse(Refusal::Kind::noMemory, kOutOfMemory);
            }
        }
    };

    void startElement(const char* name, const char** attributes) {
        arrive();
        if (depth_ == Document::kDeepest) {
            refuse(Refusal::Kind::tooDeep,
                   "elements are nested deeper than " + std::to_string(Document::kDeepest));
            return;
        }
        meet(Element::First::element);
        spend(std::strlen(name));
        if (!hasRoom(document_.elements.size(), Document::kMostElements, "elements")) {
            return;
        }
        Element& element = document_.elements.emplace_back();
        element.name = name;
        element.place = placeIn(parser_);
        element.end = behind_;
        element.parent = open_;
        element.source = source();
        if (open_ != nullptr) {
            element.fromEntity = element.source != open_->source;
            (open_->lastChild != nullptr ? open_->lastChild->next : open_->firstChild) = &element;
            open_->lastChild = &element;
        }
        ++depth_;
        open_ = &element;
        for (; *attributes != nullptr; attributes += 2) {
            spend(std::strlen(attributes[1]));
            if (!hasRoom(attributes_++, kMostAttributes, "attributes")) {
                return;
            }
            if (document_.attributes.size() < Document::kMostAttributesKept) {
                document_.attributes.push_back({&element, attributes[0]});
            }
        }
    }
    void endElement(const char* /*name*/) {
        arrive();
        inFirstNode_ = false;
        --depth_;
        open_ = open_->parent;
    }

    void characters(const char* text, int length) {
        arrive();
        const std::string_view piece(text, static_cast<std::size_t>(length));
        spend(piece.size());
        inFirstNode_ = inFirstNode_ || meet(Element::First::text);
        if (inFirstNode_) {
            open_->text += piece;
        }
        if (piece.find_first_not_of(" \t\r\n") == std::string_view::npos) {
            return;
        }
        if (!inFirstNode_ && open_->rest == 0) {
            open_->rest = byte();
        }
        if (open_->stray == 0 && source() == open_->source) {
            open_->stray = byte();
        }
    }
    void startSection() {
        arrive();
        inFirstNode_ = meet(Element::First::section);
    }
    void endSection() {
        arrive();
        inFirstNode_ = false;
    }

    void comment(const char* text) { meetValue(Element::First::comment, text); }
    void instruction(const char* /*target*/, const char* data) {
        meetValue(Element::First::instruction, data);
    }
    void meetValue(Element::First kind, const char* value) {
        arrive();
        spend(std::strlen(value));
        if (meet(kind)) {
            open_->text = value;
        }
    }

    void startType(const char* /*name*/, const char* systemId, const char* publicId,
                   int /*hasInternalSubset*/) {
        if (const char* const outside = systemId != nullptr ? systemId : publicId) {
            refuse(Refusal::Kind::outside, "the document type names the external subset " + quoted(outside));
        }
    }
    void entity(const char* name, int /*isParameter*/, const char* value, int length, const char* /*base*/,
                const char* systemId, const char* /*publicId*/, const char* /*notation*/) {
        if (systemId != nullptr) {
            refuse(Refusal::Kind::outside,
                   "the entity " + quoted(name) + " names " + quoted(systemId) + ", which is outside");
        } else if (hasRoom(entities_.size(), kMostEntities, "entities")) {
            entities_.emplace_back(value, static_cast<std::size_t>(length));
        }
    }
    void declaredAttribute(const char* /*element*/, const char* /*name*/, const char* /*type*/,
                           const char* /*standard*/, int /*isRequired*/) {
        hasRoom(declaredAttributes_++, kMostDeclaredAttributes, "declared attributes");
    }
    /// An entity that nobody has declared, where that is not a mistake, stands for nothing and interrupts nothing.
    void skippedEntity(const char* /*name*/, int isParameter) {
        if (isParameter == 0) {
            arrive();
        }
    }
    /// Gets what the parser is asked for in `arrive`, and much that is not looked at.
    void markup(const char* text, int length) { token_ = {text, static_cast<std::size_t>(length)}; }

    // ---- Where the parser is

    /// To be called first for each thing that is reported. The parser says nothing of entities, but their text lies
    /// elsewhere in memory: where the markup of this thing does not follow that of the last one, an entity begins or
    /// ends, or stood for nothing.
    void arrive() {
        ::XML_DefaultCurrent(parser_);
        const std::uint32_t before =
            std::exchange(behind_, byte() + static_cast<std::uint32_t>(::XML_GetCurrentByteCount64(parser_)));
        if (open_ != nullptr && token_.data() != expected_ && !meet(Element::First::entity) &&
            open_->rest == 0) {
            open_->rest = before;
        }
        expected_ = token_.data() + token_.size();
    }
    /// The number of the entity in whose text the parser is, counted from 1; 0: the document's own.
    std::size_t source() {
        if (document_.text[byte()] != '&') {
            return 0;
        }
        const auto holds = [this](std::string_view value) {
            const std::less_equal<const char*> isNotBehind;
            return isNotBehind(value.data(), token_.data()) &&
                   isNotBehind(token_.data() + token_.size(), value.data() + value.size());
        };
        if (lastSource_ == 0 || !holds(entities_[lastSource_ - 1])) {
            const auto found = std::find_if(entities_.rbegin(), entities_.rend(), holds);
            lastSource_ = static_cast<std::size_t>(entities_.rend() - found);
        }
        return lastSource_;
    }
    std::uint32_t byte() const { return static_cast<std::uint32_t>(::XML_GetCurrentByteIndex64(parser_)); }

    /// A child node of the open element begins. True when it is the first one, whose value is the element's.
    bool meet(Element::First kind) {
        inFirstNode_ = false;
        if (open_ == nullptr || open_->first != Element::First::nothing) {
            return false;
        }
        open_->first = kind;
        return true;
    }

    // ---- What a document may take

    /// Whether there may be one more than `present`.
    bool hasRoom(std::size_t present, std::size_t most, const char* what) {
        if (present >= most) {
            refuse(Refusal::Kind::tooMuch, "there are more than " + std::to_string(most) + " " + what);
        }
        return present < most;
    }
    void spend(std::size_t characters) {
        if (characters > charactersLeft_) {
            refuse(Refusal::Kind::tooMuch, kExpandsTooMuch);
        }
        charactersLeft_ -= std::min(characters, charactersLeft_);
    }
    void refuse(Refusal::Kind kind, std::string reason) {
        if (!document_.refusal) {
            const std::size_t declaration = document_.text.rfind("<!", byte());
            document_.refusal =
                Refusal{kind, std::move(reason),
                        kind == Refusal::Kind::outside ? document_.placeOf(declaration) : placeIn(parser_)};
            ::XML_StopParser(parser_, XML_FALSE);
        }
    }

    Document& document_;
    XML_ParserStruct* const parser_;
    std::size_t charactersLeft_;
    std::size_t attributes_ = 0;
    std::size_t declaredAttributes_ = 0;
    std::vector<std::string_view> entities_;
    std::size_t lastSource_ = 0;
    Element* open_ = nullptr;
    std::size_t depth_ = 0;
    std::string_view token_;
    const char* expected_ = nullptr;  ///< where the markup goes on when no entity comes between
    std::uint32_t behind_ = 0;        ///< the byte behind what was reported last
    bool inFirstNode_ = false;        ///< which is a text or a section
};

Refusal refusalOf(const Document& document, XML_Parser parser) {
    const XML_Error error = ::XML_GetErrorCode(parser);
    const Place place = placeIn(parser);
    using enum Refusal::Kind;
    if (error == XML_ERROR_NO_MEMORY) {
        return {noMemory, kOutOfMemory, place};
    }
    if (error == XML_ERROR_AMPLIFICATION_LIMIT_BREACH) {
        return {tooMuch, kExpandsTooMuch, place};
    }
    if ((error == XML_ERROR_INVALID_TOKEN || error == XML_ERROR_PARTIAL_CHAR) &&
        place.byte < document.text.size() &&
        characterLength(std::string_view(document.text).substr(place.byte)) == 0) {
        return {encoding, "no character of the encoding UTF-8", place};
    }
    return {notWellFormed, ::XML_ErrorString(error), place};
}

void parse(Document& document) {
    XML_ParserStruct* const parser = ::XML_ParserCreate("UTF-8");
    if (parser == nullptr) {
        document.refusal = Refusal{Refusal::Kind::noParser, kOutOfMemory, {}};
        return;
    }
    const platform::ScopeGuard end([parser] { ::XML_ParserFree(parser); });
    TreeBuilder builder(document, parser);
    const XML_Status status =
        ::XML_Parse(parser, document.text.data(), static_cast<int>(document.text.size()), XML_TRUE);
    if (status != XML_STATUS_OK && !document.refusal) {
        document.refusal = refusalOf(document, parser);
    }
    document.open = document.refusal ? builder.open() : nullptr;
}

}  // namespace

std::string Element::trimmedText() const {
    return std::string(platform::trimmed(text));
}

std::string Refusal::text() const {
    return place.line == 0
               ? reason
               : reason + ", line " + std::to_string(place.line) + ", column " + std::to_string(place.column);
}

Place Document::placeOf(std::size_t byte, Place from) const {
    for (; from.byte < byte && from.byte < text.size(); ++from.byte) {
        const char c = text[from.byte];
        const char next = text.c_str()[from.byte + 1];
        if (c == '\n' || (c == '\r' && next != '\n')) {
            ++from.line;
            from.column = 1;
        } else if ((static_cast<unsigned char>(next) & 0xC0U) != 0x80U) {
            ++from.column;
        }
    }
    return from;
}

Document readDocument(std::string bytes) {
    Document document;
    document.text = std::move(bytes);
    if (document.text.size() > Document::kLargest) {
        document.refusal = Refusal{Refusal::Kind::tooLarge,
                                   "the file is larger than " + std::to_string(Document::kLargest) + " bytes",
                                   {}};
    } else if (const auto failure = decode(document.text)) {
        document.refusal = Refusal{Refusal::Kind::encoding, failure->reason, document.placeOf(failure->byte)};
    } else {
        parse(document);
    }
    return document;
}

}  // namespace config
