#include "Document.h"
#include "config/ToolkitMemory.h"

#include <memory>

#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/sax/Locator.hpp>
#include <xercesc/sax/SAXParseException.hpp>
#include <xercesc/sax2/Attributes.hpp>
#include <xercesc/sax2/DefaultHandler.hpp>
#include <xercesc/sax2/SAX2XMLReader.hpp>
#include <xercesc/sax2/XMLReaderFactory.hpp>
#include <xercesc/util/OutOfMemoryException.hpp>
#include <xercesc/util/XMLException.hpp>
#include <xercesc/util/XMLString.hpp>
#include <xercesc/util/XMLUni.hpp>

namespace check {
namespace {

// The module's own bounds. Its tree takes more than these events do, so what it accepts can be read here.
constexpr std::size_t kDeepestNesting = 256;
constexpr std::size_t kLiveMemory = std::size_t{13} << 20U;
constexpr std::size_t kTotalMemory = std::size_t{256} << 20U;
// More text than this never fits into the module's tree.
constexpr std::size_t kMostCharacters = kLiveMemory / sizeof(XMLCh);
constexpr std::size_t kMostAttributes = 1000;  // kept for findings

struct Refused {};

std::string utf8(const XMLCh* text) {
    return text == nullptr ? std::string() : toUtf8(text, xercesc::XMLString::stringLen(text));
}

bool isNamed(const XMLCh* text) {
    return text != nullptr && *text != 0;
}

std::string quoted(const std::string& text) {
    return "'" + text + "'";
}

/// Builds the tree of elements and notes where each stands.
class TreeBuilder final : public xercesc::DefaultHandler {
  public:
    TreeBuilder(Document& document, const SourceText& source, bool keep)
        : document_(document), source_(source), keep_(keep) {}

    void setDocumentLocator(const xercesc::Locator* locator) override { locator_ = locator; }

    void startElement(const XMLCh* /*uri*/, const XMLCh* /*localName*/, const XMLCh* name,
                      const xercesc::Attributes& attributes) override {
        const Position end = here();
        if (depth_ >= kDeepestNesting) {
            refuse(source_.startOfTag(end), "too-deep",
                   "elements are nested deeper than " + std::to_string(kDeepestNesting));
        }
        ++depth_;
        meet(Element::First::element);
        Element& element = document_.elements.emplace_back();
        element.name = utf8(name);
        element.end = end;
        element.fromEntity = entityDepth_ > 0;
        element.parent = open_;
        if (open_ != nullptr && keep_) {
            (open_->lastChild != nullptr ? open_->lastChild->next : open_->firstChild) = &element;
            open_->lastChild = &element;
        }
        open_ = &element;
        for (XMLSize_t i = 0; i < attributes.getLength(); ++i) {
            spend(xercesc::XMLString::stringLen(attributes.getValue(i)));
            if (keep_ && document_.attributes.size() < kMostAttributes) {
                document_.attributes.push_back({&element, utf8(attributes.getQName(i))});
            }
        }
        entitiesOutside_.push_back(entityDepth_);
        entityDepth_ = 0;
        passed();
    }

    void endElement(const XMLCh* /*uri*/, const XMLCh* /*localName*/, const XMLCh* /*name*/) override {
        --depth_;
        open_ = open_->parent;
        if (!keep_) {
            document_.elements.pop_back();
        }
        entityDepth_ = entitiesOutside_.back();
        entitiesOutside_.pop_back();
        passed();
    }

    void characters(const XMLCh* text, const XMLSize_t length) override {
        spend(length);
        if (open_ != nullptr && entityDepth_ == 0) {
            const std::string piece = toUtf8(text, length);
            const bool blank = piece.find_first_not_of(" \t\r\n") == std::string::npos;
            const Position start = blank ? Position() : behind_;
            if (!blank && open_->stray.line == 0) {
                open_->stray = start;
            }
            if (open_->first == Element::First::nothing) {
                open_->first = Element::First::text;
                inFirstNode_ = true;
            }
            if (inFirstNode_) {
                open_->text += piece;
            } else if (!blank && open_->rest.line == 0) {
                open_->rest = start;
            }
        }
        behind_ = here();
    }
    void ignorableWhitespace(const XMLCh* text, const XMLSize_t length) override { characters(text, length); }

    void comment(const XMLCh* text, const XMLSize_t length) override {
        spend(length);
        if (meet(Element::First::comment)) {
            open_->text = toUtf8(text, length);
        }
        passed();
    }
    void processingInstruction(const XMLCh* /*target*/, const XMLCh* data) override {
        if (meet(Element::First::instruction)) {
            open_->text = utf8(data);
        }
        passed();
    }
    void startCDATA() override { inFirstNode_ = meet(Element::First::section); }
    void endCDATA() override { passed(); }
    void startEntity(const XMLCh* /*name*/) override {
        if (open_ == nullptr) {
            return;
        }
        if (!meet(Element::First::entity) && entityDepth_ == 0 && open_->rest.line == 0) {
            open_->rest = behind_;
        }
        ++entityDepth_;
    }
    void endEntity(const XMLCh* /*name*/) override {
        if (open_ != nullptr) {
            --entityDepth_;
            passed();
        }
    }

    // ---- What the module refuses

