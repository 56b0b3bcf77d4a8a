#include "FileCheck.h"

#include "Document.h"
#include "Rules.h"
#include "SettingsInForce.h"
#include "platform/File.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <regex>
#include <system_error>

namespace check {
namespace {

/// One byte more than the module reads, so that a file that is too large can be told.
constexpr std::size_t kMostRead = kLargestFile + 1;

/// The start of a file, or why it cannot be read.
std::string readFile(const std::string& path, std::string& unreadable) {
    const platform::File file = platform::File::open(path, platform::OpenMode::Read);
    if (!file.isOpen()) {
        const int error = errno;
        std::error_code ignored;
        unreadable = std::filesystem::is_directory(path, ignored) ? "is a directory"
                     : error == EINVAL                            ? "is no regular file"
                                                                  : std::strerror(error);
        return {};
    }
    std::string bytes(kMostRead, '\0');
    bytes.resize(file.readStart(bytes.data(), bytes.size()));
    return bytes;
}

/// Why the module refuses a document that is well-formed and within all bounds that can be told from outside.
Finding refusalOf(const SourceText& source) {
    Finding finding{Severity::error, {1, 1}, "too-much", kTooMuch, {}};
    static const std::regex declaration("^<\\?xml\\s+version\\s*=\\s*([\"'])(.*?)\\1");
    std::string start;
    std::size_t mark = 0;
    for (const std::string& character : source.excerpt({1, 1}, mark)) {
        start += character;
    }
    if (std::smatch found;
        std::regex_search(start, found, declaration) && found[2] != "1.0" && found[2] != "1.1") {
        finding.kind = "not-well-formed";
        finding.text = "the XML version " + shown(found.str(2)) + " is none that the module's parser knows";
    }
    return finding;
}

}  // namespace

Result checkFile(const std::string& file, const std::optional<std::string>& schedule,
                 const KnownElements& known) {
    Result result;
    result.file = file;
    const std::string bytes = readFile(file, result.unreadable);
    if (!result.unreadable.empty()) {
        return result;
    }
    const std::optional<ModuleSettings> settings = readAsModule(file);
    result.accepted = settings.has_value();
    result.source = SourceText(bytes);
    const Document document = readDocument(bytes, result.source, result.accepted);
    if (!settings) {
        Finding reason = document.refusal ? *document.refusal : refusalOf(result.source);
        reason.notes.push_back(
            {{}, "the module refuses this file, so the start of the logger and of RSM fail with it"});
        result.findings.add(reason.severity, reason.position, reason.kind, reason.text).notes = reason.notes;
        return result;
    }
    if (document.elements.empty() || document.refusal) {
        return result;  // the module read what this program could not: there is nothing to say
    }
    const Selection selection = select(document, known);
    const Inspection inspection{file,      result.source, document, known,
                                selection, *settings,     schedule, result.findings};
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
