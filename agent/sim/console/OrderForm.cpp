#include "sim/console/OrderForm.h"

#include "sim/scenario/Words.h"

#include <map>
#include <nlohmann/json.hpp>
#include <regex>
#include <stdexcept>

namespace sim {

namespace {

using nlohmann::json;

/// A value that a form is sent with, and the word of the line that it goes into.
struct Field {
    enum class Kind {
        number,  ///< a whole one, also in a text as forms have it
        text,
        optionalText,  ///< left out when it is empty or not there
    };

    const char* name;
    Kind kind;
    std::string before = {};  ///< the value, in its word
};

/// The verb and its arguments, by the form's name.
const std::map<std::string, std::pair<std::string, std::vector<Field>>>& forms() {
    using enum Field::Kind;
    static const std::map<std::string, std::pair<std::string, std::vector<Field>>> all = {
        {"connect", {"connect", {{"minutes", number}, {"seconds", number}}}},
        {"disconnect", {"disconnect", {{"member", optionalText}}}},
        {"schedule",
         {"command ScheduleRSM",
          {{"date", optionalText, "RSMStartDate="},
           {"time", optionalText, "RSMStartTime="},
           {"seconds", number, "PollingRate="},
           {"minutes", number, "GracePeriod="}}}},
        {"exit", {"command ExitRSM", {}}},
        {"audit", {"audit", {{"text", text}}}},
        {"log", {"log", {{"level", text}, {"text", text}}}},
        {"enterprise", {"enterprise", {{"answer", text}}}},
        {"kill", {"unload", {}}},
        {"restart", {}},
    };
    return all;
}

std::string wordOf(const Field& field, const json& value) {
    const std::string text = value.is_string() ? value.get<std::string>() : value.dump();
    const auto fault = [&](const char* what) {
        return std::runtime_error("'" + std::string(field.name) + "' " + what);
    };
    if (field.kind == Field::Kind::number) {
        static const std::regex kWhole("-?[0-9]{1,10}");
        return std::regex_match(text, kWhole) ? field.before + text : throw fault("must be a whole number");
    }
    if (!value.is_string()) {
        throw fault("must be a text");
    }
    return text.find('\0') == std::string::npos ? inQuotes(field.before + text)
                                                : throw fault("holds a zero byte");
}

}  // namespace

bool isForm(const std::string& name) {
    return forms().contains(name);
}

std::vector<std::string> linesOfForm(const std::string& name, std::string_view text,
                                     const std::vector<std::string>& starts) {
    json values = text.empty() ? json::object() : json::parse(text, nullptr, false);
    if (!values.is_object()) {
        throw std::runtime_error("the body is not a JSON object");
    }
    if (name == "restart") {
        if (starts.empty()) {
            throw std::runtime_error("nothing was started that could be started again");
        }
        return starts;
    }
    auto [line, fields] = forms().at(name);
    for (const Field& field : fields) {
        const json& value = values[field.name];
        if (field.kind != Field::Kind::optionalText || (!value.is_null() && value != json(""))) {
            line += " " + wordOf(field, value);
        }
    }
    return {line};
}

}  // namespace sim
