// What an agent left in its two state files, and what its next start does with it.
#pragma once

#include <cstdint>
#include <string>

namespace sim {

/// All times in seconds since 1970.
struct StateFiles {
    enum class Found : std::uint8_t {
        nothing,  ///< no file, or an empty one
        foreign,  ///< a file that holds no record
        record,
    };

    /// The resume state file: the grace period that ran last.
    struct Resume {
        std::string path;
        Found found = Found::nothing;
        bool canBeWritten = true;  ///< otherwise a start leaves it alone
        std::int64_t began = 0;
        int rate = 0;     ///< seconds
        int minutes = 0;  ///< its whole length
        int minutesLeft = 0;
        bool isOpen = false;  ///< a start resumes it
    };
    /// The schedule file: the period that was ordered last.
    struct Schedule {
        std::string path;
        Found found = Found::nothing;
        std::int64_t start = 0;
        std::int64_t end = 0;
        int rate = 0;
        int minutes = 0;
        int minutesLeft = 0;  ///< when it has begun
        bool isCurrent = false;
    };
    /// What RSM does after a start.
    enum class Start : std::uint8_t { nothing, waits, resumes, joinsSchedule };

    Resume resume;
    Schedule schedule;

    Start start(std::int64_t now) const;
    /// In a sentence that begins with "A start now would".
    std::string startText(std::int64_t now) const;
    /// What the files hold, a few words each.
    std::string resumeText() const;
    std::string scheduleText(std::int64_t now) const;
};

/// Reads both without changing them; either path may be empty for a file that is not known.
StateFiles readStateFiles(const std::string& resumePath, const std::string& schedulePath, std::int64_t now);

}  // namespace sim
