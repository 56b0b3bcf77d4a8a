#include "status/FileStatus.h"

#include "common/ShownText.h"
#include "status/Moment.h"
#include "status/StateFiles.h"
#include "status/StatusJson.h"

namespace status {

namespace {

/// A line in which a terminal finds nothing to act upon, whatever a path holds.
std::string line(const std::string& label, const std::string& text) {
    std::string shown = label;
    logreader::appendShown(shown, text, "  ");
    return shown + "\n";
}

}  // namespace

std::string detailsText(const StateFiles& files, std::int64_t now) {
    return (files.isConfigured() ? "" : line("  configuration  ", files.configuration.problem())) +
           line("  last known     ", files.resumeText()) + line("  next schedule  ", files.scheduleText(now));
}

std::string fileStatusText(const StateFiles& files, std::int64_t now) {
    return line("", files.startText(now)) + line("  now            ", momentText(now)) +
           detailsText(files, now);
}

std::string fileStatusJson(const StateFiles& files, std::int64_t now) {
    nlohmann::ordered_json json = {{"sentence", files.startText(now)}, {"now", momentJson(now)}};
    json.update(stateFilesJson(files, now));
    json["configuration"] = foundJson(files.configuration);
    return dumped(json);
}

}  // namespace status
