#include "Rules.h"
#include "platform/Access.h"
#include "platform/File.h"

#include <algorithm>
#include <string_view>
#include <system_error>

namespace check {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kLongestPath = 4095;
constexpr const char* kArchiveEnd = ".xml";

/// A file that the module is to write.
struct Target {
    const char* what;
    std::string path;
    Position position;
};

bool isThere(const fs::path& path) {
    std::error_code error;
    return fs::exists(path, error);
}

bool isDirectory(const fs::path& path) {
    std::error_code error;
    return fs::is_directory(path, error);
}

void checkSpelling(const Inspection& in, const Target& target) {
    const std::string& path = target.path;
    const auto percent = path.find('%');
    if (path.front() == '~' || path.find('$') != std::string::npos ||
        (percent != std::string::npos && path.find('%', percent + 1) != std::string::npos)) {
        in.warning(target.position, "path", "in the path ", shown(path),
                   " neither '~' nor variables are replaced: it is taken as it is");
    }
}

/// True when a file may lie there, at least one day.
bool checkTarget(const Inspection& in, const Target& target) {
    const std::string what = target.what;
    const fs::path path = nativePath(target.path);
    const std::string directory = path.has_parent_path() ? path.parent_path().string() : ".";
    const std::string file = joined("the ", what, " ", shown(target.path));
    std::error_code error;
    const bool exists = isThere(path);
    const bool isRegular = fs::is_regular_file(path, error);
    struct Fault {
        bool isFound;
        const char* kind;
        std::string text;
    };
    const Fault faults[] = {
        {target.path.size() > kLongestPath, "path", joined("the path of the ", what, " is too long")},
        {isDirectory(path) || !path.has_filename(), "path-is-directory", file + " is a directory"},
        {!isThere(directory), "missing-directory",
         joined("there is no directory ", shown(directory), " for the ", what, "; the module makes none")},
        {!isDirectory(directory), "missing-directory",
         joined(shown(directory), " is a file, and is to be the directory of the ", what)},
        {exists && !isRegular, "not-a-file", file + " is no regular file; the module opens no other"},
        {exists && !platform::mayWrite(path.string()), "not-writable", file + " may not be written"},
        {!platform::mayWrite(directory), "not-writable",
         joined("in the directory ", shown(directory), " of the ", what, " no file may be made or removed")}};
    const Fault* const found =
        std::find_if(std::begin(faults), std::end(faults), [](const Fault& fault) { return fault.isFound; });
    if (found != std::end(faults)) {
        in.pathError(target.position, found->kind, found->text, target.path);
    }
    return (!exists || isRegular) && path.has_filename();
}

/// What the log's own rules make of its path: archives are named after it up to its last ".", and the
/// clean-up deletes what it finds by its directory and its name up to ".xml".
void checkArchives(const Inspection& in, const Target& log) {
    const std::string& path = log.path;
    const std::size_t separator = platform::lastSeparator(path);
    const std::size_t dot = path.rfind('.');
    std::string text;
    if (dot == std::string::npos || (separator != std::string::npos && dot < separator)) {
        text = joined("has no '.' in its name: archives are named ",
                      shown(path.substr(0, dot) + "2026_1_31_10_5_0.xml"), " and never deleted");
    } else if (separator == std::string::npos) {
        text = "names no directory: its archives are never deleted; write " + shown("./" + path);
    } else if (path.find(kArchiveEnd, separator) == std::string::npos) {
        text = "does not end in '.xml': its archives are never deleted";
    }
    if (!text.empty()) {
        in.warning(log.position, "archives", "the log file ", shown(path), " ", text);
    }
}

/// The clean-up deletes what looks like a file of the log.
void checkCleanUp(const Inspection& in, const Target& log, const Target& other) {
    const fs::path logPath = fromHere(log.path);
    const fs::path otherPath = fromHere(other.path);
    std::string base = logPath.filename().string();
    base.resize(std::min(base.size(), base.find(kArchiveEnd)));
    if (logPath.parent_path() != otherPath.parent_path() ||
        otherPath.filename().string().find(base) == std::string::npos ||
        (nativePath(log.path).parent_path() / otherPath.filename()).string().find(kArchiveEnd) ==
            std::string::npos) {
        return;
    }
    in.warning(log.position, "clean-up", "the clean-up of the log deletes files whose name contains ",
               shown(base), ", so the ", other.what, " ", shown(other.path), " too, once it is old enough");
}

void checkScheduleFile(const Inspection& in, const std::string& path) {
    constexpr std::string_view kRoot = "<RSMExecuteCommand>";
    const platform::File file = platform::File::open(path, platform::OpenMode::Read);
    const std::string start = file.readWhole(kRoot.size()).value_or("");
    if (!start.empty() && start != kRoot) {
        in.error(Position(), "schedule", "the schedule file ", shown(path), " does not begin with '", kRoot,
                 "': no schedule is read from it");
    }
}

bool isOnePath(const std::string& path) {
    return !path.empty() && path.find_first_of("\r\n") == std::string::npos;
}

}  // namespace

void checkPaths(const Inspection& in) {
    const Position root = in.root().place;
    std::vector<Target> targets;
    const auto add = [&](const char* what, const std::string& path, Setting setting) {
        const Element* const element = in.originOf(setting);
        if (isOnePath(path)) {
            targets.push_back(
                {what, path,
                 element == nullptr ? in.tagOf(Setting::FileListner, root) : in.textPositionOf(*element)});
        }
    };
    if (in.settings.fileListner || in.originOf(Setting::LogFilePath) != nullptr) {
        add("log file", in.settings.logFilePath, Setting::LogFilePath);
    }
    const bool logs = !targets.empty();
    add("resume file", in.settings.resumeStatusFile, Setting::ResumeStatusFile);
    if (in.schedule) {
        targets.push_back({"schedule file", *in.schedule, Position()});
        checkScheduleFile(in, *in.schedule);
    }
    std::vector<Target> others = targets;
    others.push_back({"configuration", in.file, root});
    for (std::size_t i = 0; i < targets.size(); ++i) {
        const Target& one = targets[i];
        const bool isLog = logs && i == 0;
        checkSpelling(in, one);
        if (checkTarget(in, one) && isLog) {
            checkArchives(in, one);
        }
        for (std::size_t j = i + 1; j < others.size(); ++j) {
            if (fromHere(one.path) == fromHere(others[j].path)) {
                in.error(one.position, "same-file", "the ", one.what, " and the ", others[j].what,
                         " are the same file, ", shown(one.path));
            } else if (isLog) {
                checkCleanUp(in, one, others[j]);
            }
        }
    }
}

}  // namespace check
