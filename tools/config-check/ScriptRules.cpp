#include "Rules.h"
#include "platform/Access.h"

#include <algorithm>
#include <array>
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

bool isOfTheShell(std::string_view word) {
    static constexpr std::string_view kWords =
        " . : [ { alias bg break case cd command continue do echo eval exec exit export false fg for getopts "
        "hash if jobs kill local printf pwd read readonly return set shift test then times trap true type "
        "ulimit umask unalias unset until wait while ";
    return kWords.find(joined(" ", word, " ")) != std::string_view::npos;
}

bool isInterpreter(const std::string& word) {
    static constexpr std::array<std::string_view, 7> kNames{"sh",      "bash", "dash",  "ksh",
                                                            "python3", "perl", "python"};
    return std::find(kNames.begin(), kNames.end(), fs::path(word).filename().string()) != kNames.end();
}

bool isOnPath(const std::string& command) {
    const char* const path = std::getenv("PATH");
    std::istringstream directories(path == nullptr ? "/usr/bin:/bin" : path);
    for (std::string directory; std::getline(directories, directory, ':');) {
        const std::string candidate = (directory.empty() ? "." : directory) + "/" + command;
        std::error_code error;
        if (fs::is_regular_file(candidate, error) && platform::mayExecute(candidate)) {
            return true;
        }
    }
    return false;
}

/// What keeps the shell from running a command that it looks for; empty when nothing does.
std::string faultOfCommand(const Word& word) {
    if (isAmong('\\', word.written)) {
        return joined(shown(word.written), ": the command interpreter takes each '\\' away and looks for ",
                      shown(word.text), "; write '/'");
    }
    return isOnPath(word.text)
               ? ""
               : joined("there is no command ", shown(word.text), " on the PATH of this process");
}

std::string faultOfFile(const std::string& path, bool execute) {
    std::error_code error;
    if (!fs::exists(path, error)) {
        return "there is no script " + shown(path);
    }
    const char* const fault = !fs::is_regular_file(path, error)        ? " is no regular file"
                              : execute && !platform::mayExecute(path) ? " is not executable"
                              : !execute && !platform::mayRead(path)   ? " may not be read"
                                                                       : nullptr;
    return fault == nullptr ? "" : joined("the script ", shown(path), fault);
}

}  // namespace

void checkScript(const Inspection& in) {
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
        }
        return fault.empty();
    };
    std::string_view command = in.settings.script;
    Word word = nextWord(command);
    while (word.plain && isAssignment(word.text)) {
        word = nextWord(command);
    }
    if (!word.plain || word.text.empty() || isOfTheShell(word.text)) {
        return;
    }
    if (isAmong('/', word.text)) {
        if (!checkFile(word.text, true)) {
            return;
        }
    } else if (const std::string fault = faultOfCommand(word); !fault.empty()) {
        in.error(position, "script", fault);
        return;
    }
    if (isInterpreter(word.text)) {
        const Word file = nextWord(command);
        if (file.plain && !file.text.empty() && file.text.front() != '-') {
            checkFile(file.text, false);
        }
    }
}

}  // namespace check
