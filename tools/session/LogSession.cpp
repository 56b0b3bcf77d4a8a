#include "session/LogSession.h"

#include "LogFiles.h"
#include "OpenLog.h"
#include "common/ShownText.h"
#include "logging/FollowedLines.h"
#include "session/SessionRecord.h"

#include <chrono>
#include <fstream>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <utility>

namespace session {

namespace {

using logreader::jsonText;
using std::chrono::sys_seconds;

constexpr std::string_view kAround = " \n";  // what an entry does not have of its line
constexpr std::string_view kText = "%s";
constexpr std::string_view kProperty = "RSM_";
constexpr std::pair<std::string_view, const char*> kFamilies[] = {{lines::kRsm, "rsm"},
                                                                  {lines::kDataSource, "data-source"},
                                                                  {lines::kLogger, "logger"},
                                                                  {lines::kWebService, "web-service"}};

/// The part of a line of the module before its text.
constexpr std::string_view beginningOf(std::string_view line) {
    line.remove_prefix(line.find_first_not_of(kAround));
    return line.substr(0, line.find(kText));
}

/// The text in an entry that is this line of the module; an empty one of a line without.
std::optional<std::string_view> textIn(std::string_view entry, std::string_view line) {
    line = line.substr(0, line.find_last_not_of(kAround) + 1);
    const std::string_view beginning = beginningOf(line);
    const std::size_t text = line.find(kText);
    const std::string_view end = text == std::string_view::npos ? "" : line.substr(text + kText.size());
    if (!entry.starts_with(beginning) || !entry.substr(beginning.size()).ends_with(end)) {
        return std::nullopt;
    }
    entry = entry.substr(beginning.size(), entry.size() - beginning.size() - end.size());
    return text == std::string_view::npos && !entry.empty() ? std::nullopt : std::optional(entry);
}

/// Makes of entries the lines that a trace would have.
class LogReader final {
  public:
    explicit LogReader(SessionRecord& record) : record_(record) {}

    void take(const logreader::Entry& entry) {
        if (entry.clock) {
            moveTo(zone_.momentOf(*entry.clock, latest_.value_or(sys_seconds::min())));
        }
        const std::string_view text = entry.text;
        add(R"("event":"log","text":)" + jsonText(text));
        if (textIn(text, lines::kPoll)) {
            add(R"("event":"force-poll")");
        } else if (textIn(text, lines::kReportFailed)) {
            add(R"("event":"update-asset","result":-1,"properties":null)");
        } else if (const auto started = textIn(text, lines::kStarted)) {
            noteFamily("start ", *started);
        } else if (const auto stopped = textIn(text, lines::kStopped)) {
            noteFamily("stop ", *stopped);
        } else if (text.starts_with(kProperty)) {
            noteProperty(text);
        } else if (!isModuleLine(text) && record_.isAudit(std::string(text))) {
            addCall("audit " + std::string(text));
        }
    }
    /// Not when no entry was among it all.
    bool knowsTheTime() const { return latest_.has_value(); }
    /// What is left when the log ends in the middle of it.
    void finish() {
        if (!properties_.empty()) {
            add(R"("event":"update-asset","result":0,"properties":[)" + std::exchange(properties_, "") + "]");
        }
    }

  private:
    void moveTo(sys_seconds moment) {
        if (!latest_ || moment < *latest_) {
            record_.data().setClock(seconds_ * 1000, moment.time_since_epoch().count() * 1000);
        } else {
            seconds_ += (moment - *latest_).count();
        }
        latest_ = moment;
    }

    void add(const std::string& members) {
        record_.addLine("{\"t\":" + std::to_string(seconds_) + R"(,"thread":"log",)" + members + "}");
    }

    void addCall(const std::string& verb) {
        add(R"("event":"call","verb":)" + jsonText(verb) + R"(,"result":0)");
    }

    void noteFamily(const char* verb, std::string_view name) {
        for (const auto& [known, family] : kFamilies) {
            if (name == known) {
                addCall(std::string(verb) + family);
            }
        }
    }

    /// A report that was accepted is told by a line for each of its properties.
    void noteProperty(std::string_view text) {
        const std::size_t sign = text.find(" = ");
        const bool isFirst = textIn(text, lines::kReportBegins).has_value();
        if (sign == std::string_view::npos || (properties_.empty() && !isFirst)) {
            return;
        }
        if (isFirst) {
            finish();
        }
        properties_ += (properties_.empty() ? "[" : ",[") + jsonText(text.substr(0, sign)) + "," +
                       jsonText(text.substr(sign + 3)) + "]";
        if (textIn(text, lines::kReportEnds)) {
            finish();
        }
    }

    SessionRecord& record_;
    const logreader::TimeZone zone_ = logreader::TimeZone::local();
    std::optional<sys_seconds> latest_;
    std::int64_t seconds_ = 0;  ///< since the first entry, as far as the clock tells
    std::string properties_;    ///< of the report that is being told, as parts of a list
};

}  // namespace

bool isModuleLine(std::string_view text) {
    return textIn(text, lines::kPoll) || textIn(text, lines::kReportFailed) ||
           text.starts_with(beginningOf(lines::kStarted)) || text.starts_with(kProperty) || beginsAnew(text);
}

bool beginsAnew(std::string_view text) {
    return textIn(text, lines::kServiceAgent).has_value();
}

bool isLog(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    const int first = file.peek();
    return first != std::ifstream::traits_type::eof() && first != '{';
}

void readLog(const std::string& file, SessionRecord& record) {
    record.setLog(
        "From a log: its times are whole seconds, and its level may have left lines out. Who gave an order, what a "
        "refused report said, and a kill of the agent are not in it.");
    LogReader reader(record);
    logreader::LogFiles found({file}, logreader::TimeZone::local());
    found.forAll([&](const logreader::LogFile& part) {
        logreader::OpenLog log(part.path, part.file);
        for (logreader::Entry entry; log.entries().next(entry) || log.entries().rest(entry);) {
            reader.take(entry);
        }
    });
    reader.finish();
    if (!reader.knowsTheTime()) {
        throw std::runtime_error(file + ": is neither a log nor a trace");
    }
}

}  // namespace session
