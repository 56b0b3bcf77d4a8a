#include "Selection.h"

namespace check {

Selection select(const config::Document& document) {
    constexpr TagNames tags;
    Selection selection{config::takeSettings(document), {}};
    for (const config::Reading& reading : selection.taken.readings) {
        selection.looked.emplace(reading.element, reading.row->tag);
        if (reading.row->kind == config::Kind::messages) {
            for (const config::Element* const message : config::messagesOf(*reading.element)) {
                selection.looked.emplace(message, TagNames::Message);
            }
        }
    }
    for (const config::Element* child = document.root()->firstChild; child != nullptr; child = child->next) {
        for (const config::SettingRow& row : config::settingRows()) {
            if (!child->fromEntity && row.section && child->name == tags[*row.section]) {
                selection.looked.emplace(child, *row.section);
            }
        }
    }
    return selection;
}

}  // namespace check