    void startDTD(const XMLCh* /*name*/, const XMLCh* publicId, const XMLCh* systemId) override {
        if (isNamed(publicId) || isNamed(systemId)) {
            refuse(here(), "external-name",
                   "the document type names the external subset " +
                       quoted(utf8(isNamed(systemId) ? systemId : publicId)) +
                       "; the module refuses such a document and opens nothing that it names");
        }
    }
    void externalEntityDecl(const XMLCh* name, const XMLCh* /*publicId*/, const XMLCh* systemId) override {
        refuseEntity(name, systemId);
    }
    void unparsedEntityDecl(const XMLCh* name, const XMLCh* /*publicId*/, const XMLCh* systemId,
                            const XMLCh* /*notation*/) override {
        refuseEntity(name, systemId);
    }
    void fatalError(const xercesc::SAXParseException& problem) override {
        Finding& finding = document_.refusal.emplace();
        finding.position = {static_cast<std::uint32_t>(problem.getLineNumber()),
                            static_cast<std::uint32_t>(problem.getColumnNumber())};
        finding.kind = "not-well-formed";
        finding.text = "not well-formed: " + utf8(problem.getMessage());
        if (open_ != nullptr) {
            finding.notes.push_back(
                {source_.startOfTag(open_->end), quoted(open_->name) + " is open; it was opened here"});
        }
        throw Refused();
    }
    void error(const xercesc::SAXParseException& /*problem*/) override {}
    void warning(const xercesc::SAXParseException& /*problem*/) override {}

  private:
    Position here() const {
        return locator_ == nullptr ? Position{1, 1}
                                   : Position{static_cast<std::uint32_t>(locator_->getLineNumber()),
                                              static_cast<std::uint32_t>(locator_->getColumnNumber())};
    }

    /// A child node of the open element begins. True when it is the first one, whose value is the element's.
    bool meet(Element::First kind) {
        inFirstNode_ = false;
        if (open_ == nullptr || entityDepth_ > 0 || open_->first != Element::First::nothing) {
            return false;
        }
        open_->first = kind;
        return true;
    }
    void spend(std::size_t characters) {
        characters_ += characters;
        if (characters_ > kMostCharacters) {
            refuse({1, 1}, "too-much", kTooMuch);
        }
    }
    void passed() {
        inFirstNode_ = false;
        behind_ = here();
    }
    [[noreturn]] void refuse(Position position, const char* kind, std::string text) {
        document_.refusal = Finding{Severity::error, position, kind, std::move(text), {}};
        throw Refused();
    }
    void refuseEntity(const XMLCh* name, const XMLCh* systemId) {
        refuse(source_.startOfTag(here()), "external-name",
               "the entity " + quoted(utf8(name)) + " names " + quoted(utf8(systemId)) +
                   ", which is outside; the module refuses such a document and opens nothing that it names");
    }

    Document& document_;
    const SourceText& source_;
    const bool keep_;
    std::size_t characters_ = 0;
    const xercesc::Locator* locator_ = nullptr;
    Element* open_ = nullptr;
    std::size_t depth_ = 0;
    std::size_t entityDepth_ = 0;  ///< entities that are open within the open element
    std::vector<std::size_t> entitiesOutside_;
    bool inFirstNode_ = false;
    Position behind_{1, 1};  ///< behind what was reported last: there the next thing begins
};

void parse(const std::string& bytes, TreeBuilder& builder) {
    ToolkitMemory memory(kLiveMemory, kTotalMemory);
    const std::unique_ptr<xercesc::SAX2XMLReader> parser(xercesc::XMLReaderFactory::createXMLReader(&memory));
    using xercesc::XMLUni;
    parser->setFeature(XMLUni::fgSAX2CoreNameSpaces, false);
    parser->setFeature(XMLUni::fgSAX2CoreNameSpacePrefixes, true);
    parser->setFeature(XMLUni::fgSAX2CoreValidation, false);
    parser->setFeature(XMLUni::fgXercesDynamic, false);
    parser->setFeature(XMLUni::fgXercesSchema, false);
    parser->setFeature(XMLUni::fgXercesLoadExternalDTD, false);
    parser->setFeature(XMLUni::fgXercesDisableDefaultEntityResolution, true);
    parser->setContentHandler(&builder);
    parser->setLexicalHandler(&builder);
    parser->setDeclarationHandler(&builder);
    parser->setDTDHandler(&builder);
    parser->setErrorHandler(&builder);
    const xercesc::MemBufInputSource source(reinterpret_cast<const XMLByte*>(bytes.data()), bytes.size(),
                                            "configuration", false, &memory);
    parser->parse(source);
}

}  // namespace

Document readDocument(const std::string& bytes, const SourceText& source, bool keep) {
    Document document;
    if (bytes.size() > kLargestFile) {
        document.refusal = Finding{Severity::error,
                                   {1, 1},
                                   "too-large",
                                   "the file is larger than " + std::to_string(kLargestFile) + " bytes",
                                   {}};
        return document;
    }
    TreeBuilder builder(document, source, keep);
    const auto refuse = [&](const char* kind, std::string text) {
        document.refusal = Finding{Severity::error, {1, 1}, kind, std::move(text), {}};
    };
    try {
        parse(bytes, builder);
    } catch (const Refused&) {
        // Says itself why.
    } catch (const xercesc::OutOfMemoryException&) {
        refuse("too-much", kTooMuch);
    } catch (const xercesc::XMLException& exception) {
        refuse("not-well-formed", "not well-formed: " + utf8(exception.getMessage()));
    }
    return document;
}

}  // namespace check
