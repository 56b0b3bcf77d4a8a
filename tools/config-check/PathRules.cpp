#include "../log/ArchiveName.h"
#include "Rules.h"
#include "logging/LogFamily.h"
#include "logging/LogFileWriter.h"
#include "platform/Access.h"
#include "platform/Directory.h"
#include "platform/portable/Number.h"
#include "scheduling/Schedule.h"

#include <algorithm>
#include <string_view>
#include <system_error>

namespace check {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kLongestPath = 4095;
constexpr std::size_t kLongestName = 255;
constexpr std::size_t kShortestBase = 4;  // a shorter one is part of many a name
constexpr std::size_t kMostNamed = 10;

/// A file that the module is to write.
struct Target {
    const char* what;
    std::string path;
    Position position;
};

/// What stands at a path; `none` when that cannot be told.
fs::file_type typeOf(const fs::path& path) {
    std::error_code error;
    return fs::status(path, error).type();
}

void checkSpelling(const Inspection& in, const Target& target) {
    const std::string& path = target.path;
    const auto percent = path.find('%');
    if (path.front() == '~' || path.find('$') != std::string::npos ||
        (percent != std::string::npos && path.find('%', percent + 1) != std::string::npos)) {
        in.warning(target.position, "path", "in the path ", shown(path),
                   " neither '~' nor variables are replaced: it is taken literally");
    }
}

/// True when a file may lie there, at least one day.
bool checkTarget(const Inspection& in, const Target& target) {
    const std::string what = target.what;
    const fs::path path = nativePath(target.path);
    const std::string directory = path.has_parent_path() ? path.parent_path().string() : ".";
    const std::string file = joined("the ", what, " ", shown(target.path));
    using Type = fs::file_type;
    const Type type = typeOf(path);
    const Type around = typeOf(directory);
    const bool exists = type != Type::not_found && type != Type::none;
    struct Fault {
        bool isFound;
        const char* kind;
        std::string text;
    };
    const Fault faults[] = {
        {target.path.size() > kLongestPath, "path", joined("the path of the ", what, " is too long")},
        {path.filename().string().size() > kLongestName, "path",
         joined(file, " cannot be opened: its name has more than ", std::to_string(kLongestName), " bytes")},
        {type == Type::directory || !path.has_filename(), "path-is-directory", file + " is a directory"},
        {around == Type::not_found || around == Type::none, "missing-directory",
         joined("there is no directory ", shown(directory), " for the ", what, "; the module makes none")},
        {around != Type::directory, "missing-directory",
         joined(shown(directory), " is a file, but should be the directory of the ", what)},
        {exists && type != Type::regular, "not-a-file",
         file + " is not a regular file; the module opens no other"},
        {exists && !platform::mayWrite(path.string()), "not-writable", file + " may not be written"},
        {!platform::mayWrite(directory), "not-writable",
         joined("in the directory ", shown(directory), " of the ", what, " no file may be made or removed")}};
    const Fault* const found =
        std::find_if(std::begin(faults), std::end(faults), [](const Fault& fault) { return fault.isFound; });
    if (found != std::end(faults)) {
        in.pathError(target.position, found->kind, found->text, target.path);
    }
    return (!exists || type == Type::regular) && path.has_filename();
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
    } else if (path.find(".xml", separator) == std::string::npos) {
        text = "does not end in '.xml': its archives are never deleted";
    } else if (dot - separator - 1 + LogFileWriter::kLongestArchiveEnd > kLongestName) {
        text = "has a name too long for one of its archives: it is never archived and grows without end";
    }
    if (!text.empty()) {
        in.warning(log.position, "archives", "the log file ", shown(path), " ", text);
    }
}

/// What the clean-up, which goes by names, takes beside the log and its archives.
void checkCleanUp(const Inspection& in, const Target& log, const std::vector<Target>& others) {
    const LogFamily family(log.path);
    const std::string name = nativePath(log.path).filename().string();
    const std::string rule = "whose name contains " + shown(family.baseName());
    platform::Directory directory;
    std::vector<std::string> names;
    if (directory.open(family.openedDirectory()) != 0 || directory.list(names) != 0) {
        return;
    }
    for (const Target& other : others) {
        const fs::path path = fromHere(other.path);
        if (path != fromHere(log.path) && path.parent_path() == fromHere(log.path).parent_path() &&
            family.holds(path.filename().string())) {
            in.warning(log.position, "clean-up", "the clean-up of the log deletes files ", rule, ", so the ",
                       other.what, " ", shown(other.path), " too, once it is old enough");
        }
    }
    if (family.holds(name) && family.baseName().size() < kShortestBase) {
        in.warning(log.position, "clean-up", "the clean-up of the log deletes every old file ", rule,
                   ", which many names do; choose one of four letters or more");
    }
    family.keepDue(names, directory, platform::readNumber(in.settings.logRevisionDays),
                   LogFamily::Undated::leave);
    std::erase_if(names, [&](const std::string& one) {
        const auto archive = logreader::readArchiveName(one);
        return one == name || !directory.mayRead(one) ||
               (archive && archive->base == name.substr(0, name.rfind('.')));
    });
    std::string list;
    for (std::size_t i = 0; i < std::min(names.size(), kMostNamed); ++i) {
        list += (i == 0 ? " " : ", ") + shown(names[i]);
    }
    if (!names.empty() && in.settings.fileListner) {
        in.warning(log.position, "clean-up", "the next start deletes", list,
                   names.size() > kMostNamed ? " and others" : "",
                   ", no archive of the log among them: it takes every old file ", rule);
    }
}

/// True when the system empties the folder at its start. A relative path is judged where the agent runs only.
bool isEmptied(const fs::path& path) {
    std::error_code error;
    const std::string place = fs::weakly_canonical(path, error).string();
    return path.is_absolute() &&
           (place.starts_with("/tmp/") || place.starts_with("/run/") || place.starts_with("/dev/shm/") ||
            platform::isInMemory(path.parent_path().string()));
}

void checkScheduleFile(const Inspection& in, const std::string& path) {
    constexpr std::string_view root = scheduling::Schedule::kRootTag;
    const std::string start =
        platform::File::open(path, platform::OpenMode::Read).readWhole(root.size()).value_or("");
    if (!start.empty() && start != root) {
        in.error(Position(), "schedule", "the schedule file ", shown(path), " does not begin with '", root,
                 "': no schedule is read from it");
    }
}

}  // namespace

void checkPaths(const Inspection& in) {
    const Position root = in.root().place;
    std::vector<Target> targets;
    const auto add = [&](const char* what, const std::string& path, Setting setting) {
        const Element* const element = in.originOf(setting);
        if (!path.empty() && path.find_first_of("\r\n") == std::string::npos) {
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
            checkCleanUp(in, one, others);
        }
        if (!isLog && isEmptied(nativePath(one.path))) {
            in.warning(one.position, "emptied", "the ", one.what, " ", shown(one.path),
                       " is in a folder that the system empties at its start: it is lost in the power"
                       " cut that it is meant for");
        }
        for (std::size_t j = i + 1; j < others.size(); ++j) {
            if (fromHere(one.path) == fromHere(others[j].path)) {
                in.error(one.position, "same-file", "the ", one.what, " and the ", others[j].what,
                         " are the same file, ", shown(one.path));
            }
        }
    }
}

}  // namespace check
