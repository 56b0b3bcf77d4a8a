// The rules that a configuration is held against, a family a file.
#pragma once

#include "FileCheck.h"
#include "KnownElements.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace check {

using config::Element;
using config::Setting;

template <typename... Parts>
std::string joined(const Parts&... parts) {
    std::string text;
    (text += ... += parts);
    return text;
}

/// A configuration that the module accepts, under the rules.
struct Inspection {
    const std::string& file;
    const config::Document& document;
    const std::optional<std::string>& schedule;  ///< path of the schedule file, when it was told
    Findings& findings;
    const config::TakenSettings taken;
    const config::Settings& settings;
    std::unordered_map<const Element*, Tag> looked;  ///< all elements that are looked at, sections too

    Inspection(const std::string& path, const config::Document& read,
               const std::optional<std::string>& schedulePath, Findings& target);

    const Element& root() const { return document.elements.front(); }
    const Element* originOf(Setting setting) const { return taken.originOf(setting); }
    /// The first place from a byte of an element on that is neither a blank nor a line break.
    Position afterBlanks(const Element& element, std::size_t byte) const;
    Position textPositionOf(const Element& element) const { return afterBlanks(element, element.end); }
    /// The place of a setting's element; without one, that of `otherwise`.
    Position tagOf(Setting setting, Position otherwise) const;
    bool detects() const { return settings.rdListner || settings.tunnelListner; }

    /// The text of a finding is given in pieces.
    template <typename... Parts>
    Finding& report(Severity severity, Position position, const char* kind, const Parts&... parts) const {
        return findings.add({severity, position, kind, joined(parts...), {}});
    }
    template <typename... Parts>
    Finding& error(const Parts&... parts) const {
        return report(Severity::error, parts...);
    }
    template <typename... Parts>
    Finding& warning(const Parts&... parts) const {
        return report(Severity::warning, parts...);
    }
    /// An error of a path, with a note of where a relative one leads.
    void pathError(Position position, const char* kind, const std::string& text,
                   const std::string& path) const;
};

/// The findings about a document that the module refuses.
Finding refusal(const config::Document& document);

void checkStructure(const Inspection& inspection);  ///< names, places, repetitions, attributes
void checkTexts(const Inspection& inspection);      ///< what the module takes for each text
void checkListeners(const Inspection& inspection);  ///< listeners with what they need, and the reverse
void checkPaths(const Inspection& inspection);      ///< the files that the module is to read and write
void checkScript(const Inspection& inspection);     ///< the modality script

/// What the module works with, in the order of its table.
std::vector<SettingInForce> settingsInForce(const Inspection& inspection);

/// Takes the first character off a text: as a code where it is a control character or not a character at all.
std::string takeVisible(std::string_view& text);
std::string visible(std::string_view text);
/// A text for a message: visible, in quotes, a long one cut.
std::string shown(std::string_view text);
/// True when a word is among those of a list, which has a blank before and behind each.
bool isOneOf(std::string_view list, std::string_view word);

/// The name of a level of the log, empty for the default.
std::string_view nameOfLevel(std::int32_t number);
/// True when it is the name of a level.
bool isLevel(std::string_view name);

/// The system's spelling: the module's paths may be written with backslashes.
std::filesystem::path nativePath(const std::string& path);
/// Where a path leads from the working directory of this process, without "." and "..".
std::filesystem::path fromHere(const std::string& path);

}  // namespace check
