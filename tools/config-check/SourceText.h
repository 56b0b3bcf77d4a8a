// The text of a file, and the way from a parser's positions to what stands there.
#pragma once

#include "Finding.h"

#include <cstddef>
#include <string>
#include <vector>

namespace check {

class SourceText final {
  public:
    /// `bytes` in UTF-8, UTF-16 or another encoding that agrees with ASCII.
    explicit SourceText(const std::string& bytes);

    /// The start of the tag or entity reference that ends at `end`; `end` itself when neither ends there.
    Position startOfTag(Position end) const;
    /// The first place from `start` on that is neither a blank nor a line break.
    Position afterBlanks(Position start) const;
    /// The line that a position is in, or of a long one the part around it, a string a character, in UTF-8
    /// (a byte that is none counts as Latin 1); `mark` becomes the index of the character at the position.
    std::vector<std::string> excerpt(Position position, std::size_t& mark) const;

  private:
    std::size_t offsetOf(Position position) const;
    Position positionOf(std::size_t offset) const;

    std::string text_;
    std::vector<std::size_t> lines_;  ///< where each line starts
    // Positions come in the order of the file, mostly, and a file may be one long line.
    mutable Position knownPosition_{1, 1};
    mutable std::size_t knownOffset_ = 0;
};

/// UTF-8 of a text in UTF-16; what is no UTF-16 becomes U+FFFD.
std::string toUtf8(const char16_t* text, std::size_t length);

}  // namespace check
