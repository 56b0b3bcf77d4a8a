#include "session/AuditTexts.h"

#include "common/FileText.h"
#include "common/ShownText.h"
#include "config/Document.h"

#include <nlohmann/json.hpp>
#include <regex>
#include <utility>
#include <vector>

namespace session {

AuditTexts readAuditTexts(const std::string& configurationFile) {
    // Of what cannot be read or is refused the module says what is wrong with it; a page without these texts is still
    // worth having.
    tools::FileText file = tools::readFile(configurationFile, config::Document::kLargest + 1);
    const config::Document document = config::readDocument(std::move(file.text).value_or(""));
    return document.refusal ? AuditTexts()
                            : AuditTexts{configurationFile, config::takeSettings(document).settings};
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
    const auto list = [](const config::MessageList& messages) {
        const auto shown = config::textsOf(messages);
        return std::vector<std::string>(shown.begin(), shown.end());
    };
    const nlohmann::ordered_json json = {{"source", texts.source},
                                         {"abort", settings.abortMessage},
                                         {"tunnelOpen", list(settings.tunnelOpenMessages)},
                                         {"tunnelClose", list(settings.tunnelCloseMessages)},
                                         {"fileOpen", list(settings.fileOpenMessages)},
                                         {"fileClose", list(settings.fileCloseMessages)}};
    return logreader::scriptSafe(json.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace));
}

}  // namespace session
