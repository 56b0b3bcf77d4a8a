#include "FileCheck.h"

#include "Rules.h"
#include "common/FileText.h"

#include <utility>

namespace check {
Result checkFile(const std::string& file, const std::optional<std::string>& schedule) {
    Result result;
    result.file = file;
    // One byte more than the module reads, so that a file that is too large can be told.
    tools::FileText bytes = tools::readFile(file, config::Document::kLargest + 1);
    if (!bytes.text) {
        result.unreadable = bytes.reason;
        return result;
    }
    const config::Document document = config::readDocument(std::move(*bytes.text));
    result.text = document.text;
    result.accepted = !document.refusal;
    if (!result.accepted) {
        result.findings.add(refusal(document));
        return result;
    }
    const Inspection inspection(file, document, schedule, result.findings);
    checkStructure(inspection);
    checkTexts(inspection);
    checkListeners(inspection);
    checkPaths(inspection);
    checkScript(inspection);
    result.findings.sort();
    result.settings = settingsInForce(inspection);
    return result;
}

}  // namespace check
