// The rules that a configuration is held against, a family a file.
#pragma once

#include "Finding.h"
#include "KnownElements.h"
#include "Selection.h"

#include <optional>
#include <string>
#include <string_view>

namespace check {

using config::Element;
using config::Setting;

/// A configuration that the module accepts, under the rules.
struct Inspection {
    const std::string& file;
    const config::Document& document;
    const Selection& selection;
    const config::Settings& settings;
    const std::optional<std::string>& schedule;  ///< path of the schedule file, when it was told
    Findings& findings;

    const Element& root() const { return document.elements.front(); }
    /// The first place from a byte of an element on that is neither a blank nor a line break.
    Position afterBlanks(const Element& element, std::size_t byte) const;
    Position textPositionOf(const Element& element) const { return afterBlanks(element, element.end); }
    /// The place of a setting's element; without one, that of `otherwise`.
    Position tagOf(Setting setting, Position otherwise) const;
    bool detects() const { return settings.rdListner || settings.tunnelListner; }

    Finding& error(Position position, const char* kind, std::string text) const {
        return findings.add(Severity::error, position, kind, std::move(text));
    }
    Finding& warning(Position position, const char* kind, std::string text) const {
        return findings.add(Severity::warning, position, kind, std::move(text));
    }
};

/// What is to be said of a document that the module refuses.
Finding refusal(const config::Document& document);

void checkStructure(const Inspection& inspection);  ///< names, places, repetitions, attributes
void checkTexts(const Inspection& inspection);      ///< what the module takes for each text
void checkListeners(const Inspection& inspection);  ///< listeners with what they need, and the reverse
void checkPaths(const Inspection& inspection);      ///< the files that the module is to read and write
void checkScript(const Inspection& inspection);     ///< the modality script

/// A text for a message: in quotes, control characters escaped, a long one cut.
std::string shown(std::string_view text);

/// The name of a level of the log, empty for the default, and what is then written.
std::string_view nameOfLevel(std::int32_t number);
const char* writtenAtLevel(std::int32_t number);
/// True when it is the name of a level.
bool isLevel(std::string_view name);

}  // namespace check
