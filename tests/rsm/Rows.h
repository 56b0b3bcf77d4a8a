// Tables of this folder: scenarios, and what is to be seen in their replays.
#pragma once

#include "support/Replay.h"
#include "support/Rows.h"

#include <string>
#include <vector>

/// Remote activity begins with an audit message that holds "opened" and ends with "closed".
extern const char* const kConfiguration;
/// Starts all four families.
extern const std::string kStart;

/// Replays on a workspace of its own with the configuration above; from 2026-03-01 10:00:00 unless the
/// scenario sets the clock.
support::Replay replay(const std::string& scenario, const std::string& zone = "UTC");

/// Checks one row, as below, within a test.
void checkRow(const std::string& row);

/// A table with one test a row, called TABLE.NAME, and one row a line (a line that begins with "|", or
/// follows one that ends with ";", goes on with the row above):
///
///     NAME | ACTION; ACTION... | POLLS | MODES | PIECE | PIECE...
///
/// All families are started first unless the actions begin at 0. Polls and modes are as `Replay` gives them.
/// The pieces must stand in the trace in this order; a piece behind "!" must not stand there at all. Besides
/// the simulator's actions there are
///
///     T schedule START RATE GRACE              a ScheduleRSM command for the day
///     T again                                  starts the data source and RSM
///     T ordered (START END RATE GRACE|TEXT)    writes the schedule file: a record of the day, or a text
///     T saved (DATE TIME RATE GRACE|TEXT)      writes the resume file likewise
///     T show-order, T show-saved               shows them
///
/// where MEGABYTES stands for two of them, and "ordered ..." and "saved ..." are also pieces, as are "passed DATE TIME RATE GRACE" and
/// "failed PROPERTY...", the answers of the command.
///
/// With steps a row is a test for each of them, which takes the place of "STEP" in it.
class Table final {
  public:
    /// `line` is the one on which the rows' text begins.
    Table(const std::string& name, int line, const std::string& rows,
          const std::vector<std::string>& steps = {""}, const char* file = __builtin_FILE());
};
