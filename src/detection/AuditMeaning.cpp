#include "detection/AuditMeaning.h"

#include "config/Settings.h"

#include <algorithm>
#include <cstring>

std::int32_t countAfter(Activity activity, std::int32_t count) noexcept {
    switch (activity) {
        case Activity::open:
            return count + 1;
        case Activity::close:
            return std::max(count - 1, 0);
        case Activity::abort:
            return 0;
        case Activity::none:
            break;
    }
    return count;
}

ActivityTexts::ActivityTexts(const config::Settings& settings) noexcept
    : tunnel_{TextSearch(config::textsOf(settings.tunnelOpenMessages)),
              TextSearch(config::textsOf(settings.tunnelCloseMessages))},
      file_{TextSearch(config::textsOf(settings.fileOpenMessages)),
            TextSearch(config::textsOf(settings.fileCloseMessages))},
      abort_(settings.abortMessage.empty() ? nullptr : &settings.abortMessage) {}

AuditMeaning ActivityTexts::meaningOf(const char* message) const noexcept {
    const bool aborts = abort_ != nullptr && std::strstr(message, abort_->c_str()) != nullptr;
    return {aborts ? Activity::abort : tunnel_.activityIn(message), file_.activityIn(message)};
}

/// A step up and a step down again change nothing, whatever the count.
Activity ActivityTexts::Pair::activityIn(const char* message) const noexcept {
    const bool opens = open.occursIn(message);
    const bool closes = close.occursIn(message);
    return opens == closes ? Activity::none : opens ? Activity::open : Activity::close;
}
