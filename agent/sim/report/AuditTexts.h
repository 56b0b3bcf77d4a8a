// The texts by which audit messages show remote activity.
#pragma once

#include <string>
#include <vector>

namespace sim {

/// What a configuration file lists; all empty when it lists nothing or cannot be read.
struct AuditTexts {
    std::string source;  ///< the file they were found in; empty when there is none
    std::vector<std::string> tunnelOpen;
    std::vector<std::string> tunnelClose;
    std::string abort;
    std::vector<std::string> fileOpen;
    std::vector<std::string> fileClose;
    std::string resumeFile;  ///< the configured path of the resume state file
};

AuditTexts readAuditTexts(const std::string& configurationFile);
/// As a JSON object that may lie in a script element.
std::string asJson(const AuditTexts& texts);

}  // namespace sim
