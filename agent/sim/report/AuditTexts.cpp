#include "sim/report/AuditTexts.h"

#include "lib/XmlElement.h"
#include "sim/Event.h"
#include "sim/FileVerbs.h"
#include "sim/report/ScriptText.h"

#include <algorithm>
#include <iterator>
#include <stdexcept>

namespace sim {

namespace {

const agent::XmlElement* childOf(const agent::XmlElement& parent, std::string_view name) {
    const auto found = std::find_if(parent.children.begin(), parent.children.end(),
                                    [name](const agent::XmlElement& child) { return child.name == name; });
    return found == parent.children.end() ? nullptr : &*found;
}

/// An element's text as the module takes it, without the blanks around it; empty without the element.
std::string textOf(const agent::XmlElement* element) {
    constexpr std::string_view blanks = " \t";
    const std::string text = element == nullptr ? "" : element->text;
    const std::size_t begin = std::min(text.find_first_not_of(blanks), text.size());
    return text.substr(begin, text.find_last_not_of(blanks) + 1 - begin);
}

std::vector<std::string> messagesOf(const agent::XmlElement& parent, std::string_view list) {
    std::vector<std::string> texts;
    if (const agent::XmlElement* element = childOf(parent, list)) {
        for (const agent::XmlElement& message : element->children) {
            if (message.name == "Message" && !textOf(&message).empty()) {
                texts.push_back(textOf(&message));
            }
        }
    }
    return texts;
}

void appendList(std::string& target, std::string_view name, const std::vector<std::string>& texts) {
    target.append(",\"").append(name).append("\":[");
    for (const std::string& text : texts) {
        target += target.back() == '[' ? "" : ",";
        target += asScriptText(text);
    }
    target += ']';
}

}  // namespace

AuditTexts readAuditTexts(const std::string& configurationFile) {
    AuditTexts texts;
    try {
        const agent::XmlElement root = agent::parseXml(readFile(configurationFile).value_or(""));
        if (const agent::XmlElement* tunnels = childOf(root, "TunnelMessags")) {
            texts.tunnelOpen = messagesOf(*tunnels, "OpenMessage");
            texts.tunnelClose = messagesOf(*tunnels, "CloseMessage");
            texts.abort = textOf(childOf(*tunnels, "AbortMessage"));
        }
        if (const agent::XmlElement* files = childOf(root, "FileMessages")) {
            texts.fileOpen = messagesOf(*files, "OpenMessage");
            texts.fileClose = messagesOf(*files, "CloseMessage");
        }
        texts.resumeFile = textOf(childOf(root, "RSMResumeStatusFile"));
        texts.source = configurationFile;
    } catch (const std::runtime_error&) {
        // The module says what is wrong with it; a page without these texts is still worth having.
    }
    return texts;
}

std::string asJson(const AuditTexts& texts) {
    if (texts.source.empty()) {
        return "null";
    }
    std::string target =
        "{\"source\":" + asScriptText(texts.source) + ",\"abort\":" + asScriptText(texts.abort);
    appendList(target, "tunnelOpen", texts.tunnelOpen);
    appendList(target, "tunnelClose", texts.tunnelClose);
    appendList(target, "fileOpen", texts.fileOpen);
    appendList(target, "fileClose", texts.fileClose);
    return target + "}";
}

}  // namespace sim
