#include "sim/Simulation.h"

#include "sim/host/SimulatedAgent.h"
#include "sim/input/Input.h"
#include "sim/input/OrderQueue.h"
#include "sim/input/Terminal.h"
#include "sim/time/Clock.h"
#include "sim/time/Scheduler.h"
#include "sim/trace/TraceFile.h"

#include <algorithm>
#include <chrono>
#include <iostream>
#include <stdexcept>

namespace sim {

namespace {

/// How long threads may go on after the last action.
constexpr Instant kAftermath = std::chrono::hours(24);

/// The verbs that begin so, with their forms.
std::string helpText(const std::string& beginning) {
    std::string text;
    const auto add = [&](const std::string& use, std::string_view about) {
        constexpr std::size_t kColumn = 50;
        if (use.starts_with(beginning)) {
            text.append("  ").append(use).append(kColumn - std::min(use.size(), kColumn - 2), ' ');
            text.append(about).append("\n");
        }
    };
    for (const Verb& verb : verbs()) {
        add(usage(verb), verb.about);
    }
    add("help [VERB]", "what can be typed");
    add("quit", "ends the session");
    return text.empty() ? "  no verb begins with '" + beginning + "'\n" : text;
}

}  // namespace

bool Simulation::run() {
    auto next = scenario_.actions.begin();
    const auto end = scenario_.actions.end();
    Instant limit = kAftermath;
    while (input_ == nullptr || !input_->stopRequested()) {
        const bool isTyped = input_ != nullptr && input_->hasLine();
        if (isTyped || (orders_ != nullptr && orders_->hasOrder())) {
            if (!isTyped) {
                orders_->perform(
                    [this](const std::string& line) { agent_.perform(parseAction(splitWords(line))); });
            } else if (!performTyped(input_->takeLine())) {
                break;
            }
            scheduler_.idle(clock_.now(), false);
            limit = clock_.now() + kAftermath;
            continue;
        }
        const bool moreMayCome = next != end || inputIsOpen();
        const Instant due = next != end ? next->time : moreMayCome ? kNever : limit;
        const Scheduler::Wake wake = scheduler_.idle(due, !moreMayCome);
        trace_.check();
        if (wake == Scheduler::Wake::interrupted) {
            continue;
        }
        if (next == end || next->isEnd()) {
            break;
        }
        perform(*next++);
        limit = clock_.now() + kAftermath;
    }
    trace_.flush();
    trace_.check();
    return !typedLineFailed_;
}

bool Simulation::performTyped(const std::string& text) {
    ++typedLines_;
    try {
        const std::vector<Word> words = splitWords(text);
        if (words.empty()) {
            return true;
        }
        if (words.front().text == "help") {
            trace_.tell(helpText(joined({words.begin() + 1, words.end()})));
            return true;
        }
        if (words.front().text == "quit") {
            return false;
        }
        const Action action = parseAction(words);
        if (action.isEnd()) {
            return false;
        }
        agent_.perform(action);
    } catch (const std::runtime_error& error) {
        typedLineFailed_ = true;
        const Terminal::Hidden hidden(input_->terminal());
        std::cerr << located("<stdin>", typedLines_, error.what()) << std::endl;
    }
    return true;
}

void Simulation::perform(const Action& action) {
    try {
        agent_.perform(action);
    } catch (const std::runtime_error& error) {
        throw std::runtime_error(located(action.source, action.line, error.what()));
    }
}

bool Simulation::inputIsOpen() const {
    return orders_ != nullptr || (input_ != nullptr && input_->isOpen());
}

}  // namespace sim
