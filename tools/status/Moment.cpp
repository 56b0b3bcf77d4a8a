#include "status/Moment.h"

#include "platform/Clock.h"

#include <array>
#include <cstdlib>
#include <ctime>

namespace status {

namespace {

std::string text(std::int64_t moment, const std::tm& fields, const char* format) {
    constexpr std::int64_t kDay = 86'400;  // no zone is further from GMT
    std::array<char, 80> written = {};
    return std::abs(platform::momentOfUtc(fields) - moment) <= kDay &&
                   std::strftime(written.data(), written.size(), format, &fields) > 0
               ? written.data()
               : "beyond the calendar";
}

}  // namespace

std::string gmtText(std::int64_t moment) {
    return text(moment, platform::utcFields(moment), "%Y-%m-%d %H:%M:%S GMT");
}

std::string localText(std::int64_t moment) {
    return text(moment, platform::localFields(moment), "%Y-%m-%d %H:%M:%S %Z");
}

std::string momentText(std::int64_t moment) {
    const std::string gmt = gmtText(moment);
    const std::string local = localText(moment);
    const bool isSame = gmt.substr(0, gmt.rfind(' ')) == local.substr(0, local.rfind(' '));
    return isSame ? gmt : gmt + " (" + local + ")";
}

}  // namespace status
