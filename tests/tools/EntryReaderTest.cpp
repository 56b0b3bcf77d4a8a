// How the bytes of a log file become entries.
#include "EntryReader.h"
#include "support/Rows.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace logreader {
namespace {

/// All entries, as "OFFSET CLOCK text" with the clock as seconds of 1 March 2026, "-" without one.
std::vector<std::string> entriesOf(const std::string& bytes, std::size_t atOnce = std::string::npos) {
    std::size_t done = 0;
    EntryReader reader([&](char* buffer, std::size_t size) {
        const std::size_t length = std::min({size, bytes.size() - done, atOnce});
        std::memcpy(buffer, bytes.data() + done, length);
        done += length;
        return length;
    });
    constexpr auto kDay = std::chrono::local_days(std::chrono::year(2026) / 3 / 1);
    std::vector<std::string> entries;
    for (Entry entry; reader.next(entry) || reader.rest(entry);) {
        entries.push_back(std::to_string(entry.offset) + " " +
                          (entry.clock ? std::to_string((*entry.clock - kDay).count()) : "-") + " " +
                          std::string(entry.text));
    }
    return entries;
}

const std::string kOne = "Date:2026-3-1 Time:0:0:1 :: ";
const std::string kTwo = "Date:2026-3-1 Time:0:0:2 :: ";

struct EntriesRow {
    support::RowName name;
    std::string bytes;
    std::vector<std::string> expected;
};

const support::Rows<EntriesRow> entriesRows(
    "EntryReader/Entries",
    {
        {"nothing", "", {}},
        {"back to back", kOne + "a" + kTwo + "b", {"0 1 a", "29 2 b"}},
        {"line ends before and behind", kOne + "\n a \r\n" + kTwo + "b\n\n", {"0 1 a", "34 2 b"}},
        {"line ends inside", kOne + "a\n  b\n" + kTwo, {"0 1 a\n  b", "34 2 "}},
        {"an empty message", kOne + kTwo + "b", {"0 1 ", "28 2 b"}},
        {"longest and shortest numbers",
         "Date:2026-3-1 Time:23:59:59 :: aDate:2026-3-1 Time:0:0:0 :: b",
         {"0 86399 a", "32 0 b"}},
        {"foreign lines before the first entry",
         "one\n\ntwo\nthr" + kOne + "a",
         {"0 - one", "5 - two", "9 - thr", "12 1 a"}},
        {"nothing but foreign lines", "one\ntwo", {"0 - one", "4 - two"}},
        {"a torn stamp, then a whole one",
         kOne + "aDate:2026-3-1 Ti" + kTwo + "b",
         {"0 1 aDate:2026-3-1 Ti", "45 2 b"}},
        {"a torn stamp at the end",
         kOne + "aDate:2026-3-1 Time:0:0:2 ::",
         {"0 1 aDate:2026-3-1 Time:0:0:2 ::"}},
        {"letters that begin like a stamp",
         kOne + "DDaDatDate:" + kTwo + "DD" + kTwo + "D",
         {"0 1 DDaDatDate:", "39 2 DD", "69 2 D"}},
        {"a message that quotes an entry is taken for one",
         kOne + "he wrote: " + kTwo + "x",
         {"0 1 he wrote:", "38 2 x"}},
    },
    [](const EntriesRow& row) { EXPECT_EQ(entriesOf(row.bytes), row.expected); });

TEST(EntryReader, TakesNoOtherFormForAStamp) {
    for (const char* const form :
         {"Date:2026-03-1 Time:0:0:1 :: ", "Date:2026-3-01 Time:0:0:1 :: ", "Date:2026-3-1 Time:00:0:1 :: ",
          "Date:26-3-1 Time:0:0:1 :: ", "Date:12026-3-1 Time:0:0:1 :: ", "Date:2026-13-1 Time:0:0:1 :: ",
          "Date:2026-2-29 Time:0:0:1 :: ", "Date:2026-3-1 Time:24:0:1 :: ", "Date:2026-3-1 Time:0:60:1 :: ",
          "Date:2026-3-1 Time:0:0:61 :: ", "Date:2026-3-1 Time:0:0:1 ::", "Date:2026-3-1  Time:0:0:1 :: ",
          "date:2026-3-1 Time:0:0:1 :: ", "Date:2026-3-1 Time:0:0:-1 :: ", "Date:2026-3-1 Time:0:0 :: "}) {
        EXPECT_EQ(entriesOf(kOne + "a " + form).size(), 1U) << form;
    }
    EXPECT_EQ(entriesOf(kOne + "a Date:2028-2-29 Time:0:0:60 :: ").size(), 2U);
}

TEST(EntryReader, TextBeyondTheLongestMessageBelongsToNoEntry) {
    const std::string longest(10239, 'm');
    EXPECT_EQ(entriesOf(kOne + longest + kTwo + "b"),
              (std::vector<std::string>{"0 1 " + longest, "10267 2 b"}));
    EXPECT_EQ(entriesOf(kOne + longest + "\n" + kTwo + "b"),
              (std::vector<std::string>{"0 1 " + longest, "10268 2 b"}));
    EXPECT_EQ(entriesOf(kOne + longest + "x\ny\n" + kTwo + "b"),
              (std::vector<std::string>{"0 1 " + longest, "10267 - x", "10269 - y", "10271 2 b"}));
}

TEST(EntryReader, DoesNotDependOnHowTheBytesArrive) {
    std::string bytes = "foreign\nDate:" + kOne + "aDate:2026-3-" + kTwo + "\nb\n";
    for (int count = 0; count < 40; ++count) {
        bytes += kOne +
                 std::string(static_cast<std::size_t>(count) * 331 % 12000, count % 2 == 0 ? 'D' : '\n') +
                 "e" + kTwo;
    }
    bytes += std::string(25000, 'x') + "\n" + std::string(300000, '\n') + kOne + std::string("\0\xff", 2) +
             "Date:2026";
    const auto expected = entriesOf(bytes);
    ASSERT_GT(expected.size(), 80U);
    for (const std::size_t atOnce : {1U, 2U, 3U, 7U, 29U, 33U, 34U, 1000U, 65536U, 262143U}) {
        EXPECT_EQ(entriesOf(bytes, atOnce), expected) << atOnce;
    }
}

}  // namespace
}  // namespace logreader
