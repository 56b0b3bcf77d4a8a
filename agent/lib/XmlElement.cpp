#include "lib/XmlElement.h"

#include <limits>
#include <memory>
#include <new>
#include <stdexcept>
#include <type_traits>

#include <expat.h>

namespace agent {

namespace {

/// Separates a namespace from a local name in what expat reports.
constexpr char kSeparator = '|';
/// Far deeper than any message.
constexpr std::size_t kMaximumDepth = 32;

std::string localName(const char* reported) {
    const std::string_view name(reported);
    return std::string(name.substr(name.rfind(kSeparator) + 1));
}

std::string spaceOf(const char* reported) {
    const std::string_view name(reported);
    const std::size_t end = name.rfind(kSeparator);
    return end == std::string_view::npos ? std::string() : std::string(name.substr(0, end));
}

class TreeBuilder final {
  public:
    explicit TreeBuilder(XML_Parser parser) : parser_(parser) {
        XML_SetUserData(parser, this);
        XML_SetElementHandler(parser, onStart, onEnd);
        XML_SetCharacterDataHandler(parser, onText);
        XML_SetStartDoctypeDeclHandler(parser, onDoctype);
    }
    TreeBuilder(const TreeBuilder&) = delete;
    TreeBuilder& operator=(const TreeBuilder&) = delete;

    XmlElement parse(std::string_view document) {
        if (document.size() > static_cast<std::size_t>(std::numeric_limits<int>::max())) {
            throw std::runtime_error("the document is too large");
        }
        if (XML_Parse(parser_, document.data(), static_cast<int>(document.size()), XML_TRUE) !=
            XML_STATUS_OK) {
            const char* reason = reason_ == nullptr ? XML_ErrorString(XML_GetErrorCode(parser_)) : reason_;
            throw std::runtime_error("line " + std::to_string(XML_GetCurrentLineNumber64(parser_)) + ": " +
                                     reason);
        }
        return std::move(root_.children.front());
    }

  private:
    static void onStart(void* self, const XML_Char* name, const XML_Char** attributes) {
        static_cast<TreeBuilder*>(self)->guarded(
            [&](TreeBuilder& builder) { builder.start(name, attributes); });
    }
    static void onEnd(void* self, const XML_Char*) { static_cast<TreeBuilder*>(self)->path_.pop_back(); }
    static void onText(void* self, const XML_Char* text, int length) {
        static_cast<TreeBuilder*>(self)->guarded([&](TreeBuilder& builder) {
            builder.path_.back()->text.append(text, static_cast<std::size_t>(length));
        });
    }
    static void onDoctype(void* self, const XML_Char*, const XML_Char*, const XML_Char*, int) {
        static_cast<TreeBuilder*>(self)->refuse("a document type declaration is not accepted");
    }

    /// No exception may cross the parser's C frames.
    template <typename Step>
    void guarded(Step step) {
        try {
            step(*this);
        } catch (const std::bad_alloc&) {
            refuse("out of memory");
        }
    }

    void start(const char* name, const char** attributes) {
        if (path_.size() > kMaximumDepth) {
            refuse("elements are nested too deeply");
            return;
        }
        XmlElement& element = path_.back()->children.emplace_back();
        path_.push_back(&element);
        element.name = localName(name);
        element.space = spaceOf(name);
        for (; *attributes != nullptr; attributes += 2) {
            element.attributes.emplace_back(localName(attributes[0]), attributes[1]);
        }
    }

    void refuse(const char* reason) {
        reason_ = reason;
        XML_StopParser(parser_, XML_FALSE);
    }

    XML_Parser parser_;
    XmlElement root_;                           ///< stands above the document's root
    std::vector<XmlElement*> path_ = {&root_};  ///< the open elements; only the last one grows
    const char* reason_ = nullptr;              ///< why we stopped the parser
};

}  // namespace

XmlElement parseXml(std::string_view document) {
    const std::unique_ptr<std::remove_pointer_t<XML_Parser>, decltype(&XML_ParserFree)> parser(
        XML_ParserCreateNS(nullptr, kSeparator), XML_ParserFree);
    if (parser == nullptr) {
        throw std::bad_alloc();
    }
    return TreeBuilder(parser.get()).parse(document);
}

}  // namespace agent
