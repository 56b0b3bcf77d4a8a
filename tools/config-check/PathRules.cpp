#include "Paths.h"
#include "Rules.h"
#include "platform/Access.h"
#include "platform/File.h"

#include <algorithm>
#include <fstream>
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

class PathCheck final {
  public:
    PathCheck(const Inspection& inspection, const Target& target)
        : in_(inspection), target_(target), path_(nativePath(target.path)), name_(shown(target.path)) {}

    /// True when a file may lie there, at least one day.
    bool run() {
        checkSpelling();
        const std::string directory = directoryOf();
        std::error_code error;
        if (target_.path.size() > kLongestPath) {
            report("path", std::string("the path of the ") + target_.what + " is too long");
        } else if (isDirectory(path_) || !path_.has_filename()) {
            report("path-is-directory", std::string("the ") + target_.what + " " + name_ + " is a directory");
        } else if (!isThere(directory)) {
            report("missing-directory", "there is no directory " + shown(directory) + " for the " +
                                            target_.what + "; the module makes none");
        } else if (!isDirectory(directory)) {
            report("missing-directory",
                   shown(directory) + " is a file, and is to be the directory of the " + target_.what);
        } else if (isThere(path_) && !fs::is_regular_file(path_, error)) {
            report("not-a-file", std::string("the ") + target_.what + " " + name_ +
                                     " is no regular file; the module opens no other");
        } else if (isThere(path_) && !platform::mayWrite(path_.string())) {
            report("not-writable", std::string("the ") + target_.what + " " + name_ + " may not be written");
        } else if (!platform::mayWrite(directory)) {
            report("not-writable", "in the directory " + shown(directory) + " of the " + target_.what +
                                       " no file may be made or removed");
        }
        return (!isThere(path_) || fs::is_regular_file(path_, error)) && path_.has_filename();
    }

  private:
    std::string directoryOf() const {
        const fs::path directory = path_.parent_path();
        return directory.empty() ? "." : directory.string();
    }

    void checkSpelling() {
        const std::string& path = target_.path;
        const auto percent = path.find('%');
        if (path.front() == '~' || path.find('$') != std::string::npos ||
            (percent != std::string::npos && path.find('%', percent + 1) != std::string::npos)) {
            in_.warning(
                target_.position, "path",
                "in the path " + name_ + " neither '~' nor variables are replaced: it is taken as it is");
        }
    }

    void report(const char* kind, const std::string& text) {
        Finding& finding = in_.error(target_.position, kind, text);
        if (isRelative(target_.path)) {
            finding.notes.push_back(
                {target_.position, name_ + " is relative to the agent's working directory; from here it is " +
                                       shown(fromHere(target_.path).string())});
        }
    }

    const Inspection& in_;
    const Target& target_;
    const fs::path path_;
    const std::string name_;
};

/// What the log's own rules make of its path: archives are named after it up to its last ".", and the
/// clean-up deletes what it finds by its directory and its name up to ".xml".
void checkArchives(const Inspection& in, const Target& log) {
    const std::string& path = log.path;
    const std::size_t separator = platform::lastSeparator(path);
    const std::size_t dot = path.rfind('.');
    std::string text;
    if (dot == std::string::npos || (separator != std::string::npos && dot < separator)) {
        text = "has no '.' in its name: archives are named " +
               shown(path.substr(0, dot) + "2026_1_31_10_5_0.xml") + " and never deleted";
    } else if (separator == std::string::npos) {
        text = "names no directory: its archives are never deleted; write " + shown("./" + path);
    } else if (path.find(kArchiveEnd, separator) == std::string::npos) {
        text = "does not end in '.xml': its archives are never deleted";
    }
    if (!text.empty()) {
        in.warning(log.position, "archives", "the log file " + shown(path) + " " + text);
    }
}

/// The clean-up deletes what looks like a file of the log.
void checkCleanUp(const Inspection& in, const Target& log, const Target& other) {
    const fs::path logPath = fromHere(log.path);
    const fs::path otherPath = fromHere(other.path);
    std::string base = logPath.filename().string();
    base.resize(std::min(base.size(), base.find(kArchiveEnd)));
    if (logPath == otherPath || logPath.parent_path() != otherPath.parent_path() ||
        otherPath.filename().string().find(base) == std::string::npos ||
        (nativePath(log.path).parent_path() / otherPath.filename()).string().find(kArchiveEnd) ==
            std::string::npos) {
        return;
    }
    in.warning(log.position, "clean-up",
               "the clean-up of the log deletes files whose name contains " + shown(base) + ", so the " +
                   other.what + " " + shown(other.path) + " too, once it is old enough");
}

void checkScheduleFile(const Inspection& in, const Target& schedule) {
    const fs::path path = nativePath(schedule.path);
    std::error_code error;
    if (!fs::is_regular_file(path, error) || !platform::mayRead(path.string())) {
        return;
    }
    constexpr std::string_view kRoot = "<RSMExecuteCommand>";
    std::ifstream file(path, std::ios::binary);
    std::string start(kRoot.size(), '\0');
    file.read(start.data(), static_cast<std::streamsize>(start.size()));
    if (file.gcount() > 0 && start != kRoot) {
        in.error(schedule.position, "schedule",
                 "the schedule file " + shown(schedule.path) + " does not begin with '" + std::string(kRoot) +
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
        const Element* const element = in.selection[setting];
        if (isOnePath(path)) {
            targets.push_back(
                {what, path,
                 element == nullptr ? in.tagOf(Setting::FileListner, root) : in.textPositionOf(*element)});
        }
    };
    const bool logs = (in.settings.fileListner || in.selection[Setting::LogFilePath] != nullptr) &&
                      isOnePath(in.settings.logFilePath);
    if (logs) {
        add("log file", in.settings.logFilePath, Setting::LogFilePath);
    }
    add("resume file", in.settings.resumeStatusFile, Setting::ResumeStatusFile);
    if (in.schedule) {
        targets.push_back({"schedule file", *in.schedule, Position()});
        checkScheduleFile(in, targets.back());
    }
    std::vector<Target> others = targets;
    others.push_back({"configuration", in.file, root});
    for (std::size_t i = 0; i < targets.size(); ++i) {
        const bool usable = PathCheck(in, targets[i]).run();
        if (logs && i == 0 && usable) {
            checkArchives(in, targets[i]);
        }
        for (std::size_t j = i + 1; j < others.size(); ++j) {
            if (fromHere(targets[i].path) == fromHere(others[j].path)) {
                in.error(targets[i].position, "same-file",
                         std::string("the ") + targets[i].what + " and the " + others[j].what +
                             " are the same file, " + shown(targets[i].path));
            } else if (logs && i == 0) {
                checkCleanUp(in, targets[0], others[j]);
            }
        }
    }
}

}  // namespace check
