// What becomes of bytes that a terminal or a JSON reader would act upon.
#include "common/ShownText.h"
#include "support/Rows.h"

#include <nlohmann/json.hpp>
#include <string>

#include <gtest/gtest.h>

namespace logreader {
namespace {

std::string shown(std::string_view text) {
    std::string target;
    appendShown(target, text, ">");
    return target;
}

std::string json(std::string_view text) {
    std::string target;
    appendJson(target, text);
    return target;
}

using namespace std::string_view_literals;

struct FormRow {
    support::RowName name;
    std::string_view text;
    const char* shown;
    const char* json;
};

const support::Rows<FormRow> formRows(
    "ShownText/Forms",
    {
        {"plain text", "plain text, longer than a word", "plain text, longer than a word",
         R"("plain text, longer than a word")"},
        {"quotes and a backslash", R"(..\log "x")", R"(..\log "x")", R"("..\\log \"x\"")"},
        {"signs at the end of a word", R"(1234567\89"123456\)", R"(1234567\89"123456\)",
         R"("1234567\\89\"123456\\")"},
        {"line ends", "a\tb\nc\r\nd\re", "a\tb\n>c\n>d\\x0de", R"("a\tb\nc\u000d\nd\u000de")"},
        {"colours and a bell", "\x1b[31mred\x07", R"(\x1b[31mred\x07)", R"("\u001b[31mred\u0007")"},
        {"null and delete", "nul \0 del \x7f"sv, R"(nul \x00 del \x7f)", R"("nul \u0000 del \u007f")"},
        {"characters of more bytes", "Grüße, 日本 🛠", "Grüße, 日本 🛠",
         "\"Grüße, 日本 🛠\""},
        {"Latin 1", "Latin \xfc\xdf.", R"(Latin \xfc\xdf.)", R"("Latin \u00fc\u00df.")"},
        {"cut character", "cut \xe6\x97", R"(cut \xe6\x97)", R"("cut \u00e6\u0097")"},
        {"control character of two bytes",
         "CSI \xc2\x9b"
         "31m",
         R"(CSI \xc2\x9b31m)", R"("CSI \u009b31m")"},
        {"overlong", "overlong \xc0\xaf \xe0\x80\xaf \xf0\x80\x80\xaf",
         R"(overlong \xc0\xaf \xe0\x80\xaf \xf0\x80\x80\xaf)",
         R"("overlong \u00c0\u00af \u00e0\u0080\u00af \u00f0\u0080\u0080\u00af")"},
        {"surrogate", "surrogate \xed\xa0\x80", R"(surrogate \xed\xa0\x80)",
         R"("surrogate \u00ed\u00a0\u0080")"},
        {"beyond the last character", "beyond \xf4\x90\x80\x80 \xff", R"(beyond \xf4\x90\x80\x80 \xff)",
         R"("beyond \u00f4\u0090\u0080\u0080 \u00ff")"},
        {"a first byte of five or more", "\xf8\x90\x80\x80 \xfb\x8c\xb1\xb2 \xff\x80\x80\x80",
         R"(\xf8\x90\x80\x80 \xfb\x8c\xb1\xb2 \xff\x80\x80\x80)",
         R"("\u00f8\u0090\u0080\u0080 \u00fb\u008c\u00b1\u00b2 \u00ff\u0080\u0080\u0080")"},
        {"turned around", "turned \u202egnp.exe\u2066 \u2028", R"(turned \u202egnp.exe\u2066 \u2028)",
         R"("turned \u202egnp.exe\u2066 \u2028")"},
    },
    [](const FormRow& row) {
        EXPECT_EQ(shown(row.text), row.shown);
        EXPECT_EQ(json(row.text), row.json);
    });

// Each byte at each place of a word, since plain text is looked through by words.
TEST(ShownText, EveryByteAtEveryPlace) {
    for (int byte = 0; byte < 256; ++byte) {
        for (std::size_t place = 0; place < 17; ++place) {
            std::string text(17, 'a');
            text[place] = static_cast<char>(byte);
            std::string expected = text;
            if ((byte < 0x20 && byte != '\t' && byte != '\n') || byte >= 0x7F) {
                char code[8];
                std::snprintf(code, sizeof code, "\\x%02x", static_cast<unsigned>(byte));
                expected.replace(place, 1, code);
            } else if (byte == '\n') {
                expected.insert(place + 1, ">");
            }
            EXPECT_EQ(shown(text), expected);
            const nlohmann::json read = nlohmann::json::parse(json(text), nullptr, false);
            ASSERT_TRUE(read.is_string()) << byte;
            if (byte < 0x80) {
                EXPECT_EQ(read.get<std::string>(), text);
            }
        }
    }
}

}  // namespace
}  // namespace logreader
