#include "logging/LogFamily.h"

#include "platform/Clock.h"
#include "platform/Directory.h"

#include <algorithm>

namespace {

constexpr std::int64_t kSecondsPerDay = 86400;
/// 2001-01-01: the present of a clock that is not set, as of a board without a battery, lies before it.
constexpr std::int64_t kClockUnset = 978307200;
constexpr char kExtension[] = ".xml";

}  // namespace

LogFamily::LogFamily(const std::string& logPath) {
    const std::size_t separator = platform::lastSeparator(logPath);
    // Without a separator the whole path is taken for the directory, which then cannot be opened.
    directory_ = logPath.substr(0, separator);
    // A log file directly below the root has an empty directory part.
    opened_ = separator == 0 ? logPath.substr(0, 1) : directory_;
    separator_ = separator == std::string::npos ? '/' : logPath[separator];
    const std::string fileName = separator == std::string::npos ? logPath : logPath.substr(separator + 1);
    baseName_ = fileName.substr(0, fileName.find(kExtension));
}

bool LogFamily::holds(const std::string& name) const {
    const bool inDirectoryName = directory_.find(kExtension) != std::string::npos;
    return name.find(baseName_) != std::string::npos &&
           (inDirectoryName || name.find(kExtension) != std::string::npos);
}

void LogFamily::keepDue(std::vector<std::string>& names, const platform::Directory& directory,
                        std::int64_t daysKept, Undated undated) const {
    std::erase_if(names, [&](const std::string& name) {
        return !holds(name) || !isDue(directory, name, daysKept, undated);
    });
    // The order in which a file system yields names differs from one to the next.
    std::sort(names.begin(), names.end());
}

bool LogFamily::isDue(const platform::Directory& directory, const std::string& name, std::int64_t daysKept,
                      Undated undated) {
    const auto age = fileAgeInDays(directory, name, undated);
    return age && *age > daysKept;
}

std::optional<std::int64_t> LogFamily::fileAgeInDays(const platform::Directory& directory,
                                                     const std::string& name, Undated undated) {
    // Of a link the younger age: what it leads to may be the log that is being written.
    const auto modifiedAt = directory.modifiedAt(name);
    if (!modifiedAt) {
        return std::nullopt;
    }
    const std::int64_t now = platform::now();
    if (*modifiedAt < kClockUnset && now >= kClockUnset) {
        // Written before the clock was set. How long ago that was nobody knows: it counts from now on.
        return undated == Undated::leave || directory.setModifiedAt(name, now)
                   ? std::optional<std::int64_t>(0)
                   : std::nullopt;
    }
    return (now - *modifiedAt) / kSecondsPerDay;
}
