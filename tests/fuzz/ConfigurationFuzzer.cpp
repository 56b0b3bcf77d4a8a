// Any bytes as a configuration file: settings or the load's error, and the next load works.
#include "Host.h"
#include "config/XMLConfigData.h"

#include <stdexcept>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const fuzz::Host& host = fuzz::Host::instance();
    host.write("config", fuzz::text(data, size));
    try {
        fuzz::require(loadConfiguration(host.path("config")) != nullptr);
    } catch (const std::runtime_error&) {
        // As it should be; anything else that is thrown is a finding.
    }
    XMLConfigData::destroyInstance();
    host.write("config", "<z><Script>good</Script></z>");
    fuzz::require(loadConfiguration(host.path("config"))->getScript() == "good");
    XMLConfigData::destroyInstance();
    return 0;
}
