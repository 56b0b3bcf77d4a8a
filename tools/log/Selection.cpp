#include "Selection.h"

#include <re2/re2.h>

namespace logreader {

namespace {

std::unique_ptr<RE2> compile(const std::optional<std::string>& expression, bool ignoreCase) {
    if (!expression) {
        return nullptr;
    }
    RE2::Options options(RE2::Quiet);
    options.set_case_sensitive(!ignoreCase);
    if (const RE2 checked(*expression, options); !checked.ok()) {
        throw UsageError("regular expression " + *expression + ": " + checked.error());
    }
    // An entry may have several lines; ^ and $ mean each of them, as everywhere else.
    auto compiled = std::make_unique<RE2>("(?m)" + *expression, options);
    return compiled;
}

}  // namespace

Selection::Selection(const Options& options, const Span& span)
    : span_(span),
      grep_(compile(options.grep, options.ignoreCase)),
      exclude_(compile(options.exclude, options.ignoreCase)) {}

Selection::Selection(Selection&&) noexcept = default;
Selection::~Selection() = default;

bool Selection::spans(std::optional<std::chrono::sys_seconds> moment) const {
    return (!span_.since || (moment && *moment >= *span_.since)) && (!span_.until || !(moment > span_.until));
}

bool Selection::wants(std::string_view text) const {
    const re2::StringPiece piece(text.data(), text.size());
    return (!grep_ || RE2::PartialMatch(piece, *grep_)) &&
           (!exclude_ || !RE2::PartialMatch(piece, *exclude_));
}

}  // namespace logreader
