#pragma once

#include "records/TaggedText.h"

#include <array>
#include <cstdint>
#include <string_view>

namespace scheduling {

/// One RSM schedule: its texts, as they stand in the schedule file, and what they mean.
struct Schedule {
    char startDate[records::kValueSize] = "NA";
    char startTime[records::kValueSize] = "NA";
    char endDate[records::kValueSize] = "NA";
    char endTime[records::kValueSize] = "NA";
    std::int64_t startTimeValue = 0;  ///< GMT clock values
    std::int64_t endTimeValue = 0;
    char pollingRateText[records::kValueSize] = "0";  ///< seconds
    char gracePeriodText[records::kValueSize] = "0";  ///< minutes

    /// Its end lies after `now`, a GMT clock value.
    bool isCurrent(std::int64_t now) const noexcept { return endTimeValue > now; }

    using Record = std::array<char, 1000>;
    /// The text of the schedule file, ended by a NUL.
    Record record() const noexcept;
    static constexpr std::string_view kRootTag = "<RSMExecuteCommand>";
    /// Takes the values of a record; `damaged` gets the first element whose value is of no use, if there is
    /// one. False when memory ran out for one of them.
    bool readRecord(const char* contents, const char*& damaged);
};

}  // namespace scheduling
