// What an agent left in its two state files, and what its next start does with it.
#pragma once

#include <cstdint>
#include <string>

namespace status {

/// What was found at a path.
struct FoundFile {
    enum class State : std::uint8_t {
        notNamed,  ///< nobody said where it is
        missing,
        empty,
        unreadable,
        foreign,  ///< it holds no record
        damaged,  ///< it holds one with a value that is of no use
        sound,
    };

    std::string path;
    State state = State::notNamed;
    std::string reason;  ///< why it cannot be read, or what is of no use

    bool isRecord() const { return state == State::damaged || state == State::sound; }
    bool isFaulty() const { return state >= State::unreadable && state <= State::damaged; }
    /// What is wrong with it, path included; of a missing or an empty file, that it is that.
    std::string problem() const;
};

/// All times in seconds since 1970.
struct StateFiles {
    /// The resume state file: the grace period that ran last.
    struct Resume : FoundFile {
        bool canBeWritten = true;  ///< otherwise a start leaves it alone
        std::int64_t began = 0;
        int rate = 0;     ///< seconds
        int minutes = 0;  ///< its whole length
        int minutesLeft = 0;
        bool isOpen = false;  ///< a start resumes it
    };
    /// The schedule file: the period that was ordered last.
    struct Schedule : FoundFile {
        std::int64_t start = 0;
        std::int64_t end = 0;
        int rate = 0;
        int minutes = 0;
        int minutesLeft = 0;  ///< when it has begun
        bool isCurrent = false;
    };
    /// What RSM does after a start; unknown while a file that tells cannot be read.
    enum class Start : std::uint8_t { nothing, waits, resumes, joinsSchedule, unknown };

    Resume resume;
    Schedule schedule;
    FoundFile configuration;  ///< which names the resume state file
    std::string logPath;      ///< as it spells it; empty when it tells nothing

    /// False of one that tells nothing.
    bool isConfigured() const {
        return configuration.state == FoundFile::State::notNamed ||
               configuration.state == FoundFile::State::sound;
    }

    Start start(std::int64_t now) const;
    /// In a sentence, mostly one that begins with "A start now would".
    std::string startText(std::int64_t now) const;
    /// What the files hold, a few words each.
    std::string resumeText() const;
    std::string scheduleText(std::int64_t now) const;
};

/// As in "5 minutes at one poll every 30 s".
std::string paceText(std::int64_t minutes, std::int64_t rate);

/// Reads both without changing them; either path may be empty for a file that is not known.
StateFiles readStateFiles(const std::string& resumePath, const std::string& schedulePath, std::int64_t now);
/// The same with the resume state file that a configuration names.
StateFiles readConfiguredFiles(const std::string& configurationPath, const std::string& schedulePath,
                               std::int64_t now);

}  // namespace status
