// Parts of documents.
#pragma once

#include <string>

namespace support {

inline std::string in(const std::string& name, const std::string& inside) {
    return "<" + name + ">" + inside + "</" + name + ">";
}

inline std::string repeated(const std::string& text, int count) {
    std::string all;
    while (count-- > 0) {
        all += text;
    }
    return all;
}

inline std::string typed(const std::string& declarations, const std::string& root) {
    return "<!DOCTYPE z [" + declarations + "]>" + root;
}

/// Entities a0 to a12, each of ten times the one before. `type` is "" or "% ", `reference` "&" or "&#37;".
inline std::string laughs(const std::string& type, const std::string& reference, const std::string& first) {
    std::string text = "<!ENTITY " + type + "a0 \"" + first + "\">";
    for (int i = 1; i <= 12; ++i) {
        text += "<!ENTITY " + type + "a" + std::to_string(i) + " \"" +
                repeated(reference + "a" + std::to_string(i - 1) + ";", 10) + "\">";
    }
    return text;
}

}  // namespace support
