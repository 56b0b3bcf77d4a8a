// The timeline with less to read.
#pragma once

#include "sim/trace/Event.h"

#include <cstddef>
#include <string>

namespace sim {

/// Lines for a person, of no more than `width` columns: no log lines and their echo, no sleeps, polls that
/// follow each other in one line, nothing twice.
class BriefTimeline final {
  public:
    /// `live`: somebody waits for the lines, and hears every minute that polls go on.
    BriefTimeline(std::size_t width, bool live) : width_(width), live_(live) {}

    /// The lines that are complete with this event.
    std::string add(const Event& event);
    /// The rest, at the end.
    std::string end();

  private:
    std::string fitted(std::string line) const;

    std::size_t width_;
    bool live_;
    int polls_ = 0;
    Event firstPoll_;
    Event lastPoll_;
    std::string previous_;
};

}  // namespace sim
