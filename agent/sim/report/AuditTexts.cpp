#include "sim/report/AuditTexts.h"

#include "config/Document.h"
#include "sim/FileVerbs.h"
#include "sim/report/ScriptText.h"

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
    // The module says what is wrong with it; a page without these texts is still worth having.
    const config::Document document = config::readDocument(readFile(configurationFile).value_or(""));
    return document.refusal ? AuditTexts()
                            : AuditTexts{configurationFile, config::takeSettings(document).settings};
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
