// The texts by which audit messages show remote activity.
#pragma once

#include "config/Settings.h"
#include "detection/AuditMeaning.h"

#include <string>

namespace session {

/// What a configuration file gives; the defaults when it cannot be read.
struct AuditTexts {
    std::string source;  ///< the file they were found in; empty when there is none
    config::Settings settings;
};

AuditTexts readAuditTexts(const std::string& configurationFile);
/// What an audit message probably means, by its words, where there is no configuration to tell.
AuditMeaning meaningByWords(const std::string& text);
/// As a JSON object that may lie in a script element.
std::string asJson(const AuditTexts& texts);

}  // namespace session
