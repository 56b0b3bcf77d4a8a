#include "logging/LogRevision.h"

#include "config/XMLConfigData.h"
#include "platform/Clock.h"
#include "platform/Directory.h"
#include "platform/Number.h"
#include "platform/agent/Logging.h"

#include <algorithm>

namespace {

constexpr std::int64_t kSecondsPerDay = 86400;
/// 2001-01-01: the present of a clock that is not set, as of a board without a battery, lies before it.
constexpr std::int64_t kClockUnset = 978307200;
constexpr char kExtension[] = ".xml";

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
    platform::Directory opened;
    listDirectory(atRoot ? path.substr(0, 1) : directory, opened, names);
    KRXLog(level::kForce, "\n Revision for no of days = %s \n", configuration->getLogRevisionDays().c_str());
    const std::int64_t daysKept = platform::readNumber(configuration->getLogRevisionDays());
    const bool inDirectoryName = directory.find(kExtension) != std::string::npos;
    const auto isOld = [&](const std::string& name) {
        const auto age = fileAgeInDays(opened, name);
        return age && *age > daysKept;
    };
    std::erase_if(names, [&](const std::string& name) {
        return name.find(baseName) == std::string::npos ||
               (!inDirectoryName && name.find(kExtension) == std::string::npos) || !isOld(name);
    });
    // The order in which a file system yields names differs from one to the next.
    std::sort(names.begin(), names.end());
    for (const std::string& name : names) {
        // Once more: among many files some time has passed, and another process may write to this one by now.
        if (!isOld(name) || !opened.mayRead(name)) {
            continue;
        }
        std::string fullPath = directory;
        fullPath.append(1, separator == std::string::npos ? '/' : path[separator]).append(name);
        KRXLog(level::kForce, "\n deleting file = %s \n", fullPath.c_str());
        if (opened.remove(name)) {
            KRXLog(level::kForce, "\n File successfully deleted.");
        } else {
            KRXLog(level::kForce, "\n Error deleting file....");
        }
    }
}

int LogRevision::listDirectory(const std::string& path, platform::Directory& directory,
                               std::vector<std::string>& names) {
    int error = directory.open(path);
    if (error == 0) {
        error = directory.list(names);
    }
    if (error != 0) {
        KRXLog(level::kForce, "\n \"Error(\" %d \") opening \" %s \n", error, path.c_str());
    }
    return error;
}

std::optional<std::int64_t> LogRevision::fileAgeInDays(const platform::Directory& directory,
                                                       const std::string& name) {
    // Of a link the younger age: what it leads to may be the log that is being written.
    const auto modifiedAt = directory.modifiedAt(name);
    if (!modifiedAt) {
        return std::nullopt;
    }
    const std::int64_t now = platform::now();
    if (*modifiedAt < kClockUnset && now >= kClockUnset) {
        // Written before the clock was set. How long ago that was nobody knows: it counts from now on.
        return directory.setModifiedAt(name, now) ? std::optional<std::int64_t>(0) : std::nullopt;
    }
    return (now - *modifiedAt) / kSecondsPerDay;
}
