// Which elements of a document the module takes, and looks at.
#pragma once

#include "config/Settings.h"

#include <unordered_map>

namespace check {

struct Selection {
    config::TakenSettings taken;
    std::unordered_map<const config::Element*, TagNames::Tag>
        looked;  ///< all elements that are looked at, sections too

    const config::Element* operator[](config::Setting setting) const { return taken.originOf(setting); }
};

Selection select(const config::Document& document);

}  // namespace check
