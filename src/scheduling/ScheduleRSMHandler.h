#pragma once

#include "platform/File.h"
#include "scheduling/TaggedText.h"

#include <cstdint>
#include <mutex>
#include <string>

struct PropList;

/// Keeps the current RSM schedule in its fields and in the schedule file, takes in the "ScheduleRSM" command
/// and hands a stored schedule to the controller. Owned by the controller. Any thread that holds a pass of
/// the module gate.
class ScheduleRSMHandler final {
  public:
    /// Opens the schedule file, creating it when missing, and loads the record it holds. Without a file the
    /// handler works on without storing.
    explicit ScheduleRSMHandler(const char* path);
    ScheduleRSMHandler(const ScheduleRSMHandler&) = delete;
    ScheduleRSMHandler& operator=(const ScheduleRSMHandler&) = delete;

    /// Runs the command. `response` may be null; otherwise it receives a new list for the caller. 0 when the
    /// period was scheduled, 1 when the command failed.
    std::int32_t executeScheduleCommand(const PropList* input, PropList** response);

    /// True while the schedule's end lies in the future.
    bool isScheduleCurrent() const noexcept;
    /// Hands the schedule to the controller: as a delayed profile, or as a force poll when its start has
    /// passed.
    void scheduleRSM();
    /// Closes the schedule file, and deletes it when the controller's delayed RSM is over or there was none.
    void performCleanUp();

    std::string getFilePath() const { return filePath_; }
    void setFilePath(const std::string& path) { filePath_ = path; }

    // ---- Text helpers

    /// Date "2007:09:30" and time "05:06:00" of a GMT clock value; room for 40 characters each.
    static void dateToString(std::int64_t gmtClockValue, char* date, char* time) noexcept;
    static bool isValidDate(const char* date) noexcept;
    static bool isValidTime(const char* time) noexcept;

  private:
    struct Rejections;

    void load();
    void takeIn(const PropList* input, Rejections& rejections);
    void computePeriod();
    void storeRecord();

    std::mutex commandLock_;  ///< one command at a time
    char startDate_[scheduling::kValueSize] = "NA";
    char startTime_[scheduling::kValueSize] = "NA";
    char endDate_[scheduling::kValueSize] = "NA";
    char endTime_[scheduling::kValueSize] = "NA";
    std::int64_t startTimeValue_ = 0;  ///< GMT clock values
    std::int64_t endTimeValue_ = 0;
    char pollingRateText_[scheduling::kValueSize] = "0";
    char gracePeriodText_[scheduling::kValueSize] = "0";
    platform::File scheduleFile_;  ///< held open until the clean-up
    std::string filePath_;
};
