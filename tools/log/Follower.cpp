#include "Follower.h"

#include "LogFiles.h"
#include "platform/Console.h"

#include <utility>

namespace logreader {

Follower::Follower(std::string path, platform::File file, Listing& listing)
    : path_(std::move(path)), listing_(listing) {
    if (file.isOpen()) {
        log_ = std::make_unique<OpenLog>(path_, std::move(file));
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
    if (log_ && log_->file().isSameFile(present)) {
        if (static_cast<std::uint64_t>(present.size()) >= log_->bytesRead()) {
            return;
        }
        platform::complain(("zephan-log: " + path_ + " was emptied; reading it anew\n").c_str());
        log_ = std::make_unique<OpenLog>(path_, std::move(present));
    } else {
        goOver(std::move(present));
    }
    printNew();
}

/// False when there was nothing new.
bool Follower::printNew() {
    const std::uint64_t before = log_->bytesRead();
    for (Entry entry; log_->entries().next(entry);) {
        listing_.take(entry, path_);
    }
    return log_->bytesRead() != before;
}

void Follower::printRest() {
    for (Entry entry; log_->entries().rest(entry);) {
        listing_.take(entry, path_);
    }
}

/// The log file is another one: reads the rest of the old one, and the archives between the two.
void Follower::goOver(platform::File present) {
    if (log_) {
        // Renamed only after its last entry was written.
        printNew();
        printRest();
        bool between = false;
        for (const std::string& path : archivesOf(path_, present)) {
            platform::File file = platform::File::open(path, platform::OpenMode::Read);
            if (between && file.isOpen()) {
                OpenLog archive(path, std::move(file));
                printAll(archive, listing_);
            } else {
                between = between || (file.isOpen() && file.isSameFile(log_->file()));
            }
        }
        if (!between) {
            platform::complain(
                ("zephan-log: " + path_ + " was replaced; going on with the new one\n").c_str());
        }
    }
    log_ = std::make_unique<OpenLog>(path_, std::move(present));
}

void printAll(OpenLog& log, Listing& listing) {
    for (Entry entry; log.entries().next(entry) || log.entries().rest(entry);) {
        listing.take(entry, log.path());
    }
}

}  // namespace logreader
