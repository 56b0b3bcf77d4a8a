#include "Follower.h"

#include "Messages.h"

#include <algorithm>
#include <filesystem>
#include <stdexcept>
#include <string_view>
#include <utility>

namespace logreader {

Follower::Follower(const LogFile& log, std::vector<ArchiveIdentity> known, TimeZone logZone, Listing& listing,
                   bool quiet)
    : path_(log.path),
      known_(std::move(known)),
      logZone_(std::move(logZone)),
      listing_(listing),
      quiet_(quiet) {
    std::sort(known_.begin(), known_.end());
    if (log.file) {
        listing_.beginFile(path_);
        log_ = std::make_unique<OpenLog>(path_, log.file);
    }
}

void Follower::look() {
    if (log_ && !printNew()) {
        printRest();
    }
    // Missing: in the middle of a rotation, or the logger has not started yet.
    platform::File present = platform::File::open(path_, platform::OpenMode::Read);
    if (!present.isOpen()) {
        return;
    }
    if (!log_ || !log_->file().isSameFile(present)) {
        goOver(std::move(present));
    } else if (static_cast<std::uint64_t>(present.size()) < log_->bytesRead()) {
        note(path_ + " was emptied; reading it anew");
        follow(std::move(present));
    } else {
        return;
    }
    printNew();
}

void Follower::follow(platform::File file) {
    log_ = std::make_unique<OpenLog>(path_, std::make_shared<platform::File>(std::move(file)));
    listing_.beginFile(path_);
}

/// False when there was nothing new.
bool Follower::printNew() {
    const std::uint64_t before = log_->bytesRead();
    for (Entry entry; log_->entries().next(entry);) {
        listing_.take(entry);
    }
    return log_->bytesRead() != before;
}

void Follower::printRest() {
    for (Entry entry; log_->entries().rest(entry);) {
        listing_.take(entry);
    }
}

/// The log file is another one: reads the rest of the old one, and the archives that came between the two.
void Follower::goOver(platform::File present) {
    bool found = !log_;
    if (log_) {
        // Renamed only after its last entry was written.
        printNew();
        printRest();
    }
    std::vector<ArchiveIdentity> listed;
    Archives fresh(logZone_);
    listed.reserve(known_.size());
    Archives::forEachOf(path_, [&](std::string_view name, const ArchiveIdentity& archive) {
        if (isKnown(archive)) {
            listed.push_back(archive);
        } else {
            fresh.add(Archives::folderFor(path_) + std::string(name), archive.number);
        }
    });
    for (LogFile& archive : inOrder(fresh, present)) {
        const platform::File file = openArchive(archive.path);
        if (file.isOpen() && file.isSameFile(present)) {
            break;  // renamed in this moment; those behind it come with the next look
        }
        listed.push_back(archive.identity);
        if (!found && isWhatWasFollowed(archive)) {
            found = true;
        } else {
            printAll(archive, listing_);
        }
    }
    std::sort(listed.begin(), listed.end());
    known_ = std::move(listed);
    if (!found) {
        note(path_ + " was replaced; going on with the new one");
    }
    follow(std::move(present));
}

/// Those that came between what was followed and `present`, oldest first. Where each begins when the one before it was
/// full, that is their order, however the clock was set in between. What does not belong between the two is newer if
/// `present` is not the log file any more, and comes with the next look. Otherwise their ages and names tell the order.
std::vector<LogFile> Follower::inOrder(Archives& archives, const platform::File& present) const {
    archives.trustNames();
    std::vector<LogFile> files;
    while (auto archive = archives.older([](const platform::File&) { return false; })) {
        files.push_back(std::move(*archive));
    }
    std::vector<LogFile> between;
    std::vector<const LogFile*> left(files.size());
    std::transform(files.begin(), files.end(), left.begin(), [](const LogFile& file) { return &file; });
    const bool isLog = platform::File::open(path_, platform::OpenMode::Read).isSameFile(present);
    bool reached = false;
    for (auto next = beginningOf(present).clock; next && !reached; next = between.back().beginning.clock) {
        const auto before = std::find_if(left.begin(), left.end(), [&](const LogFile* file) {
            const auto full = logZone_.clockAt(file->full);
            return full == *next || full == *next + std::chrono::seconds(1);
        });
        if (before == left.end()) {
            break;
        }
        between.push_back(**before);
        left.erase(before);
        reached = !isLog && log_ && isWhatWasFollowed(between.back());
    }
    if (reached || left.empty()) {
        std::reverse(between.begin(), between.end());
        return between;
    }
    const auto age = [](const LogFile& file) {
        std::error_code error;
        return std::filesystem::last_write_time(file.path, error);
    };
    std::reverse(files.begin(), files.end());
    std::stable_sort(files.begin(), files.end(),
                     [&](const LogFile& one, const LogFile& other) { return age(one) < age(other); });
    return files;
}

/// A name that is known and stands for the same file, or for what it was compressed to.
bool Follower::isKnown(const ArchiveIdentity& archive) const {
    for (auto known = std::lower_bound(known_.begin(), known_.end(), ArchiveIdentity{archive.stem, 0});
         known != known_.end() && known->stem == archive.stem; ++known) {
        if (archive.number == 0 || archive.number == known->number) {
            return true;
        }
    }
    return false;
}

/// The same file, or what it was compressed to.
bool Follower::isWhatWasFollowed(const LogFile& archive) const {
    std::string path = archive.path;
    const platform::File file = openArchive(path);
    return (file.isOpen() && file.isSameFile(log_->file())) ||
           (path.ends_with(".gz") && archive.beginning.mark != 0 &&
            archive.beginning.mark == beginningOf(log_->file()).mark);
}

void Follower::note(const std::string& text) const {
    if (!quiet_) {
        complain(text);
    }
}

bool printAll(const LogFile& file, Listing& listing) {
    try {
        OpenLog log(file.path, file.file);
        printAll(log.path(), log.entries(), listing);
        return true;
    } catch (const std::runtime_error& error) {
        complain(error.what());
        return false;
    }
}

void printAll(const std::string& path, EntryReader& entries, Listing& listing) {
    listing.beginFile(path);
    for (Entry entry; entries.next(entry) || entries.rest(entry);) {
        listing.take(entry);
    }
}

}  // namespace logreader
