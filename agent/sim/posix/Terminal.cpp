#include "sim/input/Terminal.h"

#include "sim/scenario/Verbs.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <editline/readline.h>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

namespace sim {

namespace {

constexpr const char* kPrompt = "rsm> ";

// The editing library calls plain functions, which find nothing but globals.
std::deque<std::string>* receiver = nullptr;
bool inputOver = false;
std::vector<std::string> candidates;

void takeLine(char* line) {
    if (line == nullptr) {
        inputOver = true;
        return;
    }
    if (*line != '\0') {
        add_history(line);
    }
    receiver->emplace_back(line);
    std::free(line);  // NOLINT(cppcoreguidelines-no-malloc): the library's
}

/// What may stand behind `before` (words, and a blank if there are any).
std::vector<std::string> wordsAfter(const std::string& before) {
    std::vector<std::string> lines = {"help", "quit"};
    for (const Verb& verb : verbs()) {
        lines.emplace_back(verb.words);
        lines.push_back("help " + lines.back());
        const std::string first(verb.form.substr(0, verb.form.find(' ')));
        for (std::size_t at = 0; first.find('|') != std::string::npos && at < first.size();) {
            const std::size_t end = std::min(first.find('|', at), first.size());
            lines.push_back(std::string(verb.words) + " " + first.substr(at, end - at));
            at = end + 1;
        }
    }
    std::vector<std::string> words;
    for (const std::string& line : lines) {
        if (line.starts_with(before)) {
            words.push_back(line.substr(before.size(), line.find(' ', before.size()) - before.size()));
        }
    }
    std::sort(words.begin(), words.end());
    words.erase(std::unique(words.begin(), words.end()), words.end());
    return words;
}

char* nextCandidate(const char* text, int state) {
    static std::size_t next;
    next = state == 0 ? 0 : next;
    while (next < candidates.size()) {
        const std::string& candidate = candidates[next++];
        if (candidate.starts_with(text)) {
            return ::strdup(candidate.c_str());
        }
    }
    return nullptr;
}

/// Null lets the library try the names of files.
char** complete(const char* text, int start, int /*end*/) {
    candidates = wordsAfter(std::string(rl_line_buffer, static_cast<std::size_t>(start)));
    return candidates.empty() ? nullptr : rl_completion_matches(text, nextCandidate);
}

}  // namespace

std::unique_ptr<Terminal> Terminal::open() {
    if (::isatty(STDIN_FILENO) == 0 || ::isatty(STDOUT_FILENO) == 0) {
        return nullptr;
    }
    const int descriptor = ::fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    std::FILE* output = descriptor < 0 ? nullptr : ::fdopen(descriptor, "w");
    return output == nullptr ? nullptr : std::unique_ptr<Terminal>(new Terminal(output));
}

Terminal::Terminal(std::FILE* output) : output_(output) {
    rl_catch_signals = 0;  // They are the input's; and two threads in the library's handlers jump to nowhere.
    rl_instream = stdin;
    rl_outstream = output_;
    rl_readline_name = "krx-agent-sim";
    rl_attempted_completion_function = complete;
    rl_initialize();
    rl_callback_handler_install(kPrompt, takeLine);
    shown_ = true;
}

Terminal::~Terminal() {
    close();
    std::fclose(output_);
}

void Terminal::close() {
    if (shown_) {
        shown_ = false;
        rl_callback_handler_remove();
        std::fputs("\r\033[K", output_);
        std::fflush(output_);
    }
}

bool Terminal::clearLine() {
    if (!shown_ || rl_end == 0) {
        return false;
    }
    std::fputs("^C\r\n", output_);
    rl_callback_handler_remove();
    rl_callback_handler_install(kPrompt, takeLine);
    rl_end = 0;
    return true;
}

bool Terminal::read(std::deque<std::string>& lines) {
    const std::size_t before = lines.size();
    receiver = &lines;
    rl_resize_terminal();
    rl_end =
        0;  // The library sets it to the line's length unless that is 0, and leaves it so behind a line's end.
    rl_callback_read_char();
    if (lines.size() > before) {
        rl_end = 0;
        // A finished line leaves the terminal as it was found.
        rl_callback_handler_install(kPrompt, takeLine);
    }
    if (inputOver) {
        close();
        std::fputs(
            "Nothing more is read. The session goes on until all that runs is over, or until Ctrl-C.\n",
            output_);
        std::fflush(output_);
    }
    return !inputOver;
}

Terminal::Hidden::Hidden(Terminal* terminal)
    : terminal_(terminal != nullptr && terminal->shown_ ? terminal : nullptr) {
    if (terminal_ != nullptr) {
        std::fputs("\r\033[K", terminal_->output_);
        std::fflush(terminal_->output_);
    }
}

Terminal::Hidden::~Hidden() {
    if (terminal_ != nullptr) {
        rl_resize_terminal();
        rl_forced_update_display();
        std::fflush(terminal_->output_);
    }
}

}  // namespace sim
