#include "ModuleConfiguration.h"

#include "config/XMLConfigData.h"
#include "platform/Number.h"
#include "platform/agent/Logging.h"

#include <stdexcept>

#include <xercesc/util/XMLString.hpp>

// The reader reports to the agent's log, and here is no agent: what it has to say the findings say better.
extern "C" void KRXLog(int /*level*/, const char* /*format*/, ...) {}

namespace check {
namespace {

std::vector<std::string> listed(const std::string* texts) {
    std::vector<std::string> list;
    for (; texts != nullptr && !texts->empty(); ++texts) {
        list.push_back(*texts);
    }
    return list;
}

/// The module keeps one configuration, and reads the file of its first load into it again.
struct FreshConfiguration {
    FreshConfiguration() { XMLConfigData::destroyInstance(); }
    FreshConfiguration(const FreshConfiguration&) = delete;
    FreshConfiguration& operator=(const FreshConfiguration&) = delete;
    ~FreshConfiguration() { XMLConfigData::destroyInstance(); }
};

}  // namespace

std::optional<ModuleSettings> readAsModule(const std::string& path) {
    const FreshConfiguration fresh;
    try {
        const auto data = loadConfiguration(path);
        if (data == nullptr) {
            return std::nullopt;
        }
        ModuleSettings settings;
        settings.logFilePath = data->getLogFilePath();
        settings.fileSize = data->getFileSize();
        settings.logRevisionDays = data->getLogRevisionDays();
        settings.logLevel = data->getLogLevel();
        settings.fileLogger = data->getFileLogger();
        settings.tunnelOpenMessages = listed(data->getTunnelOpenMessages());
        settings.tunnelCloseMessages = listed(data->getTunnelCloseMessages());
        settings.fileOpenMessages = listed(data->getFileOpenMessages());
        settings.fileCloseMessages = listed(data->getFileCloseMessages());
        settings.abortMessage = data->getAbortMessage();
        settings.script = data->getScript();
        settings.resumeStatusFile = data->getRSMResumeStatusFile();
        settings.rdListner = data->getRDListner();
        settings.tunnelListner = data->getTunnelListner();
        settings.fileListner = data->getFileListner();
        return settings;
    } catch (const std::runtime_error&) {
        return std::nullopt;
    }
}

std::array<std::string, kTagCount> elementNames() {
    const TagNames tags;
    std::array<std::string, kTagCount> names;
    for (std::size_t i = 0; i < names.size(); ++i) {
        char* text = xercesc::XMLString::transcode(tags[static_cast<Tag>(i)]);
        names[i] = text;
        xercesc::XMLString::release(&text);
    }
    return names;
}

std::int32_t moduleNumber(std::string_view text) {
    return platform::readNumber(text);
}

}  // namespace check
