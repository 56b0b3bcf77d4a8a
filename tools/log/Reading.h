#pragma once

#include "Cursor.h"
#include "Listing.h"
#include "LogFiles.h"
#include "TimeWords.h"
#include "TimeZone.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace logreader {

/// Which files are read for what is to be printed, and in which order.
struct Reading {
    Span span;
    std::optional<Cursor::Place> after;  ///< behind this entry only
    bool stepwise = false;               ///< from the end on, until the listing is full
    bool logOnly = false;                ///< no archives
};

struct ReadResult {
    bool complete = true;  ///< every file could be read
    bool found = true;     ///< the entry behind which to begin is still there
};

/// Reads the files of a log for a listing, as few as it takes to print what reading all of them would print. `read` reads
/// one, and tells whether it could.
ReadResult readFor(Listing& listing, LogFiles& files, const TimeZone& logZone, const Reading& reading,
                   const std::function<bool(const LogFile&)>& read);

}  // namespace logreader
