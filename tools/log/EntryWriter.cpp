#include "EntryWriter.h"

#include "ShownText.h"

#include <array>
#include <cstdio>

namespace logreader {

namespace {

constexpr std::string_view kIndent = "    ";  // no line of a message can pass for the beginning of an entry

}  // namespace

void EntryWriter::append(std::string& target, const Entry& entry,
                         std::optional<std::chrono::sys_seconds> moment, const std::string& path) {
    if (json_) {
        target += "{\"time\":";
        if (moment) {
            target.append("\"").append(timeText(*moment)).append("\"");
        } else {
            target += "null";
        }
        target += ",\"text\":";
        appendJson(target, entry.text);
        target += ",\"file\":";
        appendJson(target, path);
        target += ",\"offset\":" + std::to_string(entry.offset) + "}\n";
        return;
    }
    target.append(moment ? std::string_view(timeText(*moment)) : "(no time)").append(" ");
    appendShown(target, entry.text, kIndent);
    target += '\n';
}

/// Most entries share their second with the one before.
const std::string& EntryWriter::timeText(std::chrono::sys_seconds moment) {
    if (moment == lastMoment_) {
        return lastTime_;
    }
    using namespace std::chrono;
    const seconds offset = zone_.offsetAt(moment);
    const local_seconds clock(moment.time_since_epoch() + offset);
    const auto day = floor<days>(clock);
    const year_month_day date(day);
    const hh_mm_ss time(clock - day);
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%04d-%02u-%02uT%02d:%02d:%02d", int{date.year()},
                  unsigned{date.month()}, unsigned{date.day()}, static_cast<int>(time.hours().count()),
                  static_cast<int>(time.minutes().count()), static_cast<int>(time.seconds().count()));
    lastTime_ = text.data();
    if (offset == seconds(0)) {
        lastTime_ += 'Z';
    } else {
        const hh_mm_ss distance(offset);
        std::snprintf(text.data(), text.size(), "%c%02d:%02d", distance.is_negative() ? '-' : '+',
                      static_cast<int>(distance.hours().count()),
                      static_cast<int>(distance.minutes().count()));
        lastTime_ += text.data();
    }
    lastMoment_ = moment;
    return lastTime_;
}

}  // namespace logreader
