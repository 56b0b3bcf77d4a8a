#pragma once

#include "platform/portable/Lock.h"
#include "records/StateFile.h"
#include "scheduling/Schedule.h"

#include <cstdint>
#include <string>

class ZephanRSMSingleTon;
struct PropList;
struct RsmOrder;

/// Keeps the current RSM schedule in its fields and in the schedule file, takes in the "ScheduleRSM" command
/// and hands a stored schedule to the controller that owns it, which the caller names. Any thread. Fields,
/// file and the controller's RSM state change as one step under the lock, with which no agent is called.
class ScheduleRSMHandler final {
  public:
    /// Opens the schedule file, creating it when missing, and loads the record it holds. Without a file the
    /// handler works on without storing.
    explicit ScheduleRSMHandler(const char* path);
    ScheduleRSMHandler(const ScheduleRSMHandler&) = delete;
    ScheduleRSMHandler& operator=(const ScheduleRSMHandler&) = delete;

    /// Tells why the file's record was not loaded, or what damages it. For the start that made the
    /// handler, with no lock held.
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
    /// A file whose record could not be read stays, since nobody knows what was ordered, and so does a file that is not a record.
    void performCleanUp(const ZephanRSMSingleTon& controller);

    /// Stores nothing any more: the next start's handler has the file, and must not find it changed by an order
    /// that comes too late.
    void close() {
        const platform::Lock lock(lock_);
        scheduleFile_.close();
    }

    std::string getFilePath() const { return filePath_; }
    void setFilePath(const std::string& path) {
        filePath_ = path;
        const platform::Lock lock(lock_);
        scheduleFile_.setPath(path);
    }

    // ---- Text helpers

    /// Date "2007:09:30" and time "05:06:00" of a GMT clock value; room for 40 characters each.
    static void dateToString(std::int64_t gmtClockValue, char* date, char* time);

  private:
    /// Null, or the line that names the file's fault: a format of its path and `damaged_`.
    const char* load() REQUIRES(lock_);
    /// What the controller is ordered by a schedule that has not ended.
    static RsmOrder orderOf(const scheduling::Schedule& schedule, std::int64_t now);
    /// Puts a schedule into the fields, into the file, and, with an order, into the controller's state.
    void store(const scheduling::Schedule& schedule, const RsmOrder* order, ZephanRSMSingleTon& controller);
    /// Puts the texts of a rejected command into the fields.
    void keepRejected(scheduling::Schedule rejected);

    mutable platform::Mutex lock_;
    scheduling::Schedule schedule_ GUARDED_BY(lock_);
    records::StateFile scheduleFile_ GUARDED_BY(lock_){scheduling::Schedule::kRootTag};  ///< held open
    bool hasUnreadRecord_ GUARDED_BY(lock_) =
        false;  ///< in the file, what may be a record and was not read whole
    std::string filePath_;
    const char* trouble_ = nullptr;  ///< of the load
    const char* damaged_ = nullptr;  ///< the first element of the loaded record whose value is of no use
};
