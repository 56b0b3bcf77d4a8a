#include "Listing.h"

#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <utility>

namespace logreader {

namespace {

constexpr std::size_t kWrittenAtOnce = std::size_t{64} << 10U;

}  // namespace

Listing::Listing(TimeZone logZone, Selection selection, EntryWriter writer, std::optional<std::size_t> last,
                 std::FILE* output)
    : logZone_(std::move(logZone)),
      selection_(std::move(selection)),
      writer_(std::move(writer)),
      last_(last),
      output_(output) {}

void Listing::take(const Entry& entry, const std::string& path) {
    if (entry.clock) {
        moment_ = logZone_.momentOf(*entry.clock, moment_.value_or(std::chrono::sys_seconds::min()));
    }
    if (!selection_.wants(moment_, entry.text)) {
        return;
    }
    std::string* target = &text_;
    if (last_) {
        if (*last_ == 0) {
            return;
        }
        // The oldest gives its memory to the newest.
        std::string reused;
        if (held_.size() == *last_) {
            reused = std::move(held_.front());
            reused.clear();
            held_.pop_front();
        }
        target = &held_.emplace_back(std::move(reused));
    }
    writer_.append(*target, entry, entry.clock ? moment_ : std::nullopt, path);
    printedAny_ = true;
    if (text_.size() >= kWrittenAtOnce) {
        flush();
    }
}

void Listing::releaseLast() {
    for (const std::string& entry : held_) {
        text_ += entry;
    }
    held_.clear();
    last_.reset();
}

void Listing::flush() {
    if (std::fwrite(text_.data(), 1, text_.size(), output_) != text_.size() || std::fflush(output_) != 0) {
        throw std::runtime_error(std::string("standard output: ") + std::strerror(errno));
    }
    text_.clear();
}

}  // namespace logreader
