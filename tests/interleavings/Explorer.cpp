#include "Explorer.h"

#include "Turns.h"
#include "lib/Thread.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <deque>
#include <sstream>
#include <vector>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

/// What a process that plays leaves for the one that explores.
struct Record {
    static constexpr std::size_t kMostChoices = 100000;
    struct Choice {
        std::uint8_t able;
        std::uint8_t intruder;  ///< which of them
        bool counts;            ///< that another one goes on than the first
    };
    std::size_t count;
    Choice choices[kMostChoices];
    char failure[4000];
};

Record& record = *static_cast<Record*>(
    ::mmap(nullptr, sizeof(Record), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
Turns chosen;  // in the process that plays
const char* intruder = nullptr;
bool tells = false;  // of each turn that is given on

std::string textOf(const Turns& turns) {
    std::string text;
    for (const auto& [at, which] : turns) {
        text += (text.empty() ? "" : " ") + std::to_string(at) + ":" + std::to_string(which);
    }
    return text;
}

std::size_t choose(const std::vector<const agent::Thread*>& able, bool mayStay) {
    const std::size_t at = record.count++;
    if (at >= Record::kMostChoices) {
        std::fputs("more choices than are kept\n", stderr);
        std::_Exit(EXIT_FAILURE);
    }
    const auto found = std::find_if(able.begin(), able.end(), [](const agent::Thread* thread) {
        return intruder != nullptr && thread->name() == intruder;
    });
    record.choices[at] = {static_cast<std::uint8_t>(able.size()),
                          static_cast<std::uint8_t>(found - able.begin()), mayStay || intruder != nullptr};
    const auto turn = chosen.find(at);
    const std::size_t which = turn == chosen.end() ? 0 : turn->second;
    if (tells && (which != 0 || !mayStay)) {
        std::fprintf(stderr, "%5zu:%zu %s goes on (%s, at %s: %s)\n", at, which,
                     able.at(which)->name().c_str(), mayStay ? "preemption" : "a wait or an end",
                     turns::point, turns::scheduler->whoWaitsWhere().c_str());
    }
    return which;
}

}  // namespace

Turns parseTurns(const std::string& text) {
    Turns turns;
    std::istringstream words(text);
    std::size_t at = 0;
    std::size_t which = 0;
    for (char colon = 0; words >> at >> colon >> which;) {
        turns[at] = which;
    }
    return turns;
}

void Explorer::begin() {
    turns::scheduler->letChoose(choose);
}

void Explorer::end() {
    turns::scheduler->letChoose(nullptr);
}

std::string Explorer::explore(const Play& play) {
    struct Order {
        Turns turns;
        int preemptions;
    };
    std::deque<Order> orders{{only_ == nullptr ? Turns() : *only_, intruder_ == nullptr ? 0 : 1}};
    for (; !orders.empty(); orders.pop_front()) {
        const auto& [turns, preemptions] = orders.front();
        if (const std::string failure = run(turns, play); !failure.empty()) {
            return "--turns='" + textOf(turns) + "': " + failure;
        }
        const std::size_t first = turns.empty() ? 0 : turns.rbegin()->first + 1;
        for (std::size_t at = first; at < record.count && only_ == nullptr; ++at) {
            const Record::Choice& choice = record.choices[at];
            for (std::size_t which = 1; which < choice.able; ++which) {
                const int cost = preemptions + (choice.counts && which != choice.intruder ? 1 : 0);
                if (cost <= preemptions_) {
                    orders.push_back({turns, cost});
                    orders.back().turns[at] = which;
                }
            }
        }
    }
    return {};
}

std::string Explorer::run(const Turns& turns, const Play& play) {
    constexpr unsigned int kPatience = 30;  // seconds, of a process that goes round in circles
    ++runs_;
    record.count = 0;
    record.failure[0] = '\0';
    std::fflush(nullptr);
    const pid_t child = ::fork();
    if (child == 0) {
        ::alarm(kPatience);
        ::dup2(::open("/dev/null", O_WRONLY | O_CLOEXEC), STDOUT_FILENO);
        chosen = turns;
        intruder = intruder_;
        tells = only_ != nullptr;
        [&]() noexcept { std::strncpy(record.failure, play().c_str(), sizeof record.failure - 1); }();
        std::_Exit(EXIT_SUCCESS);
    }
    int status = -1;
    if (::waitpid(child, &status, 0) != child || status != EXIT_SUCCESS) {
        return WIFSIGNALED(status) ? std::string("ended by ") + strsignal(WTERMSIG(status))
                                   : "ended with " + std::to_string(WEXITSTATUS(status));
    }
    return record.failure;
}
