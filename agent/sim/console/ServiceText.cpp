#include "sim/console/ServiceText.h"

#include "lib/Serializer.h"
#include "lib/XmlElement.h"
#include "sim/host/ServiceCall.h"
#include "sim/scenario/Words.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <stdexcept>

namespace sim {

namespace {

using agent::XmlElement;

void check(const XmlElement& element, bool isRoot) {
    const bool isOdd =
        isRoot ? element.text.find_first_not_of(" \t\r\n") != std::string::npos : !element.children.empty();
    const std::string fault =
        element.space != kServiceNamespace ? "is not in the namespace " + std::string(kServiceNamespace)
        : !element.attributes.empty()      ? "has an unknown attribute '" + element.attributes[0].first + "'"
        : isOdd                            ? "holds what no request has"
                                           : "";
    if (!fault.empty()) {
        throw std::runtime_error("<" + element.name + "> " + fault);
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
    const bool isPlain =
        (request.name == "connect" && holds(request, {"pollDuration", "pollingRate"})) ||
        (request.name == "disconnect" && (holds(request, {"memberName"}) || holds(request, {})));
    std::string line = isPlain ? request.name : "call " + inQuotes(request.name);
    for (const XmlElement& child : request.children) {
        line += " " + inQuotes(isPlain ? child.text : child.name + "=" + child.text);
    }
    return line;
}

std::string registrationXml(const LiveSession::Profile& profile) {
    KRX::Messaging::Serializer xml;
    xml.openElement("Asset");
    xml.writeAttribute("xmlns", "urn:corvane-krx:Registration_v1_1");
    xml.writeAttribute("member", profile.member);
    for (const auto& [name, value] : profile.properties) {
        xml.openElement("Property");
        xml.writeAttribute("name", name);
        xml.writeText(value.value_or(""));
        xml.closeElement("Property");
    }
    xml.closeElement("Asset");
    return xml.written() + "\n";
}

std::string registrationJson(const LiveSession::Profile& profile) {
    using nlohmann::ordered_json;
    ordered_json json = {{"member", profile.member}, {"properties", ordered_json::object()}};
    for (const auto& [name, value] : profile.properties) {
        json["properties"][name] = value ? ordered_json(*value) : ordered_json(nullptr);
    }
    return json.dump(-1, ' ', false, ordered_json::error_handler_t::replace) + "\n";
}

}  // namespace sim
