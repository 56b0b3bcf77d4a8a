#include "config/XMLConfigData.h"

#include "platform/agent/Logging.h"

#include <atomic>
#include <new>

namespace {

std::atomic<XMLConfigData*> theInstance{nullptr};

}  // namespace

XMLConfigData* XMLConfigData::getInstance(const std::string& path) noexcept {
    if (theInstance == nullptr) {
        try {
            theInstance = new XMLConfigData(path);
        } catch (...) {
            // Memory ran out: there is no object.
        }
    }
    return theInstance;
}

XMLConfigData* XMLConfigData::instance() noexcept {
    return theInstance;
}

void XMLConfigData::destroyInstance() noexcept {
    delete theInstance.exchange(nullptr);
}

void XMLConfigData::setLogLevel(const std::string& name) {
    struct NamedLevel {
        const char* name;
        std::int32_t level;
    };
    static constexpr NamedLevel kLevels[] = {{"trace", level::kTrace}, {"info", level::kInfo},
                                             {"warn", level::kWarn},   {"error", level::kError},
                                             {"force", level::kForce}, {"audit", level::kAudit}};
    logLevel_ = level::kInfo;
    for (const NamedLevel& known : kLevels) {
        if (name == known.name) {
            logLevel_ = known.level;
        }
    }
}
