#include "console/ServiceRequest.h"

#include "ServiceCall.h"
#include "Words.h"
#include "XmlElement.h"

#include <algorithm>
#include <stdexcept>

namespace sim {

namespace {

using agent::XmlElement;

bool isBlank(const std::string& text) {
    return text.find_first_not_of(" \t\r\n") == std::string::npos;
}

void check(const XmlElement& element, bool isRoot) {
    if (element.space != kServiceNamespace) {
        throw std::runtime_error("<" + element.name + "> is not in the namespace " +
                                 std::string(kServiceNamespace));
    }
    if (!element.attributes.empty()) {
        throw std::runtime_error("<" + element.name + "> has an unknown attribute '" +
                                 element.attributes[0].first + "'");
    }
    if (isRoot ? !isBlank(element.text) : !element.children.empty()) {
        throw std::runtime_error("<" + element.name + "> holds what no request has");
    }
}

bool holds(const XmlElement& request, std::initializer_list<std::string_view> names) {
    return std::equal(request.children.begin(), request.children.end(), names.begin(), names.end(),
                      [](const XmlElement& child, std::string_view name) { return child.name == name; });
}

}  // namespace

std::string lineOfRequest(std::string_view xml) {
    const XmlElement request = agent::parseXml(xml);
    check(request, true);
    for (const XmlElement& child : request.children) {
        check(child, false);
    }
    if ((request.name == "connect" && holds(request, {"pollDuration", "pollingRate"})) ||
        (request.name == "disconnect" && (holds(request, {"memberName"}) || holds(request, {})))) {
        std::string line = request.name;
        for (const XmlElement& child : request.children) {
            line += " " + inQuotes(child.text);
        }
        return line;
    }
    std::string line = "call " + inQuotes(request.name);
    for (const XmlElement& child : request.children) {
        line += " " + inQuotes(child.name + "=" + child.text);
    }
    return line;
}

}  // namespace sim
