#include "session/SessionPage.h"

#include "session/PageParts.h"
#include "session/SessionRecord.h"

#include <string_view>
#include <utility>

namespace session {

std::string sessionPage(const SessionRecord& session, bool live, const SessionRecord* below) {
    const std::pair<std::string_view, std::string> slots[] = {
        {"<!--POLICY-->",
         live ? "" : "<meta http-equiv=\"Content-Security-Policy\" content=\"" + pagePolicy(false) + "\">"},
        {"/*STYLE*/", std::string(page::style)},
        {"<!--CONSOLE-->", live ? std::string(page::console) : ""},
        {"/*SESSION*/", below == nullptr ? session.json() : "[" + session.json() + "," + below->json() + "]"},
        {"/*SCRIPT*/", std::string(live ? page::live_script : page::script)},
    };
    std::string target;
    std::string_view rest = page::page;
    for (const auto& [slot, content] : slots) {  // in the order in which they stand in the page
        const std::size_t at = rest.find(slot);
        target.append(rest.substr(0, at)).append(content);
        rest.remove_prefix(at + slot.size());
    }
    return target.append(rest);
}

std::string pagePolicy(bool live) {
    return "default-src 'none'; style-src " + std::string(page::style_source) + "; script-src " +
           std::string(live ? page::live_script_source : page::script_source) +
           (live ? "; connect-src 'self'" : "") + "; img-src data:; base-uri 'none'; form-action 'none'";
}

}  // namespace session
