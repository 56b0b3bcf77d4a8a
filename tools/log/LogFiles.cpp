#include "LogFiles.h"

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <memory>
#include <set>
#include <string_view>
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

LogFiles::LogFiles(const std::vector<std::string>& named, const TimeZone& zone, bool followed)
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
                openWithArchives(path, followed);
                continue;
            }
            logs_.push_back(openedLog(path));
            const auto addNew = [&](std::string_view name, const ArchiveIdentity&) {
                const std::string archive = Archives::folderFor(path) + std::string(name);
                if (isNew(archive)) {
                    archives_.add(archive);
                }
            };
            isWhole_ = Archives::forEachOf(path, addNew) && isWhole_;
        }
    }
    for (LogFile& log : logs_) {
        log.place = static_cast<std::uint32_t>(&log - logs_.data());
    }
    restart();
}

void LogFiles::restart() {
    logsLeft_ = logs_.size();
    archives_.beginBefore(logs_.size() == 1 ? logs_.front().beginning.clock : std::nullopt);
    ahead_.reset();
    begun_ = false;
}

/// While the archives are listed, the log file may be rotated; then they are listed anew. Who rotates all the time is not
/// waited for: then some archives are newer than the log file, or, if what is followed, some are not listed yet.
void LogFiles::openWithArchives(const std::string& path, bool followed) {
    constexpr int kTries = 3;
    LogFile before = openedLog(path);
    for (int count = 0; count < kTries; ++count) {
        archives_ = Archives(zone_);
        isWhole_ = archives_.addOf(path);
        LogFile behind = openedLog(path);
        const bool same =
            before.file && behind.file ? before.file->isSameFile(*behind.file) : before.file == behind.file;
        logs_ = {followed ? behind : before};
        if (same) {
            break;
        }
        before = std::move(behind);
    }
}

std::optional<LogFile> LogFiles::next() {
    if (logsLeft_ > 0) {
        return logs_[--logsLeft_];
    }
    // A log file that was renamed before the archives were listed is read as the log file.
    auto archive = archives_.older([this](const platform::File& file) {
        return std::any_of(logs_.begin(), logs_.end(),
                           [&](const LogFile& log) { return log.file && log.file->isSameFile(file); });
    });
    if (archive) {
        archive->place += static_cast<std::uint32_t>(logs_.size());
    }
    return archive;
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

LogFile LogFiles::at(std::uint32_t place) const {
    const auto logs = static_cast<std::uint32_t>(logs_.size());
    return place < logs ? logs_[place] : archives_.at(place - logs);
}

void LogFiles::forAll(const std::function<void(const LogFile&)>& read) {
    std::vector<std::uint32_t> places;
    for (std::vector<LogFile> part; !(part = older()).empty();) {
        std::transform(part.rbegin(), part.rend(), std::back_inserter(places), std::mem_fn(&LogFile::place));
    }
    std::for_each(places.rbegin(), places.rend(), [&](std::uint32_t place) { read(at(place)); });
}

bool LogFiles::mayHoldFrom(sys_seconds moment) {
    return ahead_ && (ahead_->full >= moment || archives_.mayHoldFrom(moment));
}

}  // namespace logreader
