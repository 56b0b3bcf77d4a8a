#include "LogFiles.h"

#include "EntryReader.h"
#include "platform/Directory.h"
#include "platform/File.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <iterator>
#include <optional>
#include <re2/re2.h>
#include <set>
#include <tuple>
#include <utility>

namespace logreader {

namespace {

using std::chrono::local_seconds;

/// When a file was full, as its name tells, and the collision counter.
using Rotation = std::pair<local_seconds, std::uint32_t>;

/// What the name of an archive says. Nothing stands between the second and the collision counter: "12" is
/// second 12, or second 1 and counter 2.
struct ArchiveName {
    std::string base;  ///< what stands before the date
    std::vector<Rotation> readings;
};

std::optional<ArchiveName> readArchiveName(const std::string& name) {
    static const RE2 form(R"((?s)(.*)(\d{4})_(\d\d?)_(\d\d?)_(\d\d?)_(\d\d?)_(\d{1,10})\.xml)", RE2::Latin1);
    ArchiveName read;
    int year = 0;
    unsigned month = 0;
    unsigned day = 0;
    int hour = 0;
    int minute = 0;
    std::string rest;
    if (!RE2::FullMatch(name, form, &read.base, &year, &month, &day, &hour, &minute, &rest)) {
        return std::nullopt;
    }
    const auto date = std::chrono::year(year) / std::chrono::month(month) / std::chrono::day(day);
    if (!date.ok() || hour > 23 || minute > 59) {
        return std::nullopt;
    }
    const local_seconds begin =
        std::chrono::local_days(date) + std::chrono::hours(hour) + std::chrono::minutes(minute);
    for (std::size_t digits = std::min<std::size_t>(rest.size(), 2); digits > 0; --digits) {
        const int second = std::stoi(rest.substr(0, digits));
        const std::string counter = rest.substr(digits);
        if (second < 60 && (digits == 1 || rest.front() != '0') && !counter.starts_with('0')) {
            read.readings.emplace_back(begin + std::chrono::seconds(second),
                                       static_cast<std::uint32_t>(counter.empty() ? 0 : std::stoul(counter)));
        }
    }
    return read.readings.empty() ? std::nullopt : std::optional(read);
}

std::optional<local_seconds> firstClock(const platform::File& file) {
    bool asked = false;
    EntryReader reader([&](char* buffer, std::size_t) {
        constexpr std::size_t kEnoughForOne = 16384;
        return std::exchange(asked, true) ? 0 : file.readStart(buffer, kEnoughForOne);
    });
    Entry entry;
    while (reader.next(entry) || reader.rest(entry)) {
        if (entry.clock) {
            return entry.clock;
        }
    }
    return std::nullopt;
}

/// An archive's place among others. The first entry of a file tells where it belongs; among those that begin
/// in the same second (all but the last of them were full in that second, too) the name tells.
using Place = std::tuple<local_seconds, Rotation>;

Place placeOf(const platform::File& file, const std::vector<Rotation>& readings) {
    const auto first = file.isOpen() ? firstClock(file) : std::nullopt;
    Rotation rotation = readings.front();
    for (const Rotation& reading : readings) {
        if (reading.first == first) {
            rotation = reading;
        }
    }
    return {first.value_or(rotation.first), rotation};
}

std::string nameIn(const std::string& path) {
    return path.substr(platform::lastSeparator(path) + 1);
}

/// The archives in order; one that is the same file as `except` is left out.
std::vector<std::string> inOrder(const std::vector<std::string>& archives, const platform::File& except) {
    std::vector<std::pair<Place, std::string>> places;
    for (const std::string& path : archives) {
        const auto file = platform::File::open(path, platform::OpenMode::Read);
        if (!except.isOpen() || !file.isOpen() || !file.isSameFile(except)) {
            places.emplace_back(placeOf(file, readArchiveName(nameIn(path))->readings), path);
        }
    }
    std::stable_sort(places.begin(), places.end(),
                     [](const auto& left, const auto& right) { return left.first < right.first; });
    std::vector<std::string> ordered;
    ordered.reserve(places.size());
    for (auto& [place, path] : places) {
        ordered.push_back(std::move(path));
    }
    return ordered;
}

}  // namespace

bool isArchiveName(const std::string& path) {
    return readArchiveName(nameIn(path)).has_value();
}

std::vector<std::string> archivesOf(const std::string& logPath, const platform::File& log) {
    const std::string base = logPath.substr(0, logPath.rfind('.'));
    const std::string folder = base.substr(0, platform::lastSeparator(base) + 1);
    std::vector<std::string> names;
    platform::Directory directory;
    if (directory.open(folder.empty() ? "." : folder) == 0) {
        directory.list(names);
    }
    std::vector<std::string> archives;
    for (const std::string& name : names) {
        const auto read = readArchiveName(name);
        if (read && read->base == nameIn(base)) {
            archives.push_back(folder + name);
        }
    }
    return inOrder(archives, log);
}

std::vector<LogFile> filesFor(const std::vector<std::string>& named) {
    std::vector<std::string> archives;
    std::vector<LogFile> logs;
    std::set<std::filesystem::path> seen;
    const auto isNew = [&](const std::string& path) {
        std::error_code error;
        const auto whole = std::filesystem::weakly_canonical(path, error);
        return error || seen.insert(whole).second;
    };
    for (const std::string& path : named) {
        if (path == "-") {
            logs.push_back({path, {}});
        } else if (isArchiveName(path)) {
            if (isNew(path)) {
                archives.push_back(path);
            }
        } else if (isNew(path)) {
            logs.push_back({path, platform::File::open(path, platform::OpenMode::Read)});
            for (const std::string& archive : archivesOf(path, logs.back().file)) {
                if (isNew(archive)) {
                    archives.push_back(archive);
                }
            }
        }
    }
    std::vector<LogFile> files;
    for (const std::string& path : inOrder(archives, {})) {
        files.push_back({path, {}});
    }
    std::move(logs.begin(), logs.end(), std::back_inserter(files));
    return files;
}

}  // namespace logreader
