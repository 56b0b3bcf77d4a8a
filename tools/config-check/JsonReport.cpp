#include "Reports.h"

#include <nlohmann/json.hpp>

namespace check {
namespace {

using Json = nlohmann::ordered_json;

Json placed(Position position) {
    Json place = Json::object();
    if (position.line != 0) {
        place["line"] = position.line;
        place["column"] = position.column;
    }
    return place;
}

Json findingsOf(const Result& result) {
    Json findings = Json::array();
    for (const Finding& finding : result.findings.all()) {
        Json one = placed(finding.position);
        one["severity"] = finding.severity == Severity::error ? "error" : "warning";
        one["kind"] = finding.kind;
        one["text"] = finding.text;
        one["notes"] = Json::array();
        for (const Note& note : finding.notes) {
            Json added = placed(note.position);
            added["text"] = note.text;
            one["notes"].push_back(std::move(added));
        }
        findings.push_back(std::move(one));
    }
    return findings;
}

Json valueOf(const Value& value) {
    Json one;
    one["value"] = value.text;
    one["origin"] = value.origin ? placed(*value.origin) : Json("default");
    return one;
}

Json settingsOf(const Result& result) {
    Json settings = Json::array();
    for (const SettingInForce& setting : result.settings) {
        Json one;
        one["name"] = setting.name;
        if (setting.list) {
            one["values"] = Json::array();
            for (const Value& value : setting.values) {
                one["values"].push_back(valueOf(value));
            }
        } else {
            one.update(valueOf(setting.values.front()));
        }
        if (!setting.meaning.empty()) {
            one["meaning"] = setting.meaning;
        }
        settings.push_back(std::move(one));
    }
    return settings;
}

}  // namespace

void printJson(std::ostream& out, const std::vector<Result>& results, bool quiet) {
    Json files = Json::array();
    for (const Result& result : results) {
        Json one;
        one["file"] = result.file;
        if (!result.unreadable.empty()) {
            one["unreadable"] = result.unreadable;
        } else {
            one["accepted"] = result.accepted;
            one["findings"] = findingsOf(result);
            if (!quiet && result.accepted) {
                one["settings"] = settingsOf(result);
            }
        }
        files.push_back(std::move(one));
    }
    // Paths and texts are in whatever character set the system has; JSON is UTF-8.
    out << Json{{"files", std::move(files)}}.dump(2, ' ', false, Json::error_handler_t::replace) << "\n";
}

}  // namespace check
