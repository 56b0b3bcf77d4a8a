#include "sim/console/RegistrationText.h"

#include "lib/Serializer.h"
#include "sim/Event.h"

namespace sim {

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
    std::string json = "{\"member\":" + asJsonText(profile.member) + ",\"properties\":{";
    const char* separator = "";
    for (const auto& [name, value] : profile.properties) {
        json.append(separator)
            .append(asJsonText(name))
            .append(":")
            .append(value ? asJsonText(*value) : "null");
        separator = ",";
    }
    return json + "}}\n";
}

}  // namespace sim
