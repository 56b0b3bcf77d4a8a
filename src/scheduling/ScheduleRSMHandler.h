#pragma once

#include "platform/File.h"
#include "platform/Mutex.h"
#include "scheduling/Schedule.h"

#include <cstdint>
#include <string>

class ZephanRSMSingleTon;
struct PropList;

/// Keeps the current RSM schedule in its fields and in the schedule file, takes in the "ScheduleRSM" command
/// and hands a stored schedule to the controller that owns it, which the caller names. Any thread; its lock
/// stands around fields and file only and is never held while the controller or the agent is called.
class ScheduleRSMHandler final {
  public:
    /// Opens the schedule file, creating it when missing, and loads the record it holds. Without a file the
    /// handler works on without storing.
    explicit ScheduleRSMHandler(const char* path);
    ScheduleRSMHandler(const ScheduleRSMHandler&) = delete;
    ScheduleRSMHandler& operator=(const ScheduleRSMHandler&) = delete;

    /// Tells why the file's record was not loaded, if it was not. For the start that made the handler, with
    /// no lock held.
    void reportLoad() const;

    /// Runs the command. `response` may be null; otherwise it receives a new list for the caller. 0 when the
    /// period was scheduled, 1 when the command failed.
    std::int32_t executeScheduleCommand(const PropList* input, PropList** response,
                                        ZephanRSMSingleTon& controller);

    /// True while the schedule's end lies in the future.
    bool isScheduleCurrent() const;
    /// Hands the schedule to the controller: as a delayed profile, or as a force poll when it has begun.
    void scheduleRSM(ZephanRSMSingleTon& controller) const;
    /// Closes the schedule file, and deletes it when the controller's delayed RSM is over or there was none.
    /// A file whose record could not be read stays, since nobody knows what was ordered.
    void performCleanUp(const ZephanRSMSingleTon& controller);

    std::string getFilePath() const { return filePath_; }
    void setFilePath(const std::string& path) {
        filePath_ = path;
        place_ = platform::absolutePath(path);
    }

    // ---- Text helpers

    /// Date "2007:09:30" and time "05:06:00" of a GMT clock value; room for 40 characters each.
    static void dateToString(std::int64_t gmtClockValue, char* date, char* time);
    static bool isValidDate(const char* date) noexcept;
    static bool isValidTime(const char* time) noexcept;

  private:
    enum class Load { Done, NoMemory, NotReadable, NotInFormat };

    Load load();
    scheduling::Schedule schedule() const;
    bool isFileOpen() const;
    /// Puts a schedule into the fields; with its record, into the file, too: false when it is not there.
    void keep(const scheduling::Schedule& schedule);
    bool keep(const scheduling::Schedule& schedule, const scheduling::Schedule::Record& record);
    void store(const scheduling::Schedule& schedule);
    static void handOver(const scheduling::Schedule& schedule, std::int64_t now,
                         ZephanRSMSingleTon& controller);

    mutable platform::Mutex lock_;
    scheduling::Schedule schedule_;
    platform::File scheduleFile_;   ///< held open until the clean-up
    bool hasUnreadRecord_ = false;  ///< in the file, what may be a record and was not read whole
    Load loaded_ = Load::Done;
    std::string filePath_;
    std::string place_;  ///< where that led at the start; the host may change its directory
};
