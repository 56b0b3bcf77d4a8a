#include "LogFiles.h"

#include <algorithm>
#include <filesystem>
#include <memory>
#include <set>
#include <utility>

namespace logreader {

using std::chrono::sys_seconds;

namespace {

LogFile openedLog(const std::string& path) {
    LogFile log;
    log.path = path;
    if (auto file = platform::File::open(path, platform::OpenMode::Read); file.isOpen()) {
        log.beginning = beginningOf(file);
        log.file = std::make_shared<platform::File>(std::move(file));
    }
    return log;
}

}  // namespace

LogFiles::LogFiles(const std::vector<std::string>& named, const TimeZone& zone)
    : zone_(zone), archives_(zone) {
    std::set<std::filesystem::path> seen;
    const auto isNew = [&](const std::string& path) {
        std::error_code error;
        const auto whole = std::filesystem::weakly_canonical(path, error);
        return error || named.size() == 1 || seen.insert(whole).second;
    };
    for (const std::string& path : named) {
        if (path == "-") {
            logs_.emplace_back().path = path;
        } else if (Archives::isArchive(path) &&
                   platform::File::open(path, platform::OpenMode::Read).isOpen()) {
            if (isNew(path)) {
                archives_.add(path);
            }
        } else if (isNew(path)) {
            if (named.size() == 1) {
                openWithArchives(path);
                continue;
            }
            logs_.push_back(openedLog(path));
            Archives::forEachOf(path, [&](const std::string& archive, const ArchiveIdentity&) {
                if (isNew(archive)) {
                    archives_.add(archive);
                }
            });
        }
    }
    logsLeft_ = logs_.size();
    if (logs_.size() == 1) {
        archives_.beginBefore(logs_.front().beginning.clock);
    }
}

/// A rotation while the archives are listed puts files among them that are newer than the log file that was opened: then
/// both are taken anew. Who rotates all the time is not waited for.
void LogFiles::openWithArchives(const std::string& path) {
    constexpr int kTries = 5;
    for (int count = 0; count < kTries; ++count) {
        logs_ = {openedLog(path)};
        archives_ = Archives(zone_);
        archives_.addOf(path);
        const auto present = platform::File::open(path, platform::OpenMode::Read);
        if (logs_[0].file ? present.isOpen() && present.isSameFile(*logs_[0].file) : !present.isOpen()) {
            break;
        }
    }
}

std::optional<LogFile> LogFiles::next() {
    if (logsLeft_ > 0) {
        return logs_[--logsLeft_];
    }
    // A log file that was renamed before the archives were listed is read as the log file.
    return archives_.older([this](const platform::File& file) {
        return std::any_of(logs_.begin(), logs_.end(),
                           [&](const LogFile& log) { return log.file && log.file->isSameFile(file); });
    });
}

std::vector<LogFile> LogFiles::older() {
    if (!std::exchange(begun_, true)) {
        ahead_ = next();
    }
    std::vector<LogFile> files;
    while (ahead_) {
        files.push_back(*std::exchange(ahead_, next()));
        const Beginning& beginning = files.back().beginning;
        if (!ahead_ ||
            (ahead_->isArchive() && beginning.clean && beginning.clock != ahead_->beginning.clock &&
             zone_.momentOf(*beginning.clock, sys_seconds::min()) ==
                 zone_.momentOf(*beginning.clock, sys_seconds::max()))) {
            break;
        }
    }
    std::reverse(files.begin(), files.end());
    return files;
}

bool LogFiles::mayHoldFrom(sys_seconds moment) {
    return ahead_ && (ahead_->full >= moment || archives_.mayHoldFrom(moment));
}

}  // namespace logreader
