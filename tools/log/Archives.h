#pragma once

#include "ArchiveName.h"
#include "Beginning.h"
#include "TimeZone.h"
#include "platform/File.h"

#include <bitset>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace logreader {

/// By what an archive is known again: its name, compressed or not, and the number of its file.
struct ArchiveIdentity {
    std::size_t stem = 0;      ///< a hash of the name
    std::uint64_t number = 0;  ///< 0 for a compressed one, which has a number of its own
    friend auto operator<=>(const ArchiveIdentity&, const ArchiveIdentity&) = default;
};

/// A log file, or an archive of one.
struct LogFile {
    std::string path;                            ///< "-" stands for standard input
    std::shared_ptr<const platform::File> file;  ///< of a log file that is there, null for an archive
    Beginning beginning;
    /// When it was full, as its name tells; the end of time for a log file.
    std::chrono::sys_seconds full = std::chrono::sys_seconds::max();
    ArchiveIdentity identity;
    std::uint32_t place = 0;  ///< for `at`

    bool isArchive() const { return full != std::chrono::sys_seconds::max(); }
};

/// Archives, handed out from the newest to the oldest, each opened only when its turn has come.
///
/// A rotation takes less than a second: where a file begins, the one before it was full. As long as the names that
/// are left lie before that, their order is that of the files. Where one lies behind it, the clock was set back
/// in the meantime, and the name that fits to the second is taken.
class Archives final {
  public:
    explicit Archives(TimeZone zone) : zone_(std::move(zone)) {}

    /// All archives of a log file. They lie where its path up to its last "." leads, wherever that is. False, after a
    /// word about it, when the folder there cannot be listed.
    bool addOf(const std::string& logPath);
    /// A single one.
    void add(const std::string& path, std::uint64_t number = 0);
    static bool isArchive(const std::string& path);
    /// Begins, or begins anew, with those that were full before this moment, that of the log file's first entry.
    void beginBefore(std::optional<std::chrono::local_seconds> clock);
    /// The names alone tell the order, as they do for the archives of several logs.
    void trustNames() { namesOnly_ = true; }

    /// The next older one; none that `leftOut` tells. Nothing when there is no more.
    std::optional<LogFile> older(const std::function<bool(const platform::File&)>& leftOut);
    /// One that was handed out, by its `place`.
    LogFile at(std::uint32_t place) const;
    /// False when all that are left were full before this moment, and no step of the clock has been seen that could
    /// have let them begin behind it.
    bool mayHoldFrom(std::chrono::sys_seconds moment);
    /// Leaves out those that begin behind this moment, provided that the clock was not set back.
    void leaveOutFrom(std::chrono::sys_seconds moment);
    /// What was handed out shows that the clock was set back, or may have been.
    bool clockWasSetBack() const { return setBack_; }
    /// And it came to the second of an old rotation again: their order may be another one.
    bool orderIsUnsure() const { return unsure_; }

    std::vector<ArchiveIdentity> identities() const;
    /// Calls `take(name, identity)` for each archive of a log file, in any order; they lie in `folderFor` it. False as
    /// `addOf`.
    static bool forEachOf(const std::string& logPath,
                          const std::function<void(std::string_view, const ArchiveIdentity&)>& take);
    static std::string folderFor(const std::string& logPath);

  private:
    /// Small, since there may be a hundred thousand.
    struct Item {
        std::chrono::sys_seconds minute;
        std::uint32_t nameAt = 0;  ///< in `names_`
        std::uint16_t folder = 0;  ///< in `folders_`
        std::int8_t second = kUnknown;
        bool taken = false;
        std::uint32_t counter = 0;
        std::uint64_t number = 0;

        std::chrono::sys_seconds full() const { return minute + std::chrono::seconds(second); }
    };
    static constexpr std::int8_t kUnknown = -1;

    void addTo(std::uint16_t folder, std::string_view name, std::uint64_t number);
    std::uint16_t folderAt(const std::string& path);
    const char* nameOf(const Item& item) const { return names_.data() + item.nameAt; }
    std::string pathOf(const Item& item) const { return folders_[item.folder] + nameOf(item); }
    void sort();
    std::optional<std::size_t> newest();
    std::optional<std::size_t> pick();
    std::optional<std::size_t> fullAt(std::chrono::sys_seconds moment);
    const Beginning& beginningOf(const Item& item);
    bool isSecondReading(const Item& item, const ArchiveName& name, const std::bitset<60>& plain);
    void settle(std::chrono::sys_seconds minute);
    std::chrono::sys_seconds momentOf(std::chrono::local_seconds clock,
                                      std::chrono::sys_seconds notAfter) const;

    TimeZone zone_;
    std::string names_;  ///< one behind the other, each with a 0
    std::vector<std::string> folders_;
    std::string base_;  ///< of the first one's name
    bool namesOnly_ = false;
    bool partial_ = false;     ///< where one is missing, it may be among those left out
    std::vector<Item> items_;  ///< oldest first once `sorted_`
    std::size_t end_ = 0;      ///< all from here on are taken
    bool sorted_ = false;
    bool setBack_ = false;
    bool unsure_ = false;
    std::optional<std::chrono::sys_seconds> before_;  ///< where the last one begins
    std::unordered_map<std::uint32_t, Beginning>
        beginnings_;  ///< of those that were opened before their turn
};

}  // namespace logreader
