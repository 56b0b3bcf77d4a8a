#include "support/Replay.h"

#include "support/Program.h"

#include <cmath>
#include <sstream>

namespace support {
namespace {

std::string shortTime(const nlohmann::json& event) {
    std::ostringstream text;
    text << event.at("t").get<double>();
    return text.str();
}

}  // namespace

Replay::Replay(const Workspace& workspace, const std::string& scenario, const std::string& zone,
               const std::string& options) {
    workspace.write("test.scenario", scenario);
    const Run run =
        runProgram(workspace, KRX_AGENT_SIM, "replay test.scenario --trace test.trace " + options, zone);
    exitStatus_ = run.status;
    printed_ = run.printed;
    bytes_ = workspace.read("test.trace");
    std::istringstream lines(bytes_);
    for (std::string line; std::getline(lines, line);) {
        events_.push_back(nlohmann::json::parse(line));
    }
}

std::vector<nlohmann::json> Replay::all(const std::string& event) const {
    std::vector<nlohmann::json> found;
    for (const auto& one : events_) {
        if (one.at("event") == event) {
            found.push_back(one);
        }
    }
    return found;
}

std::string Replay::times(const std::string& event) const {
    std::string text;
    for (const auto& one : all(event)) {
        text += (text.empty() ? "" : " ") + shortTime(one);
    }
    return text;
}

std::string Replay::polls() const {
    const auto found = all("force-poll");
    const auto gap = [&](std::size_t i) {
        return found[i + 1].at("t").get<double>() - found[i].at("t").get<double>();
    };
    std::ostringstream text;
    for (std::size_t first = 0; first < found.size(); ++first) {
        text << (first == 0 ? "" : " ") << shortTime(found[first]);
        std::size_t last = first;
        while (last + 1 < found.size() && std::abs(gap(last) - gap(first)) < 0.001) {
            ++last;
        }
        if (last > first + 1) {
            text << ".." << shortTime(found[last]) << "/" << gap(first);
            first = last;
        }
    }
    return text.str();
}

std::string Replay::modes() const {
    std::string text;
    for (const auto& one : all("update-asset")) {
        const std::string mode = property(one, "RSM_MODE");
        text += (text.empty() ? "" : ", ") + shortTime(one) +
                (mode == "NOT_ACTIVE"            ? " off"
                 : mode == "FORCE_POLL_GRACE"    ? " grace"
                 : mode == "FORCE_POLL_ACTIVITY" ? " activity"
                                                 : " " + mode);
    }
    return text;
}

nlohmann::json Replay::call(const std::string& verb, std::size_t index) const {
    for (const auto& one : all("call")) {
        if (one.at("verb") == verb && index-- == 0) {
            return one;
        }
    }
    return nullptr;
}

int Replay::countLogged(int level, const std::string& text) const {
    int count = 0;
    for (const auto& one : all("log")) {
        count += one.at("level") == level && one.at("text") == text ? 1 : 0;
    }
    return count;
}

std::string Replay::standardOutput() const {
    std::string text;
    for (const auto& one : all("stdout")) {
        text += one.at("text").get<std::string>();
    }
    return text;
}

nlohmann::json Replay::shown(const std::string& path) const {
    nlohmann::json text;
    for (const auto& one : all("file")) {
        if (one.at("path") == path) {
            text = one.at("text");
        }
    }
    return text;
}

std::string property(const nlohmann::json& update, const std::string& name) {
    for (const auto& pair : update.at("properties")) {
        if (pair.at(0) == name) {
            return pair.at(1).get<std::string>();
        }
    }
    return {};
}

}  // namespace support
