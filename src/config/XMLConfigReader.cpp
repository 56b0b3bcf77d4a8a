// Reading of the XML configuration file into the configuration object.
#include "config/LimitedDOMParser.h"
#include "config/Toolkit.h"
#include "config/ToolkitMemory.h"
#include "config/XMLConfigData.h"
#include "platform/File.h"
#include "platform/ScopeEnd.h"
#include "platform/Text.h"
#include "platform/ThreadEnd.h"
#include "platform/agent/Logging.h"

#include <cstddef>
#include <new>
#include <optional>
#include <stdexcept>
#include <utility>

#include <xercesc/dom/DOM.hpp>
#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/util/OutOfMemoryException.hpp>
#include <xercesc/util/XMLException.hpp>
#include <xercesc/util/XMLString.hpp>

using xercesc::DOMElement;
using xercesc::DOMNode;
using xercesc::XMLString;

namespace {

constexpr std::size_t kLargestFile = std::size_t{1} << 20U;
// What a parse may take: at a time, and in all (where each expansion of an entity counts).
constexpr std::size_t kLiveMemory = std::size_t{13} << 20U;
constexpr std::size_t kTotalMemory = std::size_t{256} << 20U;

std::runtime_error parsingError(const std::string& path) {
    return std::runtime_error(" Error Parsing the File: " + path +
                              " !!! \n  Check the File Location & Format if the file is present \n ");
}

/// 8-bit form of a text of the toolkit.
std::string transcoded(const XMLCh* text) {
    if (text == nullptr) {
        return {};
    }
    char* converted = XMLString::transcode(text);
    if (converted == nullptr) {
        return {};
    }
    const platform::ScopeEnd release([&converted] { XMLString::release(&converted); });
    return converted;
}

std::string textOf(const DOMElement* element) {
    if (element == nullptr || element->getFirstChild() == nullptr) {
        return {};
    }
    return std::string(platform::trimmed(transcoded(element->getFirstChild()->getNodeValue())));
}

/// In document order. The toolkit's own look-up keeps each list that it made and searches among them, which
/// takes seconds for a file full of small elements. Nesting has its bound, so this cannot go deep.
const DOMElement* firstDescendant(const DOMElement& element, const XMLCh* tag) {
    for (const DOMElement* child = element.getFirstElementChild(); child != nullptr;
         child = child->getNextElementSibling()) {
        if (XMLString::equals(child->getTagName(), tag)) {
            return child;
        }
        if (const DOMElement* const found = firstDescendant(*child, tag)) {
            return found;
        }
    }
    return nullptr;
}

const DOMElement* asElement(const DOMNode* node) {
    return node != nullptr && node->getNodeType() == DOMNode::ELEMENT_NODE
               ? static_cast<const DOMElement*>(node)
               : nullptr;
}

std::string readFile(const std::string& path) {
    const platform::File file = platform::File::open(path, platform::OpenMode::Read);
    std::optional<std::string> contents = file.isOpen() ? file.readWhole(kLargestFile + 1) : std::nullopt;
    if (!contents || contents->size() > kLargestFile) {
        throw parsingError(path);
    }
    return std::move(*contents);
}

}  // namespace

std::shared_ptr<const XMLConfigData> loadConfiguration(const std::string& path) {
    toolkit::start();
    const std::shared_ptr<XMLConfigData> configuration = XMLConfigData::getInstance(path);
    {
        const platform::ScopeEnd load([] { toolkit::leave(); });
        if (configuration != nullptr) {
            const platform::ScopeEnd publication([&] { XMLConfigData::publish(configuration); });
            // When this throws, the toolkit runs on, ready for the next load.
            configuration->parseConfigFile();
        }
    }
    toolkit::stop();
    return configuration;
}

void XMLConfigData::parseConfigFile() {
    const auto fail = [](const char* format, const XMLCh* message) {
        const std::string text = transcoded(message);
        KRXLog(level::kForce, format, text.c_str());
        return std::runtime_error(text);
    };
    if (!toolkit::isRunning()) {
        throw std::runtime_error(" The XML toolkit cannot be started: " + configFilePath_ +
                                 " was not read. \n  Try again; when that fails too, restart the agent. \n ");
    }
    try {
        std::string contents = readFile(configFilePath_);
        contents += '\r';  // a cut character at the end would pass; with a byte behind it, it does not
        ToolkitMemory memory(kLiveMemory, kTotalMemory);
        LimitedDOMParser parser(&memory);
        const xercesc::MemBufInputSource source(reinterpret_cast<const XMLByte*>(contents.data()),
                                                contents.size(), "configuration", false, &memory);
        parser.parse(source);
        const xercesc::DOMDocument* const document = parser.getDocument();
        if (document == nullptr) {
            throw parsingError(configFilePath_);
        }
        const DOMElement* const root = document->getDocumentElement();
        if (root == nullptr) {
            throw std::runtime_error(" Error Retrieving  XML document for the File" + configFilePath_);
        }
        readDocument(*root);
    } catch (const std::runtime_error&) {
        throw;
    } catch (const platform::ForcedUnwind&) {
        throw;
    } catch (const xercesc::OutOfMemoryException&) {
        throw parsingError(configFilePath_);
    } catch (const xercesc::XMLException& exception) {
        throw fail(" Error Parsing File: %s", exception.getMessage());
    } catch (const xercesc::DOMException& exception) {
        throw fail(" DOM Exception: %s", exception.getMessage());
    } catch (...) {
        throw parsingError(configFilePath_);
    }
}

