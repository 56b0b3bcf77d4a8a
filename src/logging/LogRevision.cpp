#include "logging/LogRevision.h"

#include "config/XMLConfigData.h"
#include "platform/Clock.h"
#include "platform/Directory.h"
#include "platform/File.h"
#include "platform/Number.h"
#include "platform/agent/Logging.h"

namespace {

constexpr std::int64_t kSecondsPerDay = 86400;
constexpr char kExtension[] = ".xml";

void deleteFile(const std::string& path) {
    KRXLog(level::kForce, "\n deleting file = %s \n", path.c_str());
    KRXLog(level::kForce, "%s",
           platform::removeFile(path) ? "\n File successfully deleted." : "\n Error deleting file....");
}

}  // namespace

LogRevision::LogRevision() {
    const auto configuration = XMLConfigData::instance();
    if (configuration == nullptr) {
        return;
    }
    const std::string& path = configuration->getLogFilePath();
    const std::size_t separator = platform::lastSeparator(path);
    // Without a separator the whole path is taken for the directory, which then cannot be opened.
    const std::string directory = path.substr(0, separator);
    const std::string fileName = separator == std::string::npos ? path : path.substr(separator + 1);
    const std::string baseName = fileName.substr(0, fileName.find(kExtension));
    KRXLog(level::kForce, "\n Log File Location = %s", directory.c_str());
    std::vector<std::string> names;
    // A log file directly below the root has an empty directory part.
    const bool atRoot = separator == 0;
    listDirectory(atRoot ? path.substr(0, 1) : directory, names);
    KRXLog(level::kForce, "\n Revision for no of days = %s \n", configuration->getLogRevisionDays().c_str());
    const std::int64_t daysKept = platform::readNumber(configuration->getLogRevisionDays());
    for (const std::string& name : names) {
        if (name.find(baseName) == std::string::npos) {
            continue;
        }
        std::string fullPath = directory;
        fullPath.append(1, separator == std::string::npos ? '/' : path[separator]).append(name);
        if (fullPath.find(kExtension) != std::string::npos && fileAgeInDays(fullPath) > daysKept) {
            deleteFile(fullPath);
        }
    }
}

int LogRevision::listDirectory(const std::string& directory, std::vector<std::string>& names) {
    const int error = platform::listDirectory(directory, names);
    if (error != 0) {
        KRXLog(level::kForce, "\n \"Error(\" %d \") opening \" %s \n", error, directory.c_str());
    }
    return error;
}

std::int64_t LogRevision::fileAgeInDays(const std::string& path) {
    const platform::File file = platform::File::open(path, platform::OpenMode::Read);
    const auto modifiedAt = file.isOpen() ? file.modifiedAt() : std::nullopt;
    return modifiedAt ? (platform::now() - *modifiedAt) / kSecondsPerDay : 0;
}
