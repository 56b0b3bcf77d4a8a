#include "FileTable.h"

#include "Messages.h"
#include "OpenLog.h"
#include "common/ShownText.h"

#include <algorithm>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace logreader {

namespace {

using std::chrono::sys_seconds;

struct Contents {
    std::optional<sys_seconds> first;
    std::optional<sys_seconds> last;
    std::uint64_t entries = 0;
};

std::string line(const std::string& path, const Contents& contents, std::int64_t bytes, EntryWriter& times,
                 Form form) {
    const auto time = [&](std::optional<sys_seconds> moment, const char* quote, const char* none) {
        return moment ? quote + times.timeText(*moment) + quote : none;
    };
    std::string text;
    if (form == Form::json) {
        text = "{\"file\":";
        appendJson(text, path);
        return text + ",\"first\":" + time(contents.first, "\"", "null") +
               ",\"last\":" + time(contents.last, "\"", "null") +
               ",\"entries\":" + std::to_string(contents.entries) + ",\"bytes\":" + std::to_string(bytes) +
               "}\n";
    }
    const auto right = [](const std::string& number, std::size_t width) {
        return std::string(width - std::min(width, number.size()), ' ') + number;
    };
    return time(contents.first, "", "(no time)") + "  " + time(contents.last, "", "(no time)") +
           right(std::to_string(contents.entries), 9) + " entries" + right(std::to_string(bytes), 12) +
           " bytes  " + shownInLine(path) + "\n";
}

}  // namespace

bool printFiles(LogFiles& files, const TimeZone& logZone, EntryWriter& times, Form form, std::FILE* output) {
    bool complete = files.isWhole();
    std::optional<sys_seconds> moment;
    files.forAll([&](const LogFile& file) {
        std::optional<OpenLog> log;
        Contents contents;
        try {
            log.emplace(file.path, file.file);
            for (Entry entry; log->entries().next(entry) || log->entries().rest(entry);) {
                if (entry.clock) {
                    moment = logZone.momentOf(*entry.clock, moment.value_or(sys_seconds::min()));
                    contents.first = contents.first.value_or(*moment);
                    contents.last = moment;
                    ++contents.entries;
                }
            }
        } catch (const std::runtime_error& error) {
            complain(error.what());
            complete = false;
        }
        if (log) {
            writeOut(line(log->path(), contents, log->file().size(), times, form), output);
        }
    });
    return complete;
}

bool printDiskUsage(LogFiles& files, Form form, std::FILE* output) {
    bool complete = files.isWhole();
    std::int64_t bytes = 0;
    std::size_t count = 0;
    files.forAll([&](const LogFile& file) {
        try {
            bytes += OpenLog(file.path, file.file).file().size();
            ++count;
        } catch (const std::runtime_error& error) {
            complain(error.what());
            complete = false;
        }
    });
    const std::string total = std::to_string(bytes);
    const std::string number = std::to_string(count);
    writeOut(form == Form::json ? "{\"bytes\":" + total + ",\"files\":" + number + "}\n"
                                : total + " bytes in " + number + (count == 1 ? " file\n" : " files\n"),
             output);
    return complete;
}

}  // namespace logreader
