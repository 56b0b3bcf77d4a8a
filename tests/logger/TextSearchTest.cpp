// The search for many texts finds what a search text by text finds.
#include "detection/TextSearch.h"

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

TEST(TextSearch, FindsWhatASearchTextByTextFinds) {
    std::mt19937 random(1);
    const auto number = [&](std::size_t below) { return random() % below; };
    const auto text = [&](std::size_t length, std::size_t letters) {
        std::string made(length, 'a');
        std::generate(made.begin(), made.end(), [&] { return static_cast<char>('a' + number(letters)); });
        return made;
    };
    int found = 0;
    for (int round = 0; round < 20'000; ++round) {
        // Of few letters: nearly all places of a message are endings of texts, and the search gives up.
        const std::size_t letters = 1 + number(4);
        std::vector<std::string> texts(number(3 * TextSearch::kLongList));
        for (std::string& one : texts) {
            one = text(1 + number(round % 2 == 0 ? 8 : 12) + (letters < 3 ? 8 : 0), letters);
        }
        const std::string message = text(number(round % 10 == 0 ? 2000 : 40), letters);
        const bool expected = std::any_of(texts.begin(), texts.end(), [&](const std::string& one) {
            return message.find(one) != std::string::npos;
        });
        ASSERT_EQ(TextSearch(texts).occursIn(message.c_str()), expected) << message;
        found += expected ? 1 : 0;
    }
    EXPECT_TRUE(found > 2000 && found < 18'000) << found;
    EXPECT_FALSE(TextSearch().occursIn("a"));
}

}  // namespace
