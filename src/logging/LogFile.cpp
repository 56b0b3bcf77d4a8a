#include "logging/LogFile.h"

#include <algorithm>
#include <utility>

using platform::File;
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
    directory_.open(directoryPath_);
    openStream();
}

std::int64_t LogFile::size() noexcept {
    if (!stream_.isOpen()) {
        const File present = directory_.openFile(name_, OpenMode::Read);
        if (!present.isOpen()) {
            directory_.open(directoryPath_);
            return 0;
        }
        return present.size();
    }
    const std::int64_t size = directory_.probeSize(name_);
    if (size < 0) {
        directory_.open(directoryPath_);
    }
    if (size != expectedSize_) {
        follow();
    }
    return expectedSize_;
}

void LogFile::lookAgain() noexcept {
    directory_.open(directoryPath_);
    if (stream_.isOpen()) {
        follow();
    }
}

void LogFile::append(std::string_view entry) noexcept {
    if (reopenDue_) {
        reopen();
    }
    if (stream_.isOpen()) {
        expectedSize_ += static_cast<std::int64_t>(stream_.append(entry).value_or(0));
    }
}

void LogFile::close() noexcept {
    stream_.close();
    reopenDue_ = true;
}

void LogFile::reopen() noexcept {
    openStream();
    reopenDue_ = !stream_.isOpen();
}

bool LogFile::hasArchive(const std::string& suffix) const {
    return directory_.openFile(archiveName_ + suffix, OpenMode::Read).isOpen();
}

platform::Renaming LogFile::moveToArchive(const std::string& suffix) const {
    return directory_.rename(name_, archiveName_ + suffix);
}

void LogFile::openStream() noexcept {
    stream_ = directory_.openFile(name_, OpenMode::Append);
    expectedSize_ = stream_.size();
}

/// Opens afresh what stands at the path if that is another file than the open one: entries would go on into
/// one that nobody finds.
void LogFile::follow() noexcept {
    const File present = directory_.openFile(name_, OpenMode::Read);
    if (!present.isOpen() || !present.isSameFile(stream_)) {
        if (File fresh = directory_.openFile(name_, OpenMode::Append); fresh.isOpen()) {
            stream_ = std::move(fresh);
        }
    }
    expectedSize_ = stream_.size();
}
