#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

/// A message that is to be searched for many texts, most of which are not in it. To look for each of them
/// from one end to the other takes five times as long as is allowed when they begin with letters that the
/// message is full of.
///
/// So the message's fragments of four bytes are noted first, those at even positions. Of a text that occurs
/// in it, either the fragments at the text's own even positions are all among them or those at its odd ones;
/// that is quickly looked up, and hardly a text that does not occur passes. The message must outlive the
/// object.
class SearchedText final {
  public:
    explicit SearchedText(std::string_view message) noexcept : message_(message) {
        for (std::size_t i = 0; i + kFragment <= message_.size(); i += 2) {
            noted_[slot(message_.data() + i)] = true;
        }
    }

    bool contains(std::string_view text) const noexcept {
        return (allNoted(text, 0) || allNoted(text, 1)) && message_.find(text) != std::string_view::npos;
    }

  private:
    static constexpr std::size_t kFragment = 4;
    static constexpr unsigned int kSlotBits = 10;

    /// Every second fragment of the text from `start` on; trivially so when there is none.
    bool allNoted(std::string_view text, std::size_t start) const noexcept {
        for (std::size_t i = start; i + kFragment <= text.size(); i += 2) {
            if (!noted_[slot(text.data() + i)]) {
                return false;
            }
        }
        return true;
    }

    static std::size_t slot(const char* fragment) noexcept {
        std::uint32_t value = 0;
        std::memcpy(&value, fragment, kFragment);
        return (value * 2654435761U) >> (32U - kSlotBits);  // the golden ratio spreads the fragments
    }

    std::string_view message_;
    std::array<bool, std::size_t{1} << kSlotBits> noted_{};
};
