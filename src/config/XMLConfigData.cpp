#include "config/XMLConfigData.h"

#include "platform/ThreadEnd.h"
#include "platform/portable/NoDestructor.h"
#include "platform/portable/Published.h"
#include "platform/portable/ScopeGuard.h"

#include <atomic>
#include <utility>

namespace {

platform::NoDestructor<platform::Published<XMLConfigData>> published;
std::atomic<std::uint64_t> changes;

/// An object that no stop took away goes with the library.
const platform::ScopeGuard atUnload([] {
    if (platform::mayWaitAtUnload()) {
        XMLConfigData::destroyInstance();
    }
});

}  // namespace

std::shared_ptr<XMLConfigData> XMLConfigData::getInstance(const std::string& path) noexcept {
    try {
        const std::shared_ptr<XMLConfigData> present = published->get();
        return std::shared_ptr<XMLConfigData>(present == nullptr ? new XMLConfigData(path)
                                                                 : new XMLConfigData(*present));
    } catch (...) {
        return nullptr;  // memory ran out
    }
}

void XMLConfigData::publish(std::shared_ptr<XMLConfigData> filled) noexcept {
    published->exchange(std::move(filled));
    ++changes;
}

std::shared_ptr<const XMLConfigData> XMLConfigData::instance() noexcept {
    return published->get();
}

void XMLConfigData::destroyInstance() noexcept {
    published->exchange(nullptr);
}

std::uint64_t XMLConfigData::age() noexcept {
    return changes;
}
