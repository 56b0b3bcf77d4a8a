#pragma once

#include "EntryReader.h"
#include "EntryWriter.h"
#include "Selection.h"
#include "TimeZone.h"

#include <cstddef>
#include <cstdio>
#include <deque>
#include <optional>
#include <string>

namespace logreader {

/// What is printed: takes the entries in their order, chooses among them and writes them.
class Listing final {
  public:
    /// With `last`, entries are held back until `releaseLast`, and all but the last so many are dropped.
    /// `output` must stay open as long as this lives.
    Listing(TimeZone logZone, Selection selection, EntryWriter writer, std::optional<std::size_t> last,
            std::FILE* output);

    void take(const Entry& entry, const std::string& path);
    /// Ends the holding back.
    void releaseLast();
    /// Hands all on to the reader of the output. Throws std::runtime_error when it cannot be written.
    void flush();
    bool printedAny() const { return printedAny_; }

  private:
    TimeZone logZone_;
    Selection selection_;
    EntryWriter writer_;
    std::optional<std::size_t> last_;
    std::FILE* output_;
    std::optional<std::chrono::sys_seconds> moment_;  ///< of the last entry that had one
    std::deque<std::string> held_;
    std::string text_;  ///< to be written
    bool printedAny_ = false;
};

}  // namespace logreader
