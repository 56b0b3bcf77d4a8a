#include "platform/TextDecoder.h"

#include <array>
#include <cerrno>
#include <cstdint>
#include <iconv.h>

namespace platform {
namespace {

constexpr std::intptr_t kNone = -1;

}  // namespace

TextDecoder::TextDecoder(const std::string& encoding) : converter_(::iconv_open("UTF-8", encoding.c_str())) {}

TextDecoder::~TextDecoder() {
    if (isOpen()) {
        ::iconv_close(converter_);
    }
}

bool TextDecoder::isOpen() const noexcept {
    return reinterpret_cast<std::intptr_t>(converter_) != kNone;
}

std::size_t TextDecoder::decode(std::string_view bytes, std::string& utf8) {
    std::array<char, 4096> buffer;
    char* in = const_cast<char*>(bytes.data());  // only read
    std::size_t left = bytes.size();
    ::iconv(converter_, nullptr, nullptr, nullptr, nullptr);
    for (bool flushing = false;;) {
        char* out = buffer.data();
        std::size_t room = buffer.size();
        // A converter that puts characters together keeps the last one back until it is told that no more come.
        const std::size_t result = flushing ? ::iconv(converter_, nullptr, nullptr, &out, &room)
                                            : ::iconv(converter_, &in, &left, &out, &room);
        const bool isFull = result == static_cast<std::size_t>(-1) && errno == E2BIG;
        utf8.append(buffer.data(), out);
        if (result == static_cast<std::size_t>(-1) && !isFull) {
            return bytes.size() - left;
        }
        if (!isFull && flushing) {
            return bytes.size();
        }
        flushing = flushing || !isFull;
    }
}

}  // namespace platform
