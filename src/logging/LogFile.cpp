#include "logging/LogFile.h"

#include <algorithm>
#include <cerrno>
#include <utility>

using platform::File;
using platform::Look;
using platform::OpenMode;

LogFile::LogFile(const std::string& path) {
    const std::string place = platform::absolutePath(path);
    const std::size_t nameAt = platform::lastSeparator(place) + 1;
    directoryPath_ = place.substr(0, nameAt);
    name_ = place.substr(nameAt);
    // The last "." may lie in the directory's part, but not in what was put before the configured path.
    const std::size_t archiveEnd = place.size() - path.size() + std::min(path.rfind('.'), path.size());
    const std::size_t archiveAt = archiveEnd < nameAt ? 0 : nameAt;
    archiveName_ = place.substr(archiveAt, archiveEnd - archiveAt);
    lookForDirectory();
    openStream();
}

std::int64_t LogFile::size() noexcept {
    Look present = directory_.look(name_);
    if (present.kind == Look::Kind::Missing || present.kind == Look::Kind::Unknown) {
        lookForDirectory();
        present = directory_.look(name_);
    }
    if (stream_.isOpen() && !present.isSameFile(written_) && openStream()) {
        present = written_;  // entries would have gone on into a file that nobody finds
    }
    if (present.kind != Look::Kind::Regular) {
        return present.kind == Look::Kind::Missing ? 0 : stream_.size();
    }
    if (!present.hasSameAccess(judged_)) {
        judged_ = present;
        mayRead_ = directory_.mayRead(name_);
    }
    return mayRead_ ? present.size : 0;
}

void LogFile::lookForDirectory() noexcept {
    directory_.open(directoryPath_);
}

void LogFile::append(std::string_view entry) noexcept {
    if (reopenDue_ || isHeld()) {
        reopenDue_ = !openStream();
    }
    if (stream_.isOpen()) {
        stream_.append(entry);
    }
}

void LogFile::beginRotation() noexcept {
    if (!platform::kRenamesOpenFiles) {
        stream_.close();
    }
}

void LogFile::endRotation(bool moved) noexcept {
    if (moved || !stream_.isOpen()) {
        openStream();
    }
    reopenDue_ = !stream_.isOpen();
}

bool LogFile::hasArchive(const std::string& suffix) const {
    return directory_.openFile(archiveName_ + suffix, OpenMode::Read).isOpen();
}

platform::Renaming LogFile::moveToArchive(const std::string& suffix) const {
    return directory_.rename(name_, archiveName_ + suffix);
}

bool LogFile::openStream() noexcept {
    File fresh = directory_.openFile(name_, OpenMode::Append);
    held_ = !fresh.isOpen() && errno == EBUSY;
    if (!fresh.isOpen()) {
        return false;
    }
    stream_ = std::move(fresh);
    written_ = stream_.look();
    return true;
}
