#include "records/StateFile.h"

#include "platform/Directory.h"

#include <algorithm>
#include <new>
#include <utility>

namespace records {
namespace {

constexpr char kLastAside = '9';  // of the names that are tried

constexpr char kMovedAside[] =
    "\n What was in file = %s was no record that can be read. It was moved aside, and is now in %s%s";
constexpr char kInTheWay[] =
    "\n What is in file = %s is no record that can be read, and cannot be moved aside: nothing was stored.";

}  // namespace

void StateFile::setPath(const std::string& path) {
    if (path != path_) {
        std::string place = platform::absolutePath(path);
        path_ = path;
        place_ = std::move(place);
    }
}

bool StateFile::open() noexcept {
    if (platform::File present = platform::File::open(place_, platform::OpenMode::Create); present.isOpen()) {
        file_ = std::move(present);
    }
    return file_.isOpen();
}

bool StateFile::begins(std::string_view start) const noexcept {
    std::array<char, platform::File::kLargestRecord> text{};
    const std::ptrdiff_t length = file_.readAt(0, text.data(), std::min(start.size(), text.size()));
    return length == 0 ||
           (length > 0 && start == std::string_view(text.data(), static_cast<std::size_t>(length)));
}

void StateFile::remove(std::string_view start) noexcept {
    // The path is looked at, not the open file: another one may have come into its place.
    file_ = platform::File::open(place_, platform::OpenMode::Read);
    const bool goes = file_.isOpen() && begins(start);
    file_.close();
    if (goes) {
        platform::removeFile(place_);
    }
}

bool StateFile::moveAside(Suffix& suffix) const noexcept {
    try {
        const std::size_t nameAt = platform::lastSeparator(place_) + 1;
        const std::string name = place_.substr(nameAt);
        platform::Directory directory;
        if (directory.open(nameAt == 0 ? "." : std::string_view(place_).substr(0, nameAt)) != 0) {
            return false;
        }
        suffix = {".unread"};
        platform::Renaming renaming = directory.rename(name, name + suffix.data());
        for (char number = '2'; number <= kLastAside && renaming == platform::Renaming::NameTaken; ++number) {
            suffix = {'.', 'u', 'n', 'r', 'e', 'a', 'd', '.', number};
            renaming = directory.rename(name, name + suffix.data());
        }
        return renaming == platform::Renaming::Done;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

StateFile::Stored StateFile::store(std::string_view record, Tail tail) noexcept {
    Stored stored;
    if (!isOpen() || !open()) {
        return stored;
    }
    if (!begins(rootTag_)) {
        close();  // not every system renames open files
        stored.notice.format = moveAside(stored.notice.suffix) ? kMovedAside : kInTheWay;
        if (!open() || !begins(rootTag_)) {
            return stored;
        }
    }
    if (file_.overwriteStart(record)) {
        // Not emptied first: a kill between the two would lose the record that was there.
        if (tail == Tail::Goes) {
            file_.truncate(static_cast<std::int64_t>(record.size()));
        }
        stored.done = file_.sync();
        platform::syncName(place_);
    }
    return stored;
}

}  // namespace records
