#include "Archives.h"

#include "Messages.h"
#include "OpenLog.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <tuple>
#include <utility>

#include <dirent.h>

namespace logreader {

namespace {

using std::chrono::local_seconds;
using std::chrono::minutes;
using std::chrono::seconds;
using std::chrono::sys_seconds;

/// The second may pass between an entry's stamp and the rename for which it waits.
constexpr seconds kRotation(1);

std::string folderOf(const std::string& path) {
    return path.substr(0, platform::lastSeparator(path) + 1);
}

std::string_view nameIn(const std::string& path) {
    return std::string_view(path).substr(platform::lastSeparator(path) + 1);
}

std::string baseOf(const std::string& logPath) {
    return logPath.substr(0, logPath.rfind('.'));
}

ArchiveIdentity identityOf(std::string_view name, const ArchiveName& read, std::uint64_t number) {
    return {std::hash<std::string_view>()(read.stem), read.stem.size() == name.size() ? number : 0};
}

}  // namespace

std::string Archives::folderFor(const std::string& logPath) {
    return folderOf(baseOf(logPath));
}

bool Archives::forEachOf(const std::string& logPath,
                         const std::function<void(std::string_view, const ArchiveIdentity&)>& take) {
    const std::string path = baseOf(logPath);
    const std::string folder = folderOf(path).empty() ? "." : folderOf(path);
    const std::string_view base = nameIn(path);
    // `platform::Directory` would hold and sort all names.
    const auto close = [](DIR* stream) { ::closedir(stream); };
    const std::unique_ptr<DIR, decltype(close)> stream(::opendir(folder.c_str()), close);
    if (stream == nullptr && (errno == ENOENT || errno == ENOTDIR)) {
        return true;
    }
    // The end leaves `errno` alone, a failure does not.
    for (const dirent* entry = nullptr; stream && (errno = 0, entry = ::readdir(stream.get())) != nullptr;) {
        const std::string_view name = entry->d_name;
        const auto read = name.starts_with(base) ? readArchiveName(name) : std::nullopt;
        if (read && read->base == base) {
            take(name, identityOf(name, *read, entry->d_ino));
        }
    }
    const int error = errno;
    if (error != 0) {
        complain(folder + ": " + std::strerror(error));
    }
    return error == 0;
}

std::vector<ArchiveIdentity> Archives::identities() const {
    std::vector<ArchiveIdentity> identities;
    identities.reserve(items_.size());
    for (const Item& item : items_) {
        identities.push_back(identityOf(nameOf(item), *readArchiveName(nameOf(item)), item.number));
    }
    return identities;
}

bool Archives::addOf(const std::string& logPath) {
    const std::uint16_t folder = folderAt(folderFor(logPath));
    return forEachOf(logPath, [&](std::string_view name, const ArchiveIdentity& archive) {
        addTo(folder, name, archive.number);
    });
}

void Archives::add(const std::string& path, std::uint64_t number) {
    addTo(folderAt(folderOf(path)), nameIn(path), number);
}

bool Archives::isArchive(const std::string& path) {
    return readArchiveName(nameIn(path)).has_value();
}

std::uint16_t Archives::folderAt(const std::string& path) {
    const auto found = std::find(folders_.begin(), folders_.end(), path);
    if (found == folders_.end()) {
        folders_.push_back(path);
        return static_cast<std::uint16_t>(folders_.size() - 1);
    }
    return static_cast<std::uint16_t>(found - folders_.begin());
}

void Archives::addTo(std::uint16_t folder, std::string_view name, std::uint64_t number) {
    const ArchiveName read = *readArchiveName(name);
    if (items_.empty()) {
        base_ = read.base;
    }
    Item item;
    item.nameAt = static_cast<std::uint32_t>(names_.size());
    item.folder = folder;
    item.number = number;
    names_.append(name).push_back('\0');
    item.minute = zone_.momentOf(read.minute, sys_seconds::min());
    const sys_seconds again = zone_.momentOf(read.minute, sys_seconds::max());
    if (item.minute != again) {
        // The hour that comes twice: written to before it was full, and not long before.
        if (beginningOf(item).modified >= item.minute + minutes(1)) {
            item.minute = again;
        }
    }
    items_.push_back(item);
    namesOnly_ = namesOnly_ || folder != items_.front().folder || read.base != base_;
    sorted_ = false;
}

void Archives::sort() {
    if (!std::exchange(sorted_, true)) {
        std::sort(items_.begin(), items_.end(),
                  [](const Item& left, const Item& right) { return left.minute < right.minute; });
        end_ = items_.size();
    }
}

void Archives::beginBefore(std::optional<local_seconds> clock) {
    for (Item& item : items_) {
        item.taken = false;
        item.second = kUnknown;
    }
    end_ = items_.size();
    partial_ = setBack_ = unsure_ = false;
    before_ = clock ? std::optional(momentOf(*clock, sys_seconds::max())) : std::nullopt;
}

/// In the hour that comes twice the later moment, unless a file that begins there was full before.
sys_seconds Archives::momentOf(local_seconds clock, sys_seconds notAfter) const {
    const sys_seconds later = zone_.momentOf(clock, sys_seconds::max());
    return notAfter == sys_seconds::max() || later <= notAfter + kRotation
               ? later
               : zone_.momentOf(clock, sys_seconds::min());
}

/// Of a name that can be read in two ways, as second 12 or as the second archive after one of second 1: it is the latter
/// that is meant. All but the first of the archives of a second begin in it, unless the clock came to that second again;
/// and none is written to after it is full.
bool Archives::isSecondReading(const Item& item, const ArchiveName& name, const std::bitset<60>& plain) {
    const auto momentOf = [&](std::size_t reading) {
        return item.minute + seconds(name.readings[reading].second);
    };
    const Beginning& beginning = beginningOf(item);
    const bool ageIsKnown =
        beginning.modified && *beginning.modified <= momentOf(0);  // else it is that of a copy
    if (ageIsKnown && *beginning.modified > momentOf(1)) {
        return false;
    }
    return beginning.clock == name.minute + seconds(name.readings[1].second) ||
           (ageIsKnown && plain[static_cast<std::size_t>(name.readings[1].second)]);
}

/// Puts the archives of one minute in order.
void Archives::settle(sys_seconds minute) {
    const auto [begin, end] =
        std::equal_range(items_.begin(), items_.end(), Item{minute},
                         [](const Item& left, const Item& right) { return left.minute < right.minute; });
    if (begin == end || begin->second != kUnknown) {
        return;
    }
    std::bitset<60> plain;
    for (auto item = begin; item != end; ++item) {
        const ArchiveName name = *readArchiveName(nameOf(*item));
        if (name.readingCount == 1 && name.readings[0].counter == 0) {
            plain.set(static_cast<std::size_t>(name.readings[0].second));
        }
    }
    for (auto item = begin; item != end; ++item) {
        const ArchiveName name = *readArchiveName(nameOf(*item));
        ArchiveName::Reading reading = name.readings[0];
        if (name.readingCount > 1 && isSecondReading(*item, name, plain)) {
            reading = name.readings[1];
        }
        item->second = static_cast<std::int8_t>(reading.second);
        item->counter = reading.counter;
    }
    const auto place = [this](const Item& item) {
        return std::tuple(item.second, item.counter, item.folder, std::string_view(nameOf(item)));
    };
    std::sort(begin, end, [&](const Item& left, const Item& right) { return place(left) < place(right); });
    for (auto item = begin; item + 1 < end; ++item) {
        // Being compressed just now: there are both. (Or the clock came to the second of a compressed one again.)
        if (item->folder == (item + 1)->folder &&
            readArchiveName(nameOf(*item))->stem == readArchiveName(nameOf(*(item + 1)))->stem &&
            (beginningOf(*(item + 1)).mark == 0 ||
             beginningOf(*(item + 1)).mark == beginningOf(*item).mark)) {
            (item + 1)->taken = true;
        }
    }
}

std::optional<std::size_t> Archives::newest() {
    for (;;) {
        while (end_ > 0 && items_[end_ - 1].taken) {
            --end_;
        }
        if (end_ == 0) {
            return std::nullopt;
        }
        if (items_[end_ - 1].second != kUnknown) {
            return end_ - 1;
        }
        settle(items_[end_ - 1].minute);
    }
}

/// The last one that was full in this second.
std::optional<std::size_t> Archives::fullAt(sys_seconds moment) {
    const sys_seconds minute = std::chrono::floor<minutes>(moment);
    settle(minute);
    const auto end =
        std::upper_bound(items_.begin(), items_.end(), moment, [](sys_seconds wanted, const Item& item) {
            return wanted < item.minute + seconds(std::max<int>(item.second, 0));
        });
    for (auto item = end; item != items_.begin() && (item - 1)->full() == moment; --item) {
        if (!(item - 1)->taken) {
            return static_cast<std::size_t>(item - 1 - items_.begin());
        }
    }
    return std::nullopt;
}

std::optional<std::size_t> Archives::pick() {
    sort();
    const auto last = newest();
    if (!last || !before_ || namesOnly_) {
        return last;
    }
    // Of several that were full in one second all but the first begin in it; else the clock came to it twice.
    const auto isDoubtful = [&](std::size_t at) {
        return at > 0 && !items_[at - 1].taken && items_[at - 1].full() == items_[at].full() &&
               beginningOf(items_[at]).clock != zone_.clockAt(items_[at].full());
    };
    const sys_seconds full = items_[*last].full();
    if (full <= *before_) {
        setBack_ = setBack_ || (partial_ && full < *before_ - kRotation);
        unsure_ = unsure_ || isDoubtful(*last);
        return last;
    }
    const auto fitting = fullAt(*before_);
    if (full == *before_ + kRotation) {
        unsure_ = unsure_ || fitting;
        if (!fitting || beginningOf(items_[*last]).clock == zone_.clockAt(*before_)) {
            return last;  // the second passed before the rename
        }
    }
    setBack_ = true;
    unsure_ = unsure_ || !fitting || isDoubtful(*fitting);
    return fitting.value_or(fullAt(*before_ + kRotation).value_or(*last));
}

const Beginning& Archives::beginningOf(const Item& item) {
    const auto known = beginnings_.find(item.nameAt);
    if (known != beginnings_.end()) {
        return known->second;
    }
    std::string path = pathOf(item);
    return beginnings_[item.nameAt] = logreader::beginningOf(openArchive(path));
}

std::optional<LogFile> Archives::older(const std::function<bool(const platform::File&)>& leftOut) {
    while (const auto place = pick()) {
        Item& item = items_[*place];
        item.taken = true;
        LogFile found = at(static_cast<std::uint32_t>(*place));
        const platform::File file = openArchive(found.path);
        if (file.isOpen() && leftOut(file)) {
            continue;
        }
        const auto known = beginnings_.extract(item.nameAt);
        found.beginning = known ? known.mapped() : logreader::beginningOf(file);
        before_ = found.beginning.clock ? momentOf(*found.beginning.clock, found.full) : found.full;
        setBack_ = setBack_ || *before_ > found.full + kRotation;
        return found;
    }
    return std::nullopt;
}

LogFile Archives::at(std::uint32_t place) const {
    const Item& item = items_[place];
    const std::string_view name = nameOf(item);
    return {pathOf(item), nullptr, {}, item.full(), identityOf(name, *readArchiveName(name), item.number),
            place};
}

void Archives::leaveOutFrom(sys_seconds moment) {
    sort();
    const auto after = [this](sys_seconds limit) {
        return std::upper_bound(items_.begin(), items_.end(), limit,
                                [](sys_seconds wanted, const Item& item) { return wanted < item.minute; });
    };
    // The first one that was full behind the moment may begin before it.
    const auto first = after(moment);
    if (first != items_.end()) {
        end_ = static_cast<std::size_t>(after(first->minute) - items_.begin());
        before_.reset();
        partial_ = true;
    }
}

bool Archives::mayHoldFrom(sys_seconds moment) {
    sort();
    if (setBack_ || namesOnly_) {
        return true;
    }
    while (end_ > 0 && items_[end_ - 1].taken) {
        --end_;
    }
    return end_ > 0 && items_[end_ - 1].minute + minutes(1) > moment;
}

}  // namespace logreader
