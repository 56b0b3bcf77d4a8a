#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

/// Whether one of a list of texts occurs in a message. A short list is searched text by text; of a long one
/// the message is gone through once, and a text is compared only where its last four bytes stand. Of a
/// message that is full of such places it goes back to text by text, so none costs more than twice that.
/// Any thread may ask at any time.
class TextSearch final {
  public:
    static constexpr std::size_t kLongList = 20;  ///< texts, from which on it pays

    /// Finds nothing.
    TextSearch() noexcept = default;
    /// The texts, none of which is empty, must outlive the search. When memory runs out they are searched text
    /// by text.
    explicit TextSearch(std::span<const std::string> texts) noexcept;

    bool occursIn(const char* message) const noexcept;

  private:
    struct Ending {
        std::uint32_t bytes;
        const std::string* text;
    };

    void prepare();
    std::size_t placeOf(std::uint32_t bytes) const noexcept;
    bool oneByOne(const char* message) const noexcept;

    std::span<const std::string> texts_;
    std::vector<const std::string*> short_;  ///< texts that have no four bytes
    std::vector<Ending> endings_;  ///< of the others, in the order of the bytes; empty of a short list
    std::vector<bool> filter_;     ///< at the place of each ending: true
    unsigned int shift_ = 0;
};
