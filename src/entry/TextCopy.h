#pragma once

#include <array>
#include <cstring>
#include <memory>
#include <new>

namespace entry {

/// A copy of a text that takes no memory while the text is of usual length. Without memory for a long one it
/// is the text itself.
class TextCopy final {
  public:
    explicit TextCopy(const char* text) noexcept : text_(text) {
        const std::size_t size = std::strlen(text) + 1;
        if (size > room_.size()) {
            large_.reset(new (std::nothrow) char[size]);
        }
        char* const place = size > room_.size() ? large_.get() : room_.data();
        if (place != nullptr) {
            std::memcpy(place, text, size);
            text_ = place;
        }
    }
    TextCopy(const TextCopy&) = delete;
    TextCopy& operator=(const TextCopy&) = delete;

    const char* text() const noexcept { return text_; }

  private:
    const char* text_;
    std::unique_ptr<char[]> large_;
    std::array<char, 2048> room_;  // not cleared: a message must not pay for what it does not use
};

}  // namespace entry
