#pragma once

#include <cstdio>
#include <exception>
#include <string>
#include <string_view>
#include <utility>

namespace logreader {

/// Says on standard error what went wrong. Names and quoted texts may hold anything: control characters are shown as
/// signs.
void complain(std::string_view text);

/// What was printed reaches nobody, so the rest need not be read. (Of files that cannot be read std::runtime_error tells.)
class OutputError final : public std::exception {
  public:
    explicit OutputError(std::string reason) : reason_(std::move(reason)) {}
    const char* what() const noexcept override { return reason_.c_str(); }

  private:
    std::string reason_;
};

/// Writes all of a text and hands it on. Throws OutputError when that cannot be done.
void writeOut(std::string_view text, std::FILE* output);

/// A text in one line in which a terminal finds nothing to act upon.
std::string shownInLine(std::string_view text);

}  // namespace logreader
