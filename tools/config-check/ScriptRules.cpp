#include "Rules.h"
#include "platform/Access.h"

#include <algorithm>
#include <cstdlib>
#include <sstream>
#include <system_error>

namespace check {
namespace {

namespace fs = std::filesystem;

bool isAmong(char c, std::string_view set) {
    return set.find(c) != std::string_view::npos;
}

/// A word of a command as the shell takes it.
struct Word {
    std::string text;
    std::string written;
    bool plain = true;  ///< no variable, pattern or other construct is in it
};

/// Takes the next word off a command; an empty one at the command's end or at an operator.
Word nextWord(std::string_view& command) {
    command.remove_prefix(std::min(command.find_first_not_of(" \t\r\n"), command.size()));
    Word word;
    char quote = '\0';
    std::size_t i = 0;
    for (; i < command.size(); ++i) {
        const char c = command[i];
        if (quote == '\0' && isAmong(c, " \t\r\n;&|<>()")) {
            break;
        }
        if (quote == c) {
            quote = '\0';
        } else if (quote == '\0' && isAmong(c, "'\"")) {
            quote = c;
        } else if (c == '\\' && quote != '\'' && i + 1 < command.size()) {
            word.text += command[++i];
        } else {
            word.plain = word.plain && (quote == '\'' || !isAmong(c, "$`")) &&
                         (quote != '\0' || !isAmong(c, "*?[]{}#~!"));
            word.text += c;
        }
    }
    word.plain = word.plain && quote == '\0';
    word.written = command.substr(0, i);
    command.remove_prefix(i);
    return word;
}

bool isAssignment(const std::string& word) {
    const std::size_t equals = word.find('=');
    return equals != std::string::npos && equals > 0 && word.find_first_of("/.-") > equals;
}

constexpr std::string_view kWordsOfTheShell =
    " . : [ { alias bg break case cd command continue do echo eval exec exit export false fg for getopts hash "
    "if jobs kill local printf pwd read readonly return set shift test then times trap true type ulimit umask "
    "unalias unset until wait while ";
constexpr std::string_view kInterpreters = " sh bash dash ksh python3 perl python ";

/// The file that the shell runs for a command; empty when there is none.
std::string onPath(const std::string& command) {
    const char* const path = std::getenv("PATH");
    std::istringstream directories(path == nullptr ? "/usr/bin:/bin" : path);
    for (std::string directory; std::getline(directories, directory, ':');) {
        std::string candidate = (directory.empty() ? "." : directory) + "/" + command;
        std::error_code error;
        if (fs::is_regular_file(candidate, error) && platform::mayExecute(candidate)) {
            return candidate;
        }
    }
    return {};
}

std::string faultOfFile(const std::string& path, bool execute) {
    std::error_code error;
    if (!fs::exists(path, error)) {
        return "there is no script " + shown(path);
    }
    const char* const fault = !fs::is_regular_file(path, error)        ? " is not a regular file"
                              : execute && !platform::mayExecute(path) ? " is not executable"
                              : !execute && !platform::mayRead(path)   ? " may not be read"
                                                                       : nullptr;
    return fault == nullptr ? "" : joined("the script ", shown(path), fault);
}

/// Anyone who may change what the agent runs, or where it is told what to run, has the agent's rights.
void checkWriters(const Inspection& in, Position position, const char* what, const fs::path& path) {
    std::error_code error;
    const fs::perms allowed = fs::status(path, error).permissions();
    const auto allows = [&](fs::perms one) { return (allowed & one) != fs::perms::none; };
    // In a sticky folder nobody replaces the files of others.
    if (!error && allows(fs::perms::others_write) &&
        !(allows(fs::perms::sticky_bit) && fs::is_directory(path, error))) {
        in.warning(position, "others-may-write", "others may write ", what, shown(path.string()),
                   ": they can make it run anything with the agent's rights");
    }
}

}  // namespace

void checkScript(const Inspection& in) {
    const auto folderOf = [](const fs::path& file) {
        return file.has_parent_path() ? file.parent_path() : fs::path(".");
    };
    checkWriters(in, in.root().place, "the configuration ", in.file);
    checkWriters(in, in.root().place, "the folder of the configuration, ", folderOf(in.file));
    const Element* const script = in.originOf(Setting::Script);
    if (script == nullptr || script->first == Element::First::comment) {
        return;
    }
    const Position position = in.textPositionOf(*script);
    /// True when the file is there and can be used.
    const auto checkFile = [&](const std::string& path, bool execute) {
        const std::string fault = faultOfFile(path, execute);
        if (!fault.empty()) {
            in.pathError(position, "script", fault, path);
        } else {
            checkWriters(in, position, "the script ", path);
            checkWriters(in, position, "the folder of the script, ", folderOf(path));
        }
        return fault.empty();
    };
    std::string_view command = in.settings.script;
    Word word = nextWord(command);
    while (word.plain && isAssignment(word.text)) {
        word = nextWord(command);
    }
    if (!word.plain || word.text.empty() || isOneOf(kWordsOfTheShell, word.text)) {
        return;
    }
    if (isAmong('/', word.text)) {
        if (!checkFile(word.text, true)) {
            return;
        }
    } else if (isAmong('\\', word.written)) {
        in.error(position, "script", shown(word.written),
                 ": the command interpreter takes each '\\' away and looks for ", shown(word.text),
                 "; write '/'");
        return;
    } else if (const std::string found = onPath(word.text); !found.empty()) {
        checkWriters(in, position, "the command ", found);
    } else {
        in.error(position, "script", "there is no command ", shown(word.text),
                 " on the PATH of this process");
        return;
    }
    if (isOneOf(kInterpreters, fs::path(word.text).filename().string())) {
        const Word file = nextWord(command);
        if (file.plain && !file.text.empty() && file.text.front() != '-') {
            checkFile(file.text, false);
        }
    }
}

}  // namespace check
