// The rules that a configuration is held against, a family a file.
#pragma once

#include "Document.h"
#include "Finding.h"
#include "KnownElements.h"
#include "ModuleConfiguration.h"
#include "Selection.h"
#include "SourceText.h"

#include <optional>
#include <string>
#include <string_view>

namespace check {

/// A configuration that the module accepts, under the rules.
struct Inspection {
    const std::string& file;
    const SourceText& source;
    const Document& document;
    const KnownElements& known;
    const Selection& selection;
    const ModuleSettings& settings;
    const std::optional<std::string>& schedule;  ///< path of the schedule file, when it was told
    Findings& findings;

    const std::string& name(Tag tag) const { return known.name(tag); }
    const Element& root() const { return document.elements.front(); }
    Position tagOf(const Element& element) const;
    Position textPositionOf(const Element& element) const;
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

void checkStructure(const Inspection& inspection);  ///< names, places, repetitions, attributes
void checkTexts(const Inspection& inspection);      ///< what the module takes for each text
void checkListeners(const Inspection& inspection);  ///< listeners with what they need, and the reverse
void checkPaths(const Inspection& inspection);      ///< the files that the module is to read and write
void checkScript(const Inspection& inspection);     ///< the modality script

/// A text for a message: in quotes, control characters escaped, a long one cut.
std::string shown(std::string_view text);

/// A level of the log: its name, its number, and what is then written.
struct Level {
    const char* name;
    std::int32_t number;
    const char* written;
};
/// The level of that name or number; the module's default, which has no name, by its number.
const Level* levelNamed(std::string_view name);
const Level* levelNumbered(std::int32_t number);

}  // namespace check
