#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace platform {

/// The system's own converter of texts in an encoding that has a name to UTF-8. Not for use by two threads at once.
class TextDecoder final {
  public:
    /// Closed when the system does not know the encoding.
    explicit TextDecoder(const std::string& encoding);
    TextDecoder(const TextDecoder&) = delete;
    TextDecoder& operator=(const TextDecoder&) = delete;
    ~TextDecoder();

    bool isOpen() const noexcept;
    /// Appends the text of `bytes`, which begin anew and must be whole characters. Returns how many bytes were
    /// converted: less than all when the next bytes are not valid in the encoding, and what was appended is then worth
    /// nothing.
    std::size_t decode(std::string_view bytes, std::string& utf8);

  private:
    void* converter_;
};

}  // namespace platform
