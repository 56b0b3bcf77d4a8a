#include "FileCheck.h"

#include "Rules.h"
#include "platform/File.h"

#include <cerrno>
#include <cstring>
#include <system_error>
#include <utility>

namespace check {
namespace {

/// The start of a file, or why it cannot be read.
std::string readFile(const std::string& path, std::string& unreadable) {
    const platform::File file = platform::File::open(path, platform::OpenMode::Read);
    if (!file.isOpen()) {
        const int error = errno;
        std::error_code ignored;
        unreadable = std::filesystem::is_directory(path, ignored) ? "is a directory"
                     : error == EINVAL                            ? "is not a regular file"
                                                                  : std::strerror(error);
        return {};
    }
    // One byte more than the module reads, so that a file that is too large can be told.
    return file.readWhole(config::Document::kLargest + 1).value_or("");
}

}  // namespace

Result checkFile(const std::string& file, const std::optional<std::string>& schedule) {
    Result result;
    result.file = file;
    std::string bytes = readFile(file, result.unreadable);
    if (!result.unreadable.empty()) {
        return result;
    }
    const config::Document document = config::readDocument(std::move(bytes));
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
