#include "session/LogSession.h"

#include "LogFiles.h"
#include "OpenLog.h"
#include "common/ShownText.h"
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

// What the module writes.
constexpr std::string_view kPoll = "Zephan Agent is Force Polling  ...";
constexpr std::string_view kRefused = "Failed to Update Properties......";
constexpr std::string_view kProperty = "RSM_";
constexpr std::string_view kFirstProperty = "RSM_MODE";
constexpr std::string_view kLastProperty = "RSM_DELAY_PROFILE_GRACE_PERIOD";
constexpr std::string_view kExtension = "Custom HVK Extension: ";
constexpr std::pair<std::string_view, const char*> kFamilies[] = {
    {"RSM Extension", "rsm"},
    {"RSM DataSource Extension", "data-source"},
    {"RSM Logger Extension", "logger"},
    {"RSM WebService Extension", "web-service"}};

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
        if (text == kPoll) {
            add(R"("event":"force-poll")");
        } else if (text == kRefused) {
            add(R"("event":"update-asset","result":-1,"properties":null)");
        } else if (text.starts_with(kExtension)) {
            noteExtension(text.substr(kExtension.size()));
        } else if (text.starts_with(kProperty)) {
            noteProperty(text);
        } else if (record_.isAudit(std::string(text))) {
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

    void noteExtension(std::string_view text) {
        for (const auto& [name, family] : kFamilies) {
            if (text.starts_with(name)) {
                text.remove_prefix(name.size());
                if (text == " startup complete." || text == " shutdown complete.") {
                    addCall((text == " startup complete." ? "start " : "stop ") + std::string(family));
                }
                return;
            }
        }
    }

    /// A report that was accepted is told by a line for each of its properties.
    void noteProperty(std::string_view text) {
        const std::size_t sign = text.find(" = ");
        const std::string_view name = text.substr(0, sign);
        if (sign == std::string_view::npos || (properties_.empty() && name != kFirstProperty)) {
            return;
        }
        if (name == kFirstProperty) {
            finish();
        }
        properties_ +=
            (properties_.empty() ? "[" : ",[") + jsonText(name) + "," + jsonText(text.substr(sign + 3)) + "]";
        if (name == kLastProperty) {
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
    return text == kPoll || text == kRefused || text.starts_with(kExtension) || text.starts_with(kProperty);
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
