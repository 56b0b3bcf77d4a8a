// The resume state file, the schedule file and the properties of "ScheduleRSM": the first byte selects, the
// rest is the contents. Properties are parted by line ends, names and values by "=".
#include "Host.h"
#include "ZephanRSMLogger.h"

#include <sstream>
#include <vector>

namespace {

void schedule(const std::string& text) {
    static constexpr const char* kNames[] = {"RSMStartDate", "RSMStartTime", "PollingRate", "GracePeriod"};
    std::vector<std::string> parts;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line) && parts.size() < 32;) {
        const std::size_t sign = line.find('=');
        const bool named = sign == 1 && line[0] >= '0' && line[0] <= '3';  // a digit stands for a known name
        parts.push_back(named ? kNames[line[0] - '0'] : line.substr(0, sign));
        parts.push_back(sign == std::string::npos ? "" : line.substr(sign + 1));
    }
    std::vector<Prop> properties;
    for (std::size_t i = 0; i < parts.size(); i += 2) {
        properties.push_back({parts[i].data(), nullptr, nullptr, parts[i + 1].data()});
    }
    const PropList input{properties.data(), static_cast<std::int32_t>(properties.size())};
    PropList* answer = nullptr;
    const auto result = ZPXRSMDSExectue(nullptr, nullptr, "ScheduleRSM", &input, &answer);
    fuzz::require((result == 0 || result == 1) && answer != nullptr);
    ZPXRSMDSDestroyPropList(nullptr, nullptr, answer);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const fuzz::Host& host = fuzz::Host::instance();
    if (size == 0) {
        return 0;
    }
    const int selected = data[0] % 3;
    const std::string_view contents = fuzz::text(data + 1, size - 1);
    const std::string resume = host.path("state/resume");
    host.write("config", "<z><RSMResumeStatusFile>" + resume + "</RSMResumeStatusFile></z>");
    host.write("state/resume", selected == 0 ? contents : "");
    host.write("state/schedule", selected == 1 ? contents : "");
    // Without a service agent no thread polls; the values are taken in all the same.
    void* dataSource = nullptr;
    void* controller = nullptr;
    fuzz::require(ZPXRSMDSStartup(&dataSource, host.path("state/schedule").c_str()) == 0);
    fuzz::require(ZPRSMExtnStartup(&controller, nullptr, host.path("config").c_str()) == 0);
    if (selected == 2) {
        schedule(std::string(contents));
    }
    fuzz::require(ZPRSMExtnShutdown(controller) == 0);
    return 0;
}
