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
        // As for what is refused: the module says what is wrong with it; a page without these texts is still worth having.
    }
    return {};
}

AuditMeaning meaningByWords(const std::string& text) {
    const auto holds = [&text](const char* words) {
        return std::regex_search(text, std::regex(words, std::regex::icase));
    };
    const auto activity = [](bool opens, bool closes) {
        return opens == closes ? Activity::none : opens ? Activity::open : Activity::close;
    };
    AuditMeaning meaning;
    const bool opens = holds("\\b(open|start|begin)");
    if (holds("tunnel|desktop|session")) {
        meaning.tunnel = holds("\\babort") ? Activity::abort : activity(opens, holds("\\b(clos|end|stop)"));
    }
    if (holds("\\bfile|transfer")) {
        meaning.file = activity(opens, holds("\\b(finish|complet|end|clos|abort)"));
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
