#include "session/ScriptText.h"

#include "common/ShownText.h"

namespace session {

std::string scriptSafe(std::string_view json) {
    std::string target;
    target.reserve(json.size());
    for (const char c : json) {
        if (c == '<') {
            target += "\\u003c";
        } else {
            target += c;
        }
    }
    return target;
}

std::string asScriptText(std::string_view text) {
    return scriptSafe(logreader::jsonText(text));
}

}  // namespace session
