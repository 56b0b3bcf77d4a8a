#pragma once

#include "Beginning.h"
#include "Cursor.h"
#include "EntryReader.h"
#include "EntryWriter.h"
#include "Selection.h"
#include "TimeZone.h"

#include <cstddef>
#include <cstdio>
#include <deque>
#include <optional>
#include <string>
#include <utility>

namespace logreader {

/// What of the chosen entries is printed, and where.
struct Printing {
    std::optional<std::size_t> last;  ///< only the last so many
    bool reverse = false;             ///< the newest first
    std::size_t context = 0;          ///< entries printed around each, as far as they lie in the span
    std::FILE* output = stdout;       ///< must stay open as long as the listing lives
    Cursor* cursor = nullptr;         ///< learns the last entry printed, once its reader has got it
};

/// The output: takes the entries in their order, chooses among them and writes them. With `last` or `reverse` they
/// are held back until `release`.
class Listing final {
  public:
    Listing(TimeZone logZone, Selection selection, EntryWriter writer, const Printing& printing);

    /// The entries that follow stand in the file `path`, from its beginning on.
    void beginFile(const std::string& path);
    void take(const Entry& entry);
    /// A file that is not read, but stands before the ones that are.
    void passOver(const Beginning& beginning);
    /// Leaves out what stands at this place or before it in its file.
    void skipTo(const Cursor::Place& place) { skipped_ = place; }

    /// The entries that follow are older than all taken so far.
    void goBack();
    /// No older ones are wanted.
    bool isFull() const { return printing_.last == 0; }
    /// Ends the holding back; what follows is newer.
    void release();
    /// Hands all on to the reader of the output. Throws OutputError when it cannot be written.
    void flush();

    bool printedAny() const { return printedAny_; }
    /// False when the cursor's file could not be written.
    bool cursorIsKept() const { return cursorIsKept_; }

  private:
    struct ReadingPlace {
        std::optional<std::chrono::sys_seconds> moment;  ///< of the last entry that had one
        Origin origin;
        bool atFileBegin = false;
        FileMarks marks;
    };

    bool isHeld() const { return printing_.last || printing_.reverse; }
    void append(std::string& text, const Entry& entry);
    std::string& target();
    void printContext();
    void keepAsContext(const Entry& entry);
    void write();

    TimeZone logZone_;
    Selection selection_;
    EntryWriter writer_;
    Printing printing_;
    ReadingPlace place_;
    std::optional<Cursor::Place> skipped_;
    std::deque<std::string> before_;  ///< what may be printed in front of the next one
    std::size_t contextLeft_ = 0;     ///< to be printed behind the last one
    bool gap_ = false;                ///< entries were left out since the last one
    std::deque<std::string> held_;
    std::deque<std::string> newer_;                                 ///< of what was taken before the way back
    std::string text_;                                              ///< to be written
    Cursor::Place last_;                                            ///< the last entry printed
    std::optional<std::pair<ReadingPlace, Cursor::Place>> newest_;  ///< as it was before the way back
    bool printedAny_ = false;
    bool cursorIsKept_ = true;
};

}  // namespace logreader
