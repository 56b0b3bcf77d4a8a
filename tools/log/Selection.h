#pragma once

#include "Options.h"
#include "TimeWords.h"

#include <chrono>
#include <memory>
#include <optional>
#include <string_view>

namespace re2 {
class RE2;
}

namespace logreader {

/// Which entries are wanted: by their time and by their text.
class Selection final {
  public:
    /// Throws UsageError when an expression cannot be read.
    Selection(const Options& options, const Span& span);
    Selection(Selection&&) noexcept;
    ~Selection();

    /// By its time: the entry's, or the last one before it for text that has none.
    bool spans(std::optional<std::chrono::sys_seconds> moment) const;
    /// By its text.
    bool wants(std::string_view text) const;

  private:
    Span span_;
    std::unique_ptr<re2::RE2> grep_;
    std::unique_ptr<re2::RE2> exclude_;
};

}  // namespace logreader
