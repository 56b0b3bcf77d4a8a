// Few files are opened, and what is printed is what reading all of them would print.
#include "Follower.h"
#include "Reading.h"
#include "support/Workspace.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <random>
#include <set>
#include <string>
#include <vector>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

namespace logreader {
namespace {

using std::chrono::seconds;
using std::chrono::sys_seconds;

/// A log as the module writes it, with rotations by the number of entries, while the clock is set now and then.
class WrittenLog final {
  public:
    explicit WrittenLog(unsigned seed) : random_(seed) {
        const int entriesAFile = upTo(6);
        int untilStep = 0;
        for (int count = 0; count < 120; ++count) {
            clock_ += seconds(upTo(4) - 1);
            // Not there and back within one file: that nobody sees who does not read it.
            if (upTo(40) == 1 && untilStep-- < 0) {
                clock_ += seconds(upTo(4000) - 2500);
                untilStep = entriesAFile;
            }
            if (count % entriesAFile == 0 && count > 0) {
                rotate();
            }
            entries.push_back({clock_, "entry " + std::to_string(count)});
            file_ += stamp("Date:%d-%d-%d Time:%d:%d:%d :: ") + entries.back().text;
        }
        workspace.write("log/k.xml", file_);
    }

    struct Written {
        sys_seconds moment;
        std::string text;
    };
    /// What is to be printed, of all that was written.
    std::string expected(const Span& span, const Printing& printing) const {
        std::vector<std::string> texts;
        for (const Written& entry : entries) {
            if ((!span.since || entry.moment >= *span.since) &&
                (!span.until || entry.moment <= *span.until)) {
                texts.push_back(entry.text + "\n");
            }
        }
        if (printing.last && texts.size() > *printing.last) {
            texts.erase(texts.begin(), texts.end() - static_cast<std::ptrdiff_t>(*printing.last));
        }
        if (printing.reverse) {
            std::reverse(texts.begin(), texts.end());
        }
        std::string all;
        for (const std::string& text : texts) {
            all += text;
        }
        return all;
    }

    std::string printed(const Span& span, Printing printing) const {
        printing.output = std::fopen(workspace.path("printed").c_str(), "w");
        LogFiles files({workspace.path("log/k.xml").string()}, zone_);
        Listing listing(zone_, Selection({}, span), EntryWriter(Form::cat, zone_), printing);
        Reading reading;
        reading.span = span;
        reading.stepwise = printing.last || printing.reverse;
        readFor(listing, files, zone_, reading, [&](const LogFile& file) { return printAll(file, listing); });
        listing.release();
        listing.flush();
        std::fclose(printing.output);
        return workspace.read("printed");
    }

    int upTo(int number) { return std::uniform_int_distribution<int>(1, number)(random_); }

    support::Workspace workspace;
    std::vector<Written> entries;
    /// False when the clock came to the second of an old rotation once more: then no name tells which was which.
    bool isCertain = true;

  private:
    std::string stamp(const char* format) const {
        const auto day = std::chrono::floor<std::chrono::days>(clock_);
        const std::chrono::year_month_day date(day);
        const std::chrono::hh_mm_ss time(clock_ - day);
        char text[64];
        std::snprintf(text, sizeof text, format, int{date.year()}, static_cast<int>(unsigned{date.month()}),
                      static_cast<int>(unsigned{date.day()}), static_cast<int>(time.hours().count()),
                      static_cast<int>(time.minutes().count()), static_cast<int>(time.seconds().count()));
        return text;
    }

    void rotate() {
        const std::string name = "log/k" + stamp("%d_%d_%d_%d_%d_%d");
        const bool taken = workspace.exists(name + ".xml");
        for (const auto second : {clock_ - seconds(1), clock_, clock_ + seconds(1)}) {
            isCertain = isCertain && (rotations_.count(second) == 0 || second == lastRotation_);
        }
        rotations_.insert(lastRotation_ = clock_);
        collisions_ = taken ? collisions_ + 1 : 0;
        const std::string archive = name + (taken ? std::to_string(collisions_) : "") + ".xml";
        workspace.write(archive, file_);
        const timespec written[2] = {{}, {(entries.back().moment.time_since_epoch()).count(), 0}};
        ASSERT_EQ(::utimensat(AT_FDCWD, workspace.path(archive).c_str(), written, 0), 0);
        file_.clear();
    }

    std::mt19937 random_;
    TimeZone zone_ = TimeZone::named("UTC");
    sys_seconds clock_ = std::chrono::sys_days(std::chrono::year(2026) / 3 / 1) + std::chrono::hours(12);
    std::set<sys_seconds> rotations_;
    sys_seconds lastRotation_;
    int collisions_ = 0;
    std::string file_;
};

TEST(Reading, PrintsWhatReadingAllWouldPrint) {
    int certain = 0;
    for (unsigned seed = 0; seed < 60; ++seed) {
        WrittenLog log(seed);
        if (!log.isCertain) {
            continue;
        }
        ++certain;
        const auto moment = [&] { return log.entries[static_cast<std::size_t>(log.upTo(120)) - 1].moment; };
        for (int query = 0; query < 6; ++query) {
            Span span;
            Printing printing;
            if (query % 2 == 1) {
                span.since = moment();
            }
            if (query >= 4) {
                span.until = moment();
            }
            if (query == 2 || query == 3) {
                printing.last = static_cast<std::size_t>(log.upTo(30));
                printing.reverse = seed % 2 == 0;
            }
            EXPECT_EQ(log.printed(span, printing), log.expected(span, printing))
                << "seed " << seed << ", query " << query;
        }
    }
    EXPECT_GT(certain, 20);
}

}  // namespace
}  // namespace logreader
