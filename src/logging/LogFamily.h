#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace platform {
class Directory;
}

/// The files that the clean-up takes for those of a log, and when it deletes them. It goes by their names, so they may
/// be anybody's. Needs no agent: who wants to know beforehand what will be deleted asks here.
class LogFamily final {
  public:
    /// What becomes of a file that was written when the clock was not set yet: it is as old as the clean-up that
    /// finds it, and is dated so, unless somebody only wants to know.
    enum class Undated { date, leave };

    explicit LogFamily(const std::string& logPath);

    /// What the path names as the directory, and what is opened as that.
    const std::string& directory() const { return directory_; }
    const std::string& openedDirectory() const { return opened_; }
    /// What a name has to hold.
    const std::string& baseName() const { return baseName_; }
    bool holds(const std::string& name) const;
    std::string pathOf(const std::string& name) const { return directory_ + separator_ + name; }

    /// Leaves of the directory's names those that a clean-up deletes now if it may read them, sorted.
    void keepDue(std::vector<std::string>& names, const platform::Directory& directory, std::int64_t daysKept,
                 Undated undated) const;
    static bool isDue(const platform::Directory& directory, const std::string& name, std::int64_t daysKept,
                      Undated undated);
    /// Whole days since the entry's last modification, nothing when that cannot be told.
    static std::optional<std::int64_t> fileAgeInDays(const platform::Directory& directory,
                                                     const std::string& name, Undated undated);

  private:
    std::string directory_;
    std::string opened_;
    std::string baseName_;
    char separator_ = '/';
};
