#include "EntryReader.h"

#include "logging/LogFileWriter.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>
#include <utility>

namespace logreader {

namespace {

constexpr std::size_t kLongestMessage = LogFileWriter::kLongestMessage;

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view kBlanks = " \t\r\n";
    const std::size_t begin = text.find_first_not_of(kBlanks);
    return begin == std::string_view::npos ? std::string_view()
                                           : text.substr(begin, text.find_last_not_of(kBlanks) - begin + 1);
}

}  // namespace

EntryReader::EntryReader(Source source, std::size_t bufferSize)
    : source_(std::move(source)), buffer_(bufferSize) {}

bool EntryReader::next(Entry& entry) {
    do {
        if (take(entry)) {
            return true;
        }
    } while (refill());
    return false;
}

bool EntryReader::rest(Entry& entry) {
    atEnd_ = true;
    const bool found = take(entry) || (begin_ < end_ && give(end_ - begin_, entry));
    atEnd_ = false;
    if (!found && failure_) {
        std::rethrow_exception(std::exchange(failure_, nullptr));
    }
    return found;
}

bool EntryReader::take(Entry& entry) {
    for (;;) {
        findStamp();
        const std::size_t known = (next_ ? next_->at : scanned_) - begin_;
        std::size_t length = next_ ? known : 0;
        if (stamp_) {
            const std::size_t longest = stamp_->length + kLongestMessage;
            // The first entry of a file has a line end of its own besides.
            if (known > longest) {
                length = longest + (buffer_[begin_ + longest] == '\n' ? 1 : 0);
            }
        } else {
            const char* const text = buffer_.data() + begin_;
            const std::size_t window = std::min(known, kLongestMessage);
            if (const void* const lineEnd = std::memchr(text, '\n', window)) {
                length = static_cast<std::size_t>(static_cast<const char*>(lineEnd) - text) + 1;
            } else if (known > kLongestMessage) {
                length = kLongestMessage;
            }
        }
        if (length == 0) {
            return false;
        }
        if (give(length, entry)) {
            return true;
        }
    }
}

/// Gives out the first `length` bytes; false when they are a blank line outside any entry.
bool EntryReader::give(std::size_t length, Entry& entry) {
    const std::size_t stampLength = stamp_ ? stamp_->length : 0;
    entry.clock = stamp_ ? std::optional(stamp_->clock) : std::nullopt;
    entry.text = trimmed({buffer_.data() + begin_ + stampLength, length - stampLength});
    entry.offset = bufferOffset_ + begin_;
    begin_ += length;
    stamp_.reset();
    return entry.clock || !entry.text.empty();
}

/// Looks for the stamp that follows `begin_`.
void EntryReader::findStamp() {
    if (next_ && next_->at == begin_) {
        stamp_ = next_->stamp;
        next_.reset();
    }
    while (!next_ && scanned_ < end_) {
        const char* const text = buffer_.data() + scanned_;
        const void* const letter = std::memchr(text, 'D', end_ - scanned_);
        if (letter == nullptr) {
            scanned_ = end_;
            return;
        }
        scanned_ += static_cast<std::size_t>(static_cast<const char*>(letter) - text);
        const std::string_view candidate(buffer_.data() + scanned_,
                                         std::min(end_ - scanned_, Stamp::kLongest));
        const std::optional<Stamp> stamp = readStamp(candidate);
        if (!stamp) {
            if (candidate.size() < Stamp::kLongest && !atEnd_) {
                return;  // perhaps its other half follows
            }
            ++scanned_;
            continue;
        }
        if (scanned_ == begin_) {
            stamp_ = stamp;
        } else {
            next_ = Found{scanned_, *stamp};
        }
        scanned_ += stamp->length;
    }
}

bool EntryReader::refill() {
    std::memmove(buffer_.data(), buffer_.data() + begin_, end_ - begin_);
    bufferOffset_ += begin_;
    scanned_ -= begin_;
    end_ -= begin_;
    begin_ = 0;
    try {
        const std::size_t length = source_(buffer_.data() + end_, buffer_.size() - end_);
        end_ += length;
        return length > 0;
    } catch (const std::runtime_error&) {
        failure_ = std::current_exception();  // what was read before it comes first
        return false;
    }
}

}  // namespace logreader