void XMLConfigData::readDocument(const DOMElement& root) {
    // Not by index: each look-up would walk from the first child again.
    for (const DOMNode* node = root.getFirstChild(); node != nullptr; node = node->getNextSibling()) {
        const DOMElement* const child = asElement(node);
        if (child == nullptr) {
            continue;
        }
        readSettingOfRoot(*child);
        try {
            handleElement(*child);
        } catch (const platform::ForcedUnwind&) {
            throw;
        } catch (...) {
            KRXLog(level::kForce, " Error while parsing file: %s", configFilePath_.c_str());
        }
    }
}

void XMLConfigData::readSettingOfRoot(const DOMElement& child) {
    if (XMLString::equals(child.getTagName(), tags_[TagNames::Script])) {
        if (const std::string text = textOf(&child); !text.empty()) {
            setScript(text);
        }
    } else if (XMLString::equals(child.getTagName(), tags_[TagNames::RSMResumeStatusFile])) {
        if (const std::string text = textOf(&child); !text.empty()) {
            setRSMResumeStatusFile(text);
        }
    }
}

void XMLConfigData::handleElement(const DOMElement& element) {
    const XMLCh* const name = element.getTagName();
    if (XMLString::equals(name, tags_[TagNames::FileLogging])) {
        readFileLogging(element);
    } else if (XMLString::equals(name, tags_[TagNames::TunnelMessags])) {
        readTunnelMessages(element);
    } else if (XMLString::equals(name, tags_[TagNames::ListnerSet])) {
        readListeners(element);
    } else if (XMLString::equals(name, tags_[TagNames::FileMessages])) {
        readFileMessages(element);
    }
}

void XMLConfigData::readFileLogging(const DOMElement& element) {
    const auto setting = [&](TagNames::Tag tag) { return textOf(firstDescendant(element, tags_[tag])); };
    if (const std::string text = setting(TagNames::LogFilePath); !text.empty()) {
        setLogFilePath(text);
    }
    if (const std::string text = setting(TagNames::FileSize); !text.empty()) {
        setFileSize(text);
    }
    if (const std::string text = setting(TagNames::LogRevisionDays); !text.empty()) {
        setLogRevisionDays(text);
    }
    if (const std::string text = setting(TagNames::LogLevel); !text.empty()) {
        setLogLevel(text);
    }
    if (!setting(TagNames::FileLogger).empty()) {
        setFileLogger(true);
    }
}

void XMLConfigData::readTunnelMessages(const DOMElement& element) {
    readMessageList(element, TagNames::OpenMessage, settings_.tunnelOpenMessages);
    readMessageList(element, TagNames::CloseMessage, settings_.tunnelCloseMessages);
    if (const std::string text = textOf(firstDescendant(element, tags_[TagNames::AbortMessage]));
        !text.empty()) {
        setAbortMessage(text);
    }
}

void XMLConfigData::readFileMessages(const DOMElement& element) {
    readMessageList(element, TagNames::OpenMessage, settings_.fileOpenMessages);
    readMessageList(element, TagNames::CloseMessage, settings_.fileCloseMessages);
}

void XMLConfigData::readListeners(const DOMElement& element) {
    const auto readFlag = [&](TagNames::Tag tag, bool& flag) {
        if (const DOMElement* const found = firstDescendant(element, tags_[tag])) {
            flag = !textOf(found).empty();
        }
    };
    readFlag(TagNames::RDListner, settings_.rdListner);
    readFlag(TagNames::TunnelListner, settings_.tunnelListner);
    readFlag(TagNames::FileListner, settings_.fileListner);
}

void XMLConfigData::readMessageList(const DOMElement& parent, TagNames::Tag tag, MessageList& list) const {
    const DOMElement* const element = firstDescendant(parent, tags_[tag]);
    if (element == nullptr || element->getFirstChild() == nullptr) {
        return;
    }
    const auto forEachMessage = [&](const auto& use) {
        for (const DOMNode* node = element->getFirstChild(); node != nullptr; node = node->getNextSibling()) {
            const DOMElement* const child = asElement(node);
            if (child != nullptr && XMLString::equals(child->getTagName(), tags_[TagNames::Message])) {
                if (std::string text = textOf(child); !text.empty()) {
                    use(std::move(text));
                }
            }
        }
    };
    std::size_t count = 0;
    forEachMessage([&](std::string&&) { ++count; });
    std::unique_ptr<std::string[]> texts(new (std::nothrow) std::string[count + 1]);
    list.reset();
    if (!texts) {
        KRXLog(level::kForce, "new Failed in handleElement of XMLConfigData. \n");
        return;
    }
    std::size_t next = 0;
    forEachMessage([&](std::string&& text) { texts[next++] = std::move(text); });
    list = std::move(texts);
}
