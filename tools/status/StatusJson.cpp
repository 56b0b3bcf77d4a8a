#include "status/StatusJson.h"

#include "status/Moment.h"

namespace status {

namespace {

using nlohmann::ordered_json;

const char* startName(StateFiles::Start start) {
    switch (start) {
        case StateFiles::Start::resumes:
            return "resumes";
        case StateFiles::Start::joinsSchedule:
            return "goes on with the schedule";
        case StateFiles::Start::waits:
            return "waits for the schedule";
        case StateFiles::Start::unknown:
            return "cannot be told";
        case StateFiles::Start::nothing:
            break;
    }
    return "nothing";
}

}  // namespace

ordered_json momentJson(std::int64_t moment) {
    return {{"gmt", gmtText(moment)}, {"local", localText(moment)}};
}

ordered_json foundJson(const FoundFile& file) {
    return {{"file", file.path},
            {"state", kFileStates.at(static_cast<std::size_t>(file.state))},
            {"problem", file.isFaulty() ? ordered_json(file.problem()) : ordered_json(nullptr)}};
}

ordered_json stateFilesJson(const StateFiles& files, std::int64_t now) {
    ordered_json resume = foundJson(files.resume);
    resume["record"] = nullptr;
    if (files.resume.isRecord()) {
        resume["record"] = {{"began", momentJson(files.resume.began)},
                            {"minutes", files.resume.minutes},
                            {"rate", files.resume.rate},
                            {"minutes_left", files.resume.minutesLeft},
                            {"resumes", files.resume.isOpen}};
    }
    ordered_json schedule = foundJson(files.schedule);
    schedule["record"] = nullptr;
    if (files.schedule.isRecord()) {
        schedule["record"] = {{"start", momentJson(files.schedule.start)},
                              {"end", momentJson(files.schedule.end)},
                              {"minutes", files.schedule.minutes},
                              {"rate", files.schedule.rate},
                              {"current", files.schedule.isCurrent}};
    }
    return {{"start_now", {{"does", startName(files.start(now))}, {"sentence", files.startText(now)}}},
            {"resume", resume},
            {"schedule", schedule}};
}

std::string dumped(const ordered_json& json) {
    return json.dump(2, ' ', false, ordered_json::error_handler_t::replace) + "\n";
}

}  // namespace status
