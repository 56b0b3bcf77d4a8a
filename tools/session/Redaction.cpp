#include "session/Redaction.h"

#include "session/LogSession.h"
#include "session/SessionRecord.h"

#include <cctype>
#include <nlohmann/json.hpp>
#include <regex>
#include <set>
#include <string>
#include <string_view>

namespace session {

namespace {

using nlohmann::ordered_json;

constexpr char kLeftOut[] = "(left out)";
// What a host hands over as a message: its level is not part of the text.
const std::regex& messageCall() {
    static const std::regex pattern("^(audit|log \\S+) ([^]*)$");
    return pattern;
}

class Redaction final {
  public:
    explicit Redaction(const SessionRecord& record) : record_(record) {}

    void look(const ordered_json& event) {
        static const std::regex kMember("^disconnect ([^]*)");
        static const std::regex kValue("\\w*(?:member|operator|user)\\w*=(.*?)(?=\\s+\\w+=|$)",
                                       std::regex::icase);
        static const std::regex kWho("\\bby\\s+(\\S+)");
        const std::string verb = event.value("verb", "");
        if (event.value("event", "") == "credentials") {
            names_.insert(event.value("member", ""));
        }
        std::smatch found;
        const bool isMessage = std::regex_match(verb, found, messageCall());
        if (isMessage) {
            messages_.insert(found[2]);
        }
        for (const std::regex* pattern : {&kMember, isMessage ? &kWho : &kValue}) {
            const std::sregex_iterator end;
            for (std::sregex_iterator at(verb.begin(), verb.end(), *pattern); at != end; ++at) {
                names_.insert((*at)[1]);
            }
        }
    }

    std::string withoutNames(const std::string& body) const {
        ordered_json event = ordered_json::parse(body);
        const bool isEntry = event.value("thread", "") == "log" && event.value("event", "") == "log";
        if (isEntry && !isModuleLine(event.value("text", ""))) {
            event["text"] = shortened(event.value("text", ""));
        }
        for (const auto& [member, value] : event.items()) {
            if (member != "event" && member != "thread") {
                change(value);
            }
        }
        return event.dump();
    }

  private:
    std::string shortened(const std::string& message) const {
        const std::string known = record_.knownPart(message);
        return (known.empty() ? "" : known + " ") + kLeftOut;
    }
    void change(ordered_json& value) const {
        if (value.is_string()) {
            value = changed(value.get<std::string>());
        } else if (value.is_structured()) {
            for (ordered_json& part : value) {
                change(part);
            }
        }
    }
    std::string changed(std::string text) const {
        std::smatch found;
        if (std::regex_match(text, found, messageCall())) {
            return found[1].str() + " " + shortened(found[2]);
        }
        for (const std::string& message : messages_) {
            replace(text, message, shortened(message));
        }
        for (const std::string& name : names_) {
            replace(text, name, kLeftOut);
        }
        return text;
    }
    static void replace(std::string& text, const std::string& part, const std::string& other) {
        const auto isInWord = [&text](std::size_t at) {
            return at < text.size() && std::isalnum(static_cast<unsigned char>(text[at])) != 0;
        };
        for (std::size_t at = 0; !part.empty() && (at = text.find(part, at)) != std::string::npos;) {
            const bool isWhole = (at == 0 || !isInWord(at - 1)) && !isInWord(at + part.size());
            text.replace(at, isWhole ? part.size() : 0, isWhole ? other : "");
            at += isWhole ? other.size() : 1;
        }
    }

    using Longest = decltype([](const std::string& one, const std::string& other) {
        return one.size() != other.size() ? one.size() > other.size() : one < other;
    });
    const SessionRecord& record_;
    std::set<std::string, Longest> messages_;
    std::set<std::string, Longest> names_;
};

}  // namespace

void leaveNamesOut(SessionRecord& record) {
    Redaction redaction(record);
    for (const std::string* body : record.data().bodies()) {
        redaction.look(ordered_json::parse(*body));
    }
    record.data().changeBodies(
        [&redaction](const std::string& body) { return redaction.withoutNames(body); });
    record.addNote(
        "Names of members and operators are left out, and with them what else the agent's messages told.");
}

}  // namespace session
