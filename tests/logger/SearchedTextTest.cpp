#include "logging/SearchedText.h"

#include <random>
#include <string>

#include <gtest/gtest.h>

// Against plain `find`, on texts that nearly occur: few letters, all lengths and alignments.
TEST(SearchedText, FindsWhatPlainSearchFinds) {
    std::mt19937 random(7);
    const auto text = [&](unsigned int longest) {
        std::string result(random() % (longest + 1), 'a');
        for (char& letter : result) {
            letter = static_cast<char>('a' + random() % 3);
        }
        return result;
    };
    for (int i = 0; i < 20000; ++i) {
        const std::string message = text(60);
        std::string wanted = random() % 2 == 0 || message.empty()
                                 ? text(9)
                                 : message.substr(random() % message.size(), random() % 30);
        ASSERT_EQ(SearchedText(message).contains(wanted), message.find(wanted) != std::string::npos)
            << '"' << wanted << "\" in \"" << message << '"';
    }
}
