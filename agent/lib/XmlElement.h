// A received XML document as a tree.
#pragma once

#include "platform/agent/Api.h"

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace agent {

/// One element. Names stand without namespace prefix; namespace declarations are not among the attributes.
struct XmlElement {
    std::string name;
    std::string space;  ///< the namespace of the name; empty when it has none
    std::vector<std::pair<std::string, std::string>> attributes;
    std::vector<XmlElement> children;
    std::string text;  ///< all text between the children, in one
};

/// The root of `document`. Throws std::runtime_error naming line and reason for one that is not well-formed,
/// declares a document type or is nested deeper than a message can be.
KRX_API XmlElement parseXml(std::string_view document);

}  // namespace agent
