#include "webservice/NumberSubElement.h"

#include "platform/portable/Number.h"

#include <cstddef>
#include <cstdio>
#include <new>

namespace KRX::Services::ZephanServicesNS {
namespace {

constexpr std::size_t kNumberTextSize = 32;

}  // namespace

const char* newNumberText(std::int32_t number, bool& release) noexcept {
    auto* const text = new (std::nothrow) char[kNumberTextSize];
    release = text != nullptr;
    if (release) {
        std::snprintf(text, kNumberTextSize, "%d", number);
    }
    return text;
}

std::int32_t numberOf(const char* text) noexcept {
    return text == nullptr ? 0 : platform::readNumber(text);
}

}  // namespace KRX::Services::ZephanServicesNS
