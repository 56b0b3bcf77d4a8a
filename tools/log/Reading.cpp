#include "Reading.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace logreader {

namespace {

using std::chrono::sys_seconds;

/// Files that follow one another, and how many of them are only passed over.
struct Part {
    std::vector<LogFile> files;
    std::size_t passedOver = 0;

    auto firstRead() const { return files.begin() + static_cast<std::ptrdiff_t>(passedOver); }
};

std::optional<std::size_t> indexOf(const std::string& mark, const std::vector<LogFile>& files) {
    FileMarks marks;
    for (std::size_t index = 0; index < files.size(); ++index) {
        const Beginning& beginning = files[index].beginning;
        if (beginning.mark != 0 && marks.next(beginning.clock, beginning.mark) == mark) {
            return index;
        }
    }
    return std::nullopt;
}

class Reader final {
  public:
    Reader(LogFiles& files, const TimeZone& logZone, const Reading& reading)
        : files_(files), logZone_(logZone), reading_(reading) {}

    /// The next part towards the oldest file; nothing when no more is to be read.
    std::optional<Part> older() {
        while (!atEnd_) {
            Part part{files_.older()};
            if (part.files.empty()) {
                return std::nullopt;
            }
            if (reading_.logOnly) {
                part.passedOver = part.files.size() - 1;
                atEnd_ = true;
            }
            if (const auto index =
                    reading_.after ? indexOf(reading_.after->mark, part.files) : std::nullopt) {
                found_ = true;
                // Rather again than not at all: if the order is unsure, new ones may stand in front of it.
                if (!part.files[*index].isArchive() || !files_.orderIsUnsure()) {
                    part.passedOver = *index;
                    atEnd_ = true;
                }
            }
            atEnd_ = atEnd_ || (reading_.span.since && !files_.mayHoldFrom(*reading_.span.since));
            if (!isTooLate(part)) {
                return part;
            }
        }
        return std::nullopt;
    }
    /// Or none was asked for, or it lies before the span.
    bool found() const { return found_ || !reading_.after || atEnd_; }

  private:
    bool isTooLate(const Part& part) const {
        return reading_.span.until && !files_.clockWasSetBack() &&
               std::all_of(part.files.begin(), part.files.end(), [this](const LogFile& file) {
                   return file.isArchive() && file.beginning.clock &&
                          logZone_.momentOf(*file.beginning.clock, sys_seconds::min()) > *reading_.span.until;
               });
    }

    LogFiles& files_;
    const TimeZone& logZone_;
    const Reading& reading_;
    bool atEnd_ = false;
    bool found_ = false;
};

}  // namespace

ReadResult readFor(Listing& listing, LogFiles& files, const TimeZone& logZone, const Reading& reading,
                   const std::function<bool(const LogFile&)>& read) {
    ReadResult result;
    result.complete = files.isWhole();
    const auto readOne = [&](const LogFile& file) { result.complete = read(file) && result.complete; };
    const auto passOver = [&](const Part& part) {
        std::for_each(part.files.begin(), part.firstRead(),
                      [&](const LogFile& file) { listing.passOver(file.beginning); });
    };
    if (reading.stepwise) {
        Reader reader(files, logZone, reading);
        // The first part has all log files that were named: one that cannot be read is told in any case.
        for (auto part = reader.older(); part; part = listing.isFull() ? std::nullopt : reader.older()) {
            passOver(*part);
            std::for_each(part->firstRead(), part->files.cend(), readOne);
            listing.goBack();
        }
        result.found = reader.found();
        return result;
    }
    std::vector<std::uint32_t> places;  // from the newest on; the files themselves would take too much room
    Part oldest;
    const auto collect = [&] {
        Reader reader(files, logZone, reading);
        places.clear();
        while (auto part = reader.older()) {
            oldest = std::move(*part);
            std::transform(oldest.files.crbegin(), std::make_reverse_iterator(oldest.firstRead()),
                           std::back_inserter(places), std::mem_fn(&LogFile::place));
        }
        result.found = reader.found();
    };
    if (reading.span.until) {
        files.leaveOutFrom(*reading.span.until);
    }
    collect();
    if (reading.span.until && files.clockWasSetBack()) {
        files.restart();
        collect();
    }
    passOver(oldest);
    std::for_each(places.rbegin(), places.rend(), [&](std::uint32_t place) { readOne(files.at(place)); });
    return result;
}

}  // namespace logreader
