#include "Rows.h"

#include <algorithm>
#include <map>
#include <sstream>
#include <vector>

#include <gtest/gtest.h>

const char* const kConfiguration = R"(<C>
<TunnelMessags><OpenMessage><Message>opened</Message></OpenMessage>
<CloseMessage><Message>closed</Message></CloseMessage></TunnelMessags>
<ListnerSet><RDListner>on</RDListner></ListnerSet>
<RSMResumeStatusFile>state\resume.xml</RSMResumeStatusFile></C>)";
const std::string kStart =
    "0 start data-source state/schedule.xml\n0 start logger config.xml\n"
    "0 start rsm config.xml\n0 start web-service\n";

support::Replay replay(const std::string& scenario, const std::string& zone) {
    const support::Workspace workspace;
    workspace.write("config.xml", kConfiguration);
    const bool hasClock = scenario.starts_with("clock");
    support::Replay result(workspace, (hasClock ? "" : "clock 2026-03-01T10:00:00Z\n") + scenario, zone);
    EXPECT_EQ(result.exitStatus(), 0) << result.printed();
    return result;
}

namespace {

std::vector<std::string> split(const std::string& text, char separator) {
    std::vector<std::string> parts;
    std::istringstream stream(text + separator);
    for (std::string part; std::getline(stream, part, separator);) {
        const std::size_t begin = std::min(part.find_first_not_of(" \n"), part.size());
        parts.push_back(part.substr(begin, part.find_last_not_of(" \n") + 1 - begin));
    }
    return parts;
}

/// A state file's text from words behind "ordered" or "saved".
std::string recordOf(const std::vector<std::string>& words, std::size_t first) {
    const bool isOrder = words[first - 1] == "ordered";
    if (words.size() != first + 4) {
        return words.size() > first ? words[first] : "";
    }
    const std::string date = "</RSMStartDate><RSMStartTime>";
    const std::string tail = "<PollingRate>" + words[first + 2] + "</PollingRate><GracePeriod>" +
                             words[first + 3] + "</GracePeriod>";
    return isOrder ? "<RSMExecuteCommand><RSMStartDate>2026:03:01" + date + words[first] +
                         "</RSMStartTime><RSMEndDate>2026:03:01</RSMEndDate><RSMEndTime>" + words[first + 1] +
                         "</RSMEndTime>" + tail + "</RSMExecuteCommand>"
                   : "<ResumeRSM><RSMStartDate>" + words[first] + date + words[first + 1] +
                         "</RSMStartTime>" + tail + "</ResumeRSM>";
}

std::string scenarioOf(const std::string& actions) {
    std::string scenario = actions.starts_with("0 ") ? "" : kStart;
    for (const std::string& action : split(actions, ';')) {
        const auto words = split(action, ' ');
        const std::string verb = words.size() > 1 ? words[1] : "";
        std::string line = action;
        if (verb == "schedule") {
            line = words[0] + " command ScheduleRSM RSMStartDate=2026:03:01 RSMStartTime=" + words.at(2) +
                   " PollingRate=" + words.at(3) + " GracePeriod=" + words.at(4);
        } else if (verb == "again") {
            line = words[0] + " start data-source state/schedule.xml\n+0 start rsm config.xml";
        } else if (verb == "ordered") {
            line = words[0] + " write state/schedule.xml \"" + recordOf(words, 2) + "\"";
        } else if (verb == "saved") {
            line = words[0] + " write state/resume.xml \"" + recordOf(words, 2) + "\"";
        } else if (verb.starts_with("show-")) {
            line = words[0] + " show state/" + (verb == "show-order" ? "schedule" : "resume") + ".xml";
        }
        scenario += line + "\n";
    }
    return scenario;
}

std::string pieceOf(const std::string& text) {
    const auto words = split(text, ' ');
    if (words[0] == "ordered" || words[0] == "saved") {
        return ",\"text\":\"" + recordOf(words, 1) + "\"}";
    }
    if (words[0] == "passed") {
        return R"("result":0,"answer":[["CommandResult","Pass"],["RSMStartDate",")" + words.at(1) +
               R"("],["RSMStartTime",")" + words.at(2) + R"( GMT"],["PollingRate",")" + words.at(3) +
               R"("],["GracePeriod",")" + words.at(4) + "\"]]}";
    }
    if (words[0] != "failed") {
        return text;
    }
    static const std::map<std::string, std::string> messages = {
        {"RSMStartDate", "Date should be in YYYY:MM:DD format. e.g. 2007:09:30"},
        {"RSMStartTime", "Time should be in HH:MM:Sec format. e.g. 05:06:00"},
        {"PollingRate", "Polling Rate should be positive integer greater than 0."},
        {"GracePeriod", "Grace Period should be positive integer greater than 0."},
    };
    std::string piece = R"("result":1,"answer":[["CommandResult","Failed"])";
    for (std::size_t i = 1; i < words.size(); ++i) {
        piece += ",[\"" + words[i] + "\",\"" + messages.at(words[i]) + "\"]";
    }
    return piece + "]}";
}

void check(const std::vector<std::string>& row) {
    const std::string megabytes(2U << 20U, '<');
    const support::Replay result = replay(support::replaced(scenarioOf(row.at(1)), "MEGABYTES", megabytes));
    EXPECT_EQ(result.polls(), row.at(2));
    EXPECT_EQ(result.modes(), row.at(3));
    std::size_t position = 0;
    for (std::size_t i = 4; i < row.size(); ++i) {
        if (row[i].starts_with('!')) {
            EXPECT_EQ(result.bytes().find(row[i].substr(1)), std::string::npos) << row[i];
            continue;
        }
        const std::string piece = pieceOf(row[i]);
        const std::size_t found = result.bytes().find(piece, position);
        if (found == std::string::npos) {
            ADD_FAILURE() << "missing: " << piece << "\n" << result.bytes();
            return;
        }
        position = found + piece.size();
    }
}

}  // namespace

void checkRow(const std::string& row) {
    std::string line = row;
    std::replace(line.begin(), line.end(), '\n', ' ');
    const auto parts = split(line, '|');
    SCOPED_TRACE(parts[0]);
    check(parts);
}

Table::Table(const std::string& name, int line, const std::string& rows,
             const std::vector<std::string>& steps, const char* file) {
    std::vector<std::pair<int, std::string>> found;  // with their lines
    for (const std::string& text : split(rows, '\n')) {
        if (text.starts_with('|') || (!found.empty() && found.back().second.ends_with(';'))) {
            found.back().second += " " + text;
        } else if (!text.empty()) {
            found.emplace_back(line, text);
        }
        ++line;
    }
    for (const auto& [at, text] : found) {
        for (const std::string& step : steps) {
            const auto row = split(support::replaced(text, "STEP", step), '|');
            const std::string suffix = step.empty()                                 ? ""
                                       : step.starts_with('-')                      ? " back " + step
                                       : step.front() >= '0' && step.front() <= '9' ? " forward " + step
                                                                                    : " " + step;
            support::registerRow(name, {row[0] + suffix, file, at}, [row] { check(row); });
        }
    }
}
