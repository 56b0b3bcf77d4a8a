#include "EntryWriter.h"

#include "common/ShownText.h"

#include <string_view>

namespace logreader {

namespace {

constexpr std::string_view kIndent = "    ";  // no line of a message can pass for the beginning of an entry

/// The last `count` digits of a number. (The C library's would take a third of the program's time.)
void appendDigits(std::string& target, int count, int number) {
    target.append(static_cast<std::size_t>(count), '0');
    for (auto digit = target.rbegin(); count > 0; --count, number /= 10) {
        *digit++ = static_cast<char>('0' + number % 10);
    }
}

}  // namespace

void EntryWriter::append(std::string& target, const Entry& entry,
                         std::optional<std::chrono::sys_seconds> moment, const Origin& origin) {
    if (form_ == Form::json) {
        target += "{\"time\":";
        if (moment) {
            target.append("\"").append(timeText(*moment)).append("\"");
        } else {
            target += "null";
        }
        target += ",\"text\":";
        appendJson(target, entry.text);
        target += ",\"file\":";
        appendJson(target, origin.path);
        const std::string offset = std::to_string(entry.offset);
        target.append(",\"offset\":").append(offset);
        target.append(",\"id\":\"").append(origin.mark).append("-").append(offset).append("\"}\n");
        return;
    }
    if (form_ == Form::shown) {
        target.append(moment ? std::string_view(timeText(*moment)) : "(no time)").append(" ");
    }
    appendShown(target, entry.text, form_ == Form::cat ? std::string_view() : kIndent);
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
    lastTime_.clear();
    appendDigits(lastTime_, 4, int{date.year()});
    appendDigits(lastTime_ += '-', 2, static_cast<int>(unsigned{date.month()}));
    appendDigits(lastTime_ += '-', 2, static_cast<int>(unsigned{date.day()}));
    appendDigits(lastTime_ += 'T', 2, static_cast<int>(time.hours().count()));
    appendDigits(lastTime_ += ':', 2, static_cast<int>(time.minutes().count()));
    appendDigits(lastTime_ += ':', 2, static_cast<int>(time.seconds().count()));
    if (offset == seconds(0)) {
        lastTime_ += 'Z';
    } else {
        const hh_mm_ss distance(offset);
        appendDigits(lastTime_ += distance.is_negative() ? '-' : '+', 2,
                     static_cast<int>(distance.hours().count()));
        appendDigits(lastTime_ += ':', 2, static_cast<int>(distance.minutes().count()));
    }
    lastMoment_ = moment;
    return lastTime_;
}

}  // namespace logreader
