#include "records/TaggedText.h"

#include "platform/agent/Logging.h"

#include <array>
#include <cstdio>
#include <cstring>
#include <new>
#include <string_view>

namespace records {
namespace {

constexpr std::size_t kFailureTextSize = 1000;
constexpr std::size_t kTagSize = 64;

}  // namespace

std::int32_t getTagEndIndex(const char* text, const char* tag) noexcept {
    const char* const found = *tag == '\0' ? nullptr : std::strstr(text, tag);
    return found == nullptr
               ? 0
               : static_cast<std::int32_t>(found - text) + static_cast<std::int32_t>(std::strlen(tag));
}

std::unique_ptr<char[]> getStringBuffer(const char* text, const char* closingTag, std::int32_t start,
                                        const char* className) {
    const std::int32_t tagEnd = getTagEndIndex(text, closingTag);
    const std::int32_t tagStart = tagEnd - static_cast<std::int32_t>(std::strlen(closingTag));
    std::string_view value;
    std::size_t size = kFailureTextSize;
    if (tagEnd == 0) {
        value = "str not found";
    } else if (tagStart <= start) {
        value = "string found but before the first string";
    } else {
        value = std::string_view(text + start, static_cast<std::size_t>(tagStart - start));
        size = value.size() + 1;
    }
    std::unique_ptr<char[]> buffer(new (std::nothrow) char[size]);
    if (!buffer) {
        KRXLog(level::kForce, "new Failed in getStringBuffer of %s. \n", className);
        return nullptr;
    }
    buffer[value.copy(buffer.get(), value.size())] = '\0';
    return buffer;
}

bool readTaggedValue(const char* text, const char* element, char (&value)[kValueSize],
                     const char* className) {
    std::array<char, kTagSize> opening{};
    std::array<char, kTagSize> closing{};
    std::snprintf(opening.data(), opening.size(), "<%s>", element);
    std::snprintf(closing.data(), closing.size(), "</%s>", element);
    const auto buffer =
        getStringBuffer(text, closing.data(), getTagEndIndex(text, opening.data()), className);
    if (buffer) {
        copyValue(value, buffer.get());
    }
    return buffer != nullptr;
}

bool readTaggedValues(const char* text, std::span<const TaggedValue> values, const char* className,
                      const char*& damaged) {
    bool complete = true;
    for (const TaggedValue& value : values) {
        if (!readTaggedValue(text, value.element, value.value, className)) {
            complete = false;
        } else if (damaged == nullptr && !value.isUsable(value.value)) {
            damaged = value.element;
        }
    }
    return complete;
}

void copyValue(char (&value)[kValueSize], const char* text) noexcept {
    value[std::string_view(text).copy(value, kValueSize - 1)] = '\0';
}

}  // namespace records
