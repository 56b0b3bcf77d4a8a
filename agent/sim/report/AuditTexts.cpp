#include "report/AuditTexts.h"

#include "Event.h"
#include "XmlElement.h"
#include "report/ScriptText.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace sim {

namespace {

constexpr std::size_t kLargestFile = std::size_t{1} << 20U;  // bytes

const agent::XmlElement* childOf(const agent::XmlElement& parent, std::string_view name) {
    const auto found = std::find_if(parent.children.begin(), parent.children.end(),
                                    [name](const agent::XmlElement& child) { return child.name == name; });
    return found == parent.children.end() ? nullptr : &*found;
}

std::vector<std::string> messagesOf(const agent::XmlElement& parent, std::string_view list) {
    std::vector<std::string> texts;
    if (const agent::XmlElement* element = childOf(parent, list)) {
        for (const agent::XmlElement& message : element->children) {
            if (message.name == "Message" && !message.text.empty()) {
                texts.push_back(message.text);
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
    std::ifstream file(configurationFile, std::ios::binary);
    std::string contents(kLargestFile, '\0');
    file.read(contents.data(), static_cast<std::streamsize>(contents.size()));
    contents.resize(static_cast<std::size_t>(file.gcount()));
    AuditTexts texts;
    try {
        const agent::XmlElement root = agent::parseXml(contents);
        if (const agent::XmlElement* tunnels = childOf(root, "TunnelMessags")) {
            texts.tunnelOpen = messagesOf(*tunnels, "OpenMessage");
            texts.tunnelClose = messagesOf(*tunnels, "CloseMessage");
            const agent::XmlElement* abort = childOf(*tunnels, "AbortMessage");
            texts.abort = abort == nullptr ? "" : abort->text;
        }
        if (const agent::XmlElement* files = childOf(root, "FileMessages")) {
            texts.fileOpen = messagesOf(*files, "OpenMessage");
            texts.fileClose = messagesOf(*files, "CloseMessage");
        }
        const agent::XmlElement* resume = childOf(root, "RSMResumeStatusFile");
        texts.resumeFile = resume == nullptr ? "" : resume->text;
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
