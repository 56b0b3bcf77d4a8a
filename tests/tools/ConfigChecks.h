// Runs of the configuration checker and of xmllint, and parts of configurations.
#pragma once

#include "support/Shell.h"
#include "support/Xml.h"

#include <string>

namespace checks {

using support::in;
using support::Run;
using support::shell;

inline Run check(const support::Workspace& workspace, const std::string& arguments) {
    return shell(workspace, "'" CONFIG_CHECK "' " + arguments);
}

/// What xmllint says of files, a line each: "NAME validates" when one is valid by the schema.
inline std::string validate(const support::Workspace& workspace, const std::string& names) {
    return shell(workspace, "'" XMLLINT "' --nonet --noout --schema '" SCHEMA "' " + names).printed;
}

/// A root element whose line 2 begins with `inside`.
inline std::string document(const std::string& inside) {
    return "<ZephanConfiguration>\n" + inside + "\n</ZephanConfiguration>\n";
}

inline std::string messages(const std::string& section, const std::string& open, const std::string& close) {
    return in(section,
              in("OpenMessage", in("Message", open)) + "\n" + in("CloseMessage", in("Message", close)));
}

}  // namespace checks
