#include "TimeZone.h"

#include "Options.h"
#include "platform/Clock.h"
#include "platform/File.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <optional>
#include <re2/re2.h>
#include <string_view>

namespace logreader {

namespace {

using std::chrono::local_seconds;
using std::chrono::seconds;
using std::chrono::sys_days;
using std::chrono::sys_seconds;

constexpr sys_seconds kBegin = sys_days(std::chrono::year(1970) / 1 / 1);
constexpr sys_seconds kEnd = sys_days(std::chrono::year(2100) / 1 / 1);
constexpr std::string_view kZoneFile = "TZif";  // other files lie among them
constexpr std::chrono::weeks kStep(1);          // nowhere are clocks changed twice in a week

seconds libraryOffset(sys_seconds moment) {
    const std::int64_t value = moment.time_since_epoch().count();
    return seconds(platform::momentOfUtc(platform::localFields(value)) - value);
}

/// The variable `TZ` has this value as long as this lives.
class ProcessZone final {
  public:
    explicit ProcessZone(const std::string& value) {
        if (const char* const old = std::getenv("TZ")) {
            old_ = old;
        }
        set(value);
    }
    ProcessZone(const ProcessZone&) = delete;
    ProcessZone& operator=(const ProcessZone&) = delete;
    ~ProcessZone() { set(old_); }

  private:
    static void set(const std::optional<std::string>& value) {
        if (value) {
            ::setenv("TZ", value->c_str(), 1);
        } else {
            ::unsetenv("TZ");
        }
        ::tzset();
    }

    std::optional<std::string> old_;
};

/// The name as the C library takes it. The library itself would take an unknown name for UTC.
std::string libraryName(const std::string& name) {
    std::string sign;
    int hours = 0;
    int minutes = 0;
    if (name == "UTC" || name == "Z") {
        return "UTC0";
    }
    if (RE2::FullMatch(name, R"(([+-])(\d\d):?(\d\d))", &sign, &hours, &minutes) && hours < 24 &&
        minutes < 60) {
        std::array<char, 32> text{};
        std::snprintf(text.data(), text.size(), "<ZONE>%c%02d:%02d", sign == "+" ? '-' : '+', hours, minutes);
        return text.data();
    }
    if (RE2::FullMatch(name, R"(([A-Za-z]{3,}|<[A-Za-z0-9+-]{3,}>)[+-]?\d{1,2}(:\d\d){0,2}([A-Za-z<].*)?)")) {
        return name;
    }
    const char* const directory = std::getenv("TZDIR");
    const std::filesystem::path folder = directory == nullptr ? "/usr/share/zoneinfo" : directory;
    std::array<char, kZoneFile.size()> begin{};
    const auto file = platform::File::open((folder / name).string(), platform::OpenMode::Read);
    if (name.empty() || name.front() == '.' || file.readStart(begin.data(), begin.size()) != begin.size() ||
        std::string_view(begin.data(), begin.size()) != kZoneFile) {
        throw UsageError("unknown time zone " + name);
    }
    return name;
}

}  // namespace

TimeZone::TimeZone() {
    for (sys_seconds moment = kBegin; moment < kEnd; moment += kStep) {
        const seconds offset = libraryOffset(moment);
        if (!periods_.empty() && periods_.back().offset == offset) {
            continue;
        }
        sys_seconds before = periods_.empty() ? kBegin : moment - kStep;
        sys_seconds begin = moment;
        while (begin - before > seconds(1)) {
            const sys_seconds middle = before + (begin - before) / 2;
            (libraryOffset(middle) == offset ? begin : before) = middle;
        }
        periods_.push_back({begin, offset});
    }
}

TimeZone TimeZone::local() {
    ::tzset();
    return {};
}

TimeZone TimeZone::named(const std::string& name) {
    const ProcessZone zone(libraryName(name));
    return {};
}

std::vector<TimeZone::Period>::const_iterator TimeZone::periodAt(sys_seconds moment) const {
    const auto after =
        std::upper_bound(periods_.begin(), periods_.end(), moment,
                         [](sys_seconds wanted, const Period& period) { return wanted < period.begin; });
    return after == periods_.begin() ? after : after - 1;
}

seconds TimeZone::offsetAt(sys_seconds moment) const {
    return periodAt(moment)->offset;
}

sys_seconds TimeZone::momentOf(local_seconds clock, sys_seconds notBefore) const {
    if (clock >= sameFrom_ && clock < sameUntil_) {
        return sys_seconds(clock.time_since_epoch() - sameOffset_);
    }
    // The two periods that it can be in lie around the moment at which UTC's clock shows it.
    constexpr std::chrono::days kMoreThanAnyOffset(2);
    const sys_seconds asUtc(clock.time_since_epoch());
    const auto first = periodAt(asUtc - kMoreThanAnyOffset);
    const auto last = periodAt(asUtc + kMoreThanAnyOffset);
    if (first == last) {
        const local_seconds begin(first->begin.time_since_epoch());
        sameFrom_ = first == periods_.begin() ? local_seconds::min() : begin + kMoreThanAnyOffset;
        sameUntil_ = first + 1 == periods_.end()
                         ? local_seconds::max()
                         : local_seconds((first + 1)->begin.time_since_epoch()) - kMoreThanAnyOffset;
        sameOffset_ = first->offset;
        return sys_seconds(clock.time_since_epoch() - sameOffset_);
    }
    std::optional<sys_seconds> found;
    for (auto period = first; period <= last && !(found && *found >= notBefore); ++period) {
        const sys_seconds moment(clock.time_since_epoch() - period->offset);
        if (periodAt(moment) == period) {
            found = moment;
        }
    }
    return found.value_or(sys_seconds(clock.time_since_epoch() - first->offset));
}

}  // namespace logreader
