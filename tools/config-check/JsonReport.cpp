#include "FileCheck.h"

#include <nlohmann/json.hpp>

namespace check {

using Json = nlohmann::ordered_json;

static Json placed(Position position) {
    return position.line == 0 ? Json::object() : Json{{"line", position.line}, {"column", position.column}};
}

static void to_json(Json& json, const Note& note) {
    json = placed(note.position);
    json["text"] = note.text;
}

static void to_json(Json& json, const Finding& finding) {
    json = placed(finding.position);
    json["severity"] = finding.severity == Severity::error ? "error" : "warning";
    json["kind"] = finding.kind;
    json["text"] = finding.text;
    json["notes"] = finding.notes;
}

static void to_json(Json& json, const Value& value) {
    json = {{"value", value.text}, {"origin", value.origin ? placed(*value.origin) : Json("default")}};
}

static void to_json(Json& json, const SettingInForce& setting) {
    json["name"] = setting.name;
    if (setting.list) {
        json["values"] = setting.values;
    } else {
        json.update(Json(setting.values.front()));
    }
    if (!setting.meaning.empty()) {
        json["meaning"] = setting.meaning;
    }
}

void printJson(std::ostream& out, const std::vector<Result>& results, bool quiet) {
    Json files = Json::array();
    for (const Result& result : results) {
        Json& one = files.emplace_back();
        one["file"] = result.file;
        if (!result.unreadable.empty()) {
            one["unreadable"] = result.unreadable;
            continue;
        }
        one["accepted"] = result.accepted;
        one["findings"] = result.findings.all();
        if (!quiet && result.accepted) {
            one["settings"] = result.settings;
        }
    }
    // Paths and texts are in whatever character set the system has, with whatever a terminal would act upon.
    out << Json{{"files", std::move(files)}}.dump(2, ' ', true, Json::error_handler_t::replace) << "\n";
}

}  // namespace check
