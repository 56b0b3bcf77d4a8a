#include "Paths.h"
#include "Rules.h"
#include "platform/Access.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <sstream>
#include <string_view>
#include <system_error>

namespace check {
namespace {

namespace fs = std::filesystem;

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
        if (quote == '\0' && std::string_view(" \t\r\n;&|<>()").find(c) != std::string_view::npos) {
            break;
        }
        if (quote == c) {
            quote = '\0';
        } else if (quote == '\0' && (c == '\'' || c == '"')) {
            quote = c;
        } else if (c == '\\' && quote != '\'' && i + 1 < command.size()) {
            word.text += command[++i];
        } else {
            word.plain = word.plain && (quote == '\'' || (c != '$' && c != '`')) &&
                         (quote != '\0' || std::string_view("*?[]{}#~!").find(c) == std::string_view::npos);
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
    return kWords.find(" " + std::string(word) + " ") != std::string_view::npos;
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

class ScriptCheck final {
  public:
    explicit ScriptCheck(const Inspection& inspection)
        : in_(inspection), position_(in_.textPositionOf(*in_.selection[Setting::Script])) {}

    void run() {
        std::string_view command = in_.settings.script;
        Word word = nextWord(command);
        while (word.plain && isAssignment(word.text)) {
            word = nextWord(command);
        }
        if (!word.plain || word.text.empty() || isOfTheShell(word.text)) {
            return;
        }
        const bool found =
            word.text.find('/') != std::string::npos ? checkFile(word.text, true) : checkCommand(word);
        if (found && isInterpreter(word.text)) {
            const Word script = nextWord(command);
            if (script.plain && !script.text.empty() && script.text.front() != '-') {
                checkFile(script.text, false);
            }
        }
    }

  private:
    bool checkCommand(const Word& word) {
        if (word.written.find('\\') != std::string::npos) {
            report(shown(word.written) + ": the command interpreter takes each '\\' away and looks for " +
                   shown(word.text) + "; write '/'");
            return false;
        }
        if (!isOnPath(word.text)) {
            report("there is no command " + shown(word.text) + " on the PATH of this process");
            return false;
        }
        return true;
    }

    bool checkFile(const std::string& path, bool execute) {
        std::error_code error;
        if (!fs::exists(path, error)) {
            report("there is no script " + shown(path), path);
        } else if (!fs::is_regular_file(path, error)) {
            report("the script " + shown(path) + " is no regular file", path);
        } else if (execute ? !platform::mayExecute(path) : !platform::mayRead(path)) {
            report("the script " + shown(path) + (execute ? " is not executable" : " may not be read"), path);
        } else {
            return true;
        }
        return false;
    }

    void report(const std::string& text, const std::string& path = {}) {
        Finding& finding = in_.error(position_, "script", text);
        if (!path.empty() && isRelative(path)) {
            finding.notes.push_back(
                {position_, shown(path) + " is relative to the agent's working directory; from here it is " +
                                shown(fromHere(path).string())});
        }
    }

    const Inspection& in_;
    const Position position_;
};

}  // namespace

void checkScript(const Inspection& in) {
    const Element* const script = in.selection[Setting::Script];
    if (script != nullptr && script->first != Element::First::comment) {
        ScriptCheck(in).run();
    }
}

}  // namespace check
