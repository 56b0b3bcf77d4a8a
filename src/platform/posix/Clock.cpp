#include "platform/Clock.h"

namespace platform {

std::int64_t now() noexcept {
    return std::time(nullptr);
}

std::tm localFields(std::int64_t moment) noexcept {
    std::tm fields{};
    const std::time_t value = moment;
    if (localtime_r(&value, &fields) == nullptr) {
        const std::time_t origin = 0;
        localtime_r(&origin, &fields);
    }
    return fields;
}

std::tm utcFields(std::int64_t moment) noexcept {
    std::tm fields{};
    const std::time_t value = moment;
    if (gmtime_r(&value, &fields) == nullptr) {
        const std::time_t origin = 0;
        gmtime_r(&origin, &fields);
    }
    return fields;
}

std::int64_t momentOfUtc(std::tm fields) noexcept {
    return timegm(&fields);
}

}  // namespace platform
