// The schema, the checker's rules and the module's reader know the same elements and make the same of them.
#include "ConfigChecks.h"
#include "KnownElements.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <regex>
#include <set>

#include <gtest/gtest.h>

namespace {

using checks::in;

class ConfigCheckAgreementTest : public testing::Test {
  protected:
    const support::Workspace workspace_;
};

/// Whether a document gives a setting; a list without a text is none.
bool givesSetting(const std::string& text) {
    const config::Document document = config::readDocument(text);
    const config::TakenSettings taken = config::takeSettings(document);
    return std::any_of(taken.readings.begin(), taken.readings.end(), [](const config::Reading& reading) {
        return reading.row->kind != config::Kind::messages || !config::messagesOf(*reading.element).empty();
    });
}

TEST_F(ConfigCheckAgreementTest, SchemaDocumentsTheElementsThatTheModuleKnows) {
    std::ifstream file(SCHEMA);
    const std::string schema{std::istreambuf_iterator<char>(file), {}};
    const std::regex element(
        "<xs:element name=\"(\\w+)\"[^>]*>\\s*(<xs:annotation>\\s*"
        "<xs:documentation>([^<]{20,})</xs:documentation>)?");
    std::set<std::string> inSchema;
    for (std::sregex_iterator found(schema.begin(), schema.end(), element), end; found != end; ++found) {
        inSchema.insert(found->str(1));
        EXPECT_TRUE(found->length(2) > 0) << found->str(1) << " has no sentence";
        if (const auto tag = check::findTag(found->str(1)); tag && check::isOddlySpelled(*tag)) {
            EXPECT_NE(found->str(3).find("The spelling is meant."), std::string::npos) << found->str(1);
        }
    }
    inSchema.erase("ZephanConfiguration");
    std::set<std::string> inModule;
    for (const check::KnownElement& known : check::knownElements()) {
        inModule.emplace(check::kTags[known.tag]);
    }
    EXPECT_EQ(inSchema, inModule);
    EXPECT_EQ(inModule.size(), TagNames::Count);
}

// For every element and every place: the module reads it there, the schema allows it and the checker has
// nothing to say of its place, all three or none.
TEST_F(ConfigCheckAgreementTest, EachElementInEachPlace) {
    std::vector<std::string> parents{""};
    for (const check::KnownElement& element : check::knownElements()) {
        if (element.holdsElements) {
            parents.emplace_back(check::kTags[element.tag]);
        }
    }
    struct Case {
        std::string text;
        bool read;
    };
    std::vector<Case> cases;
    std::string names;
    for (const std::string section : {"", "TunnelMessags", "FileMessages"}) {
        for (const std::string& parent : parents) {
            for (const check::KnownElement& element : check::knownElements()) {
                const std::string name(check::kTags[element.tag]);
                // Sections are read for what is in them, the file logger is on anyway, and an abort text is
                // read however deep in its section it is.
                if (element.holdsElements || name == "FileLogger" ||
                    (name == "AbortMessage" && !section.empty() && !parent.empty())) {
                    continue;
                }
                const std::string one = in(name, name == "LogLevel" ? "warn" : "1");
                const std::string inner = parent.empty() ? one : in(parent, one);
                const std::string text =
                    in("ZephanConfiguration", section.empty() ? inner : in(section, inner));
                const std::string file = std::to_string(cases.size()) + ".xml";
                cases.push_back({text, givesSetting(text)});
                workspace_.write(file, text);
                names += " " + file;
            }
        }
    }
    const std::string checked = "\n" + checks::check(workspace_, "--quiet" + names).printed;
    const std::string valid = "\n" + checks::validate(workspace_, names);
    std::size_t read = 0;
    for (std::size_t i = 0; i < cases.size(); ++i) {
        const std::string start = "\n" + std::to_string(i) + ".xml";
        bool misplaced = false;
        for (std::size_t at = 0; (at = checked.find(start + ":", at)) != std::string::npos; ++at) {
            const std::string line = checked.substr(at + 1, checked.find('\n', at + 1) - at - 1);
            misplaced = misplaced || line.ends_with("[misplaced]");
        }
        EXPECT_NE(misplaced, cases[i].read) << cases[i].text;
        EXPECT_EQ(valid.find(start + " validates") != std::string::npos, cases[i].read) << cases[i].text;
        read += cases[i].read ? 1 : 0;
    }
    // Eleven elements with a place of their own, and "Message" with four.
    EXPECT_EQ(read, 15U);
}

}  // namespace
