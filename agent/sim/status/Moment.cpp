#include "sim/status/Moment.h"

#include "sim/Calendar.h"
#include "sim/System.h"

#include <array>
#include <ctime>
#include <optional>

namespace sim {

namespace {

std::string text(const std::optional<std::tm>& fields, const char* format) {
    std::array<char, 80> written = {};
    return fields && std::strftime(written.data(), written.size(), format, &*fields) > 0
               ? written.data()
               : "beyond the calendar";
}

}  // namespace

std::string gmtText(std::int64_t moment) {
    return text(utcFields(moment), "%Y-%m-%d %H:%M:%S GMT");
}

std::string localText(std::int64_t moment) {
    return text(system::localFields(moment), "%Y-%m-%d %H:%M:%S %Z");
}

std::string momentText(std::int64_t moment) {
    const std::string gmt = gmtText(moment);
    const std::string local = localText(moment);
    const bool isSame = gmt.substr(0, gmt.rfind(' ')) == local.substr(0, local.rfind(' '));
    return isSame ? gmt : gmt + " (" + local + ")";
}

}  // namespace sim
