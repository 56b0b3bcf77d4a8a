#pragma once

#include "Stamp.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>
#include <optional>
#include <string_view>
#include <vector>

namespace logreader {

struct Entry {
    std::optional<std::chrono::local_seconds> clock;  ///< none for text that belongs to no entry
    std::string_view text;  ///< without line ends and blanks around it; valid until the reader is used again
    std::uint64_t offset = 0;  ///< of the entry's first byte
};

/// Takes the bytes of one log file apart into its entries, in constant memory. An entry ends where the next
/// one begins. Text that belongs to no entry (before the first one, or behind the longest message that the
/// logger writes) is given out line by line, blank lines left out.
class EntryReader final {
  public:
    /// Fills a buffer with the bytes that follow; 0 when there are none, or none yet.
    using Source = std::function<std::size_t(char* buffer, std::size_t size)>;

    /// The buffer has to hold the longest entry.
    explicit EntryReader(Source source, std::size_t bufferSize = std::size_t{256} << 10U);

    /// The next entry whose end is known. False when the source has no more, or fails with std::runtime_error.
    bool next(Entry& entry);
    /// The same when nothing more is to come: the bytes' end ends an entry. False when all is given out; if the
    /// source failed, its failure is thrown then.
    bool rest(Entry& entry);

  private:
    struct Found {
        std::size_t at;
        Stamp stamp;
    };

    bool take(Entry& entry);
    bool give(std::size_t length, Entry& entry);
    void findStamp();
    bool refill();

    Source source_;
    std::exception_ptr failure_;
    std::vector<char> buffer_;
    std::uint64_t bufferOffset_ = 0;  ///< of the buffer's first byte in the file
    std::size_t begin_ = 0;           ///< of what was not given out yet
    std::size_t scanned_ = 0;         ///< no stamp begins before it, but at `begin_` and at `next_`
    std::size_t end_ = 0;
    std::optional<Stamp> stamp_;  ///< the one at `begin_`
    std::optional<Found> next_;
    bool atEnd_ = false;  ///< half a stamp at the end stays one
};

}  // namespace logreader
