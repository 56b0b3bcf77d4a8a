#include "Listing.h"

#include "Messages.h"

#include <cerrno>
#include <cstring>
#include <iterator>
#include <stdexcept>
#include <tuple>
#include <utility>

namespace logreader {

namespace {

constexpr std::size_t kWrittenAtOnce = std::size_t{64} << 10U;

}  // namespace

Listing::Listing(TimeZone logZone, Selection selection, EntryWriter writer, const Printing& printing)
    : logZone_(std::move(logZone)),
      selection_(std::move(selection)),
      writer_(std::move(writer)),
      printing_(printing) {}

void Listing::beginFile(const std::string& path) {
    place_.origin.path = path;
    place_.atFileBegin = true;
}

void Listing::passOver(const Beginning& beginning) {
    if (beginning.mark != 0) {
        place_.marks.next(beginning.clock, beginning.mark);
    }
}

void Listing::take(const Entry& entry) {
    if (entry.clock) {
        place_.moment =
            logZone_.momentOf(*entry.clock, place_.moment.value_or(std::chrono::sys_seconds::min()));
    }
    if (std::exchange(place_.atFileBegin, false)) {
        place_.origin.mark = place_.marks.next(entry.clock, markOf(entry));
    }
    const bool skipped = skipped_ && place_.origin.mark == skipped_->mark && entry.offset <= skipped_->offset;
    if (skipped || isFull() || !selection_.spans(place_.moment)) {
        return;
    }
    if (selection_.wants(entry.text)) {
        printContext();
    } else if (contextLeft_ > 0) {
        --contextLeft_;
    } else {
        keepAsContext(entry);
        return;
    }
    append(target(), entry);
    printedAny_ = true;
    if (printing_.cursor != nullptr) {
        last_ = {place_.origin.mark, entry.offset};
    }
    if (text_.size() >= kWrittenAtOnce) {
        flush();
    }
}

void Listing::append(std::string& text, const Entry& entry) {
    writer_.append(text, entry, entry.clock ? place_.moment : std::nullopt, place_.origin);
}

/// Where the next entry goes.
std::string& Listing::target() {
    if (!isHeld()) {
        return text_;
    }
    // The oldest gives its memory to the newest.
    std::string reused;
    if (held_.size() == printing_.last) {
        reused = std::move(held_.front());
        reused.clear();
        held_.pop_front();
    }
    return held_.emplace_back(std::move(reused));
}

/// What stands before an entry that is printed, and lets as much be printed behind it.
void Listing::printContext() {
    if (printing_.context == 0) {
        return;
    }
    if (std::exchange(gap_, false) && printedAny_ && !isHeld()) {
        text_ += writer_.gap();
    }
    for (const std::string& text : before_) {
        target() += text;
    }
    before_.clear();
    contextLeft_ = printing_.context;
}

void Listing::keepAsContext(const Entry& entry) {
    if (printing_.context == 0) {
        return;
    }
    if (before_.size() == printing_.context) {
        before_.pop_front();
        gap_ = true;
    }
    append(before_.emplace_back(), entry);
}

void Listing::goBack() {
    if (!newest_) {
        newest_ = {place_, last_};
    }
    place_ = {};
    if (printing_.last) {
        *printing_.last -= held_.size();
    }
    if (printing_.reverse) {
        for (; !held_.empty(); held_.pop_back()) {
            text_ += held_.back();
        }
        write();
    } else {
        newer_.insert(newer_.begin(), std::move_iterator(held_.begin()), std::move_iterator(held_.end()));
        held_.clear();
    }
}

void Listing::release() {
    goBack();
    for (const std::string& entry : newer_) {
        text_ += entry;
    }
    newer_.clear();
    printing_.last.reset();
    printing_.reverse = false;
    std::tie(place_, last_) = *newest_;
}

void Listing::write() {
    writeOut(text_, printing_.output);
    text_.clear();
}

void Listing::flush() {
    write();
    if (printing_.cursor == nullptr || last_.mark.empty() || isHeld()) {
        return;
    }
    const bool kept = printing_.cursor->write(last_.mark + "-" + std::to_string(last_.offset));
    if (!kept && cursorIsKept_) {
        complain(printing_.cursor->path() + ": " + std::strerror(errno));
    }
    cursorIsKept_ = kept;
}

}  // namespace logreader
