#include "sim/report/SessionPage.h"

#include "sim/report/PageParts.h"
#include "sim/report/SessionRecord.h"

#include <string_view>
#include <utility>

namespace sim {

std::string sessionPage(const SessionRecord& session, bool live) {
    const std::pair<std::string_view, std::string> slots[] = {
        {"/*STYLE*/", std::string(page::picture_css) + std::string(page::page_css)},
        {"<!--CONSOLE-->", live ? std::string(page::console_html) : ""},
        {"/*SESSION*/", session.json()},
        {"/*SCRIPT*/", std::string(page::model_js) + std::string(page::story_js) +
                           std::string(page::picture_js) + std::string(page::table_js) +
                           (live ? std::string(page::console_js) : "") + std::string(page::page_js)},
    };
    std::string target;
    std::string_view rest = page::page_html;
    for (const auto& [slot, content] : slots) {  // in the order in which they stand in the page
        const std::size_t at = rest.find(slot);
        target.append(rest.substr(0, at)).append(content);
        rest.remove_prefix(at + slot.size());
    }
    return target.append(rest);
}

}  // namespace sim
