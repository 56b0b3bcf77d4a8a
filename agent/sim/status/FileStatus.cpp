#include "sim/status/FileStatus.h"

#include "config/XMLConfigData.h"
#include "sim/status/Moment.h"
#include "sim/status/StateFiles.h"
#include "sim/status/StatusJson.h"

#include <sstream>
#include <stdexcept>

namespace sim {

std::string fileStatusText(const StateFiles& files, std::int64_t now) {
    std::ostringstream text;
    text << files.startText(now) << "\n  now            " << momentText(now) << "\n  last known     "
         << files.resumeText() << "\n  next schedule  " << files.scheduleText(now) << "\n";
    return text.str();
}

std::string fileStatusJson(const StateFiles& files, std::int64_t now) {
    nlohmann::ordered_json json = {{"sentence", files.startText(now)}, {"now", momentJson(now)}};
    json.update(stateFilesJson(files, now));
    return dumped(json);
}

std::string resumePathOf(const std::string& configurationFile) {
    const auto configuration = loadConfiguration(configurationFile);
    if (!configuration) {
        throw std::runtime_error(configurationFile + ": not enough memory for it");
    }
    return configuration->getRSMResumeStatusFile();
}

}  // namespace sim
