#include "sim/report/AuditTexts.h"

#include "config/Document.h"
#include "sim/FileVerbs.h"
#include "sim/report/ScriptText.h"

#include <regex>
#include <stdexcept>

namespace sim {

namespace {

void appendList(std::string& target, std::string_view name, const config::MessageList& list) {
    target.append(",\"").append(name).append("\":[");
    for (const std::string& text : config::textsOf(list)) {
        target += target.back() == '[' ? "" : ",";
        target += asScriptText(text);
    }
    target += ']';
}

}  // namespace

AuditTexts readAuditTexts(const std::string& configurationFile) {
    try {
        const config::Document document = config::readDocument(readFile(configurationFile).value_or(""));
        if (!document.refusal) {
            return {configurationFile, config::takeSettings(document).settings};
        }
    } catch (const std::runtime_error&) {
        // As for a refused one: the module reports the fault; a page without these texts is still worth having.
    }
    return {};
}

AuditMeaning meaningByWords(const std::string& text) {
    const auto words = [](const char* pattern) { return std::regex(pattern, std::regex::icase); };
    static const std::regex kOpens = words("\\b(open|start|begin)");
    static const std::regex kTunnel = words("tunnel|desktop|session");
    static const std::regex kTunnelCloses = words("\\b(clos|end|stop)");
    static const std::regex kTunnelAborts = words("\\babort");
    static const std::regex kFile = words("\\bfile|transfer");
    static const std::regex kFileCloses = words("\\b(finish|complet|end|clos|abort)");
    const auto holds = [&text](const std::regex& wanted) { return std::regex_search(text, wanted); };
    const auto activity = [](bool opens, bool closes) {
        return opens == closes ? Activity::none : opens ? Activity::open : Activity::close;
    };
    AuditMeaning meaning;
    const bool opens = holds(kOpens);
    if (holds(kTunnel)) {
        meaning.tunnel = holds(kTunnelAborts) ? Activity::abort : activity(opens, holds(kTunnelCloses));
    }
    if (holds(kFile)) {
        meaning.file = activity(opens, holds(kFileCloses));
    }
    return meaning;
}

std::string asJson(const AuditTexts& texts) {
    if (texts.source.empty()) {
        return "null";
    }
    const config::Settings& settings = texts.settings;
    std::string target =
        "{\"source\":" + asScriptText(texts.source) + ",\"abort\":" + asScriptText(settings.abortMessage);
    appendList(target, "tunnelOpen", settings.tunnelOpenMessages);
    appendList(target, "tunnelClose", settings.tunnelCloseMessages);
    appendList(target, "fileOpen", settings.fileOpenMessages);
    appendList(target, "fileClose", settings.fileCloseMessages);
    return target + "}";
}

}  // namespace sim
