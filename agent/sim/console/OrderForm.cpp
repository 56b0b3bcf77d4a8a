#include "sim/console/OrderForm.h"

#include "sim/Verbs.h"
#include "sim/Words.h"

#include <map>
#include <nlohmann/json.hpp>
#include <stdexcept>

namespace sim {

namespace {

/// The values that a form was sent with.
class Values final {
  public:
    explicit Values(std::string_view json) {
        if (!json.empty()) {
            values_ = nlohmann::json::parse(json, nullptr, false);
        }
        if (!values_.is_object()) {
            throw std::runtime_error("the body is no JSON object");
        }
    }

    /// Whether there is a value; an empty field of a form has none.
    bool has(const char* name) const {
        const auto found = values_.find(name);
        return found != values_.end() && *found != nlohmann::json("");
    }

    std::string text(const char* name) const {
        const auto found = values_.find(name);
        if (found == values_.end() || !found->is_string()) {
            throw std::runtime_error("'" + std::string(name) + "' must be a text");
        }
        auto value = found->get<std::string>();
        if (value.find('\0') != std::string::npos) {
            throw std::runtime_error("'" + std::string(name) + "' holds a zero byte");
        }
        return value;
    }

    /// A whole number, also one in a text as forms have it.
    std::string number(const char* name) const {
        const auto found = values_.find(name);
        std::string value;
        if (found != values_.end()) {
            value = found->is_string() ? found->get<std::string>() : found->dump();
        }
        const std::size_t start = value.starts_with('-') ? 1 : 0;
        if (value.size() == start || value.size() > 10 ||
            value.find_first_not_of("0123456789", start) != std::string::npos) {
            throw std::runtime_error("'" + std::string(name) + "' must be a whole number");
        }
        return value;
    }

  private:
    nlohmann::json values_ = nlohmann::json::object();
};

using Lines = std::vector<std::string>;

Lines connect(const Values& values, const Lines& /*starts*/) {
    return {"connect " + values.number("minutes") + " " + values.number("seconds")};
}

Lines disconnect(const Values& values, const Lines& /*starts*/) {
    return {values.has("member") ? "disconnect " + inQuotes(values.text("member")) : "disconnect"};
}

Lines schedule(const Values& values, const Lines& /*starts*/) {
    std::string line = "command ScheduleRSM";
    if (values.has("date") || values.has("time")) {
        line += " " + inQuotes("RSMStartDate=" + values.text("date")) + " " +
                inQuotes("RSMStartTime=" + values.text("time"));
    }
    return {line + " PollingRate=" + values.number("seconds") + " GracePeriod=" + values.number("minutes")};
}

Lines exit(const Values& /*values*/, const Lines& /*starts*/) {
    return {"command ExitRSM"};
}

Lines audit(const Values& values, const Lines& /*starts*/) {
    return {"audit " + inQuotes(values.text("text"))};
}

Lines log(const Values& values, const Lines& /*starts*/) {
    const std::string level = values.text("level");
    if (!parseLevel(level)) {
        throw std::runtime_error("'" + level + "' is no level");
    }
    return {"log " + inQuotes(level) + " " + inQuotes(values.text("text"))};
}

Lines enterprise(const Values& values, const Lines& /*starts*/) {
    const std::string answer = values.text("answer");
    if (answer != "accept" && answer != "refuse") {
        throw std::runtime_error("'answer' must be accept or refuse");
    }
    return {"enterprise " + answer};
}

Lines kill(const Values& /*values*/, const Lines& /*starts*/) {
    return {"unload"};
}

Lines restart(const Values& /*values*/, const Lines& starts) {
    if (starts.empty()) {
        throw std::runtime_error("nothing was started that could be started again");
    }
    return starts;
}

const std::map<std::string, Lines (*)(const Values&, const Lines&)>& forms() {
    static const std::map<std::string, Lines (*)(const Values&, const Lines&)> all = {
        {"connect", connect},       {"disconnect", disconnect},
        {"schedule", schedule},     {"exit", exit},
        {"audit", audit},           {"log", log},
        {"enterprise", enterprise}, {"kill", kill},
        {"restart", restart}};
    return all;
}

}  // namespace

bool isForm(const std::string& name) {
    return forms().contains(name);
}

std::vector<std::string> linesOfForm(const std::string& name, std::string_view json,
                                     const std::vector<std::string>& starts) {
    return forms().at(name)(Values(json), starts);
}

}  // namespace sim
