// The schema, the checker's rules and the module's reader know the same elements and make the same of them.
#include "ConfigChecks.h"
#include "Document.h"
#include "KnownElements.h"
#include "ModuleConfiguration.h"
#include "Selection.h"

#include <fstream>
#include <iterator>
#include <map>
#include <optional>
#include <random>
#include <regex>
#include <set>
#include <sstream>

#include <gtest/gtest.h>
#include <xercesc/util/PlatformUtils.hpp>

namespace {

using check::Setting;
using checks::in;

class ConfigCheckAgreementTest : public testing::Test {
  protected:
    struct Toolkit {
        Toolkit() { xercesc::XMLPlatformUtils::Initialize(); }
    };

    std::optional<check::ModuleSettings> readAsModule(const std::string& text) const {
        workspace_.write("config.xml", text);
        return check::readAsModule(workspace_.path("config.xml").string());
    }

    const Toolkit toolkit_;
    const support::Workspace workspace_;
    const check::KnownElements known_;
};

std::string listed(const std::vector<std::string>& texts) {
    std::string all;
    for (const std::string& text : texts) {
        all += "[" + text + "]";
    }
    return all;
}

/// All settings in one text, in the order of `Setting`, the level by its number.
std::string asText(const check::ModuleSettings& settings) {
    std::ostringstream out;
    out << settings.logFilePath << '|' << settings.fileSize << '|' << settings.logRevisionDays << '|'
        << settings.logLevel << '|' << settings.fileLogger << '|' << listed(settings.tunnelOpenMessages)
        << '|' << listed(settings.tunnelCloseMessages) << '|' << settings.abortMessage << '|'
        << listed(settings.fileOpenMessages) << '|' << listed(settings.fileCloseMessages) << '|'
        << settings.rdListner << '|' << settings.tunnelListner << '|' << settings.fileListner << '|'
        << settings.script << '|' << settings.resumeStatusFile;
    return out.str();
}

/// What the settings must be when the elements are in force that the checker selects.
std::string asSelected(const check::Document& document, const check::KnownElements& known) {
    const check::Selection selection = check::select(document, known);
    const auto text = [&](Setting setting, const std::string& usual) {
        const check::Element* const element = selection[setting];
        return element == nullptr ? usual : check::textOf(*element);
    };
    const auto list = [&](Setting setting) {
        std::vector<std::string> texts;
        if (const check::Element* const element = selection[setting]) {
            for (const check::Element* const message : check::messagesOf(*element, known)) {
                if (std::string one = check::textOf(*message); !one.empty()) {
                    texts.push_back(std::move(one));
                }
            }
        }
        return texts;
    };
    static const std::map<std::string, int> levels{{"trace", 20},  {"warn", 40},   {"error", 50},
                                                   {"force", 250}, {"audit", 254}, {"", 80}};
    const auto level = levels.find(text(Setting::LogLevel, ""));
    check::ModuleSettings settings;
    settings.logFilePath = text(Setting::LogFilePath, "..\\log\\kelp-logs.xml");
    settings.fileSize = text(Setting::FileSize, "5000000");
    settings.logRevisionDays = text(Setting::LogRevisionDays, "30");
    settings.logLevel = level == levels.end() ? 30 : level->second;
    settings.fileLogger = true;
    settings.tunnelOpenMessages = list(Setting::TunnelOpen);
    settings.tunnelCloseMessages = list(Setting::TunnelClose);
    settings.fileOpenMessages = list(Setting::FileOpen);
    settings.fileCloseMessages = list(Setting::FileClose);
    settings.abortMessage = text(Setting::Abort, "");
    settings.script = text(Setting::Script, "");
    settings.resumeStatusFile = text(Setting::ResumeStatusFile, "");
    settings.rdListner = !text(Setting::RDListner, "").empty();
    settings.tunnelListner = !text(Setting::TunnelListner, "").empty();
    settings.fileListner = !text(Setting::FileListner, "").empty();
    return asText(settings);
}

TEST_F(ConfigCheckAgreementTest, SchemaDocumentsTheElementsThatTheModuleKnows) {
    std::ifstream file(SCHEMA);
    const std::string schema{std::istreambuf_iterator<char>(file), {}};
    const std::regex element(
        "<xs:element name=\"(\\w+)\"[^>]*>\\s*(<xs:annotation>\\s*"
        "<xs:documentation>([^<]{20,}\\.)</xs:documentation>)?");
    std::set<std::string> inSchema;
    for (std::sregex_iterator found(schema.begin(), schema.end(), element), end; found != end; ++found) {
        inSchema.insert(found->str(1));
        EXPECT_TRUE(found->length(2) > 0) << found->str(1) << " has no sentence";
        if (const auto tag = known_.find(found->str(1)); tag && check::KnownElements::of(*tag).oddlySpelled) {
            EXPECT_NE(found->str(3).find("The spelling is meant."), std::string::npos) << found->str(1);
        }
    }
    inSchema.erase("ZephanConfiguration");
    std::set<std::string> inModule;
    for (const std::string& name : check::elementNames()) {
        inModule.insert(name);
    }
    EXPECT_EQ(inSchema, inModule);
    EXPECT_EQ(check::KnownElements::all().size(), check::kTagCount);
}

// For every element and every place: the module reads it there, the schema allows it and the checker has
// nothing to say of its place, all three or none.
TEST_F(ConfigCheckAgreementTest, EachElementInEachPlace) {
    using Holds = check::KnownElement::Holds;
    std::vector<std::string> parents{""};
    for (const check::KnownElement& element : check::KnownElements::all()) {
        if (element.holds == Holds::elements) {
            parents.push_back(known_.name(element.tag));
        }
    }
    const std::string defaults = asText(*readAsModule("<ZephanConfiguration/>"));
    struct Case {
        std::string text;
        bool read;
    };
    std::vector<Case> cases;
    std::string names;
    for (const std::string section : {"", "TunnelMessags", "FileMessages"}) {
        for (const std::string& parent : parents) {
            for (const check::KnownElement& element : check::KnownElements::all()) {
                const std::string& name = known_.name(element.tag);
                // Sections are read for what is in them, the file logger is on anyway, and an abort text is
                // read however deep in its section it is.
                if (element.holds == Holds::elements || name == "FileLogger" ||
                    (name == "AbortMessage" && !section.empty() && !parent.empty())) {
                    continue;
                }
                const std::string one = in(name, name == "LogLevel" ? "warn" : "1");
                const std::string inner = parent.empty() ? one : in(parent, one);
                const std::string text =
                    in("ZephanConfiguration", section.empty() ? inner : in(section, inner));
                const std::string file = std::to_string(cases.size()) + ".xml";
                const auto settings = readAsModule(text);
                ASSERT_TRUE(settings) << text;
                cases.push_back({text, asText(*settings) != defaults});
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

TEST_F(ConfigCheckAgreementTest, AnyDocumentIsReadAsTheModuleReadsIt) {
    std::ifstream file(EXAMPLE);
    const std::string example{std::istreambuf_iterator<char>(file), {}};
    const std::string small =
        "<z><FileLogging><x><FileSize>1</FileSize></x><LogLevel> "
        "warn</LogLevel><FileSize>2</FileSize></FileLogging>"
        "<TunnelMessags><OpenMessage><Message>a</Message><Message>b<!---->c</Message></OpenMessage>"
        "<AbortMessage><![CDATA[x]]>y</AbortMessage></TunnelMessags><ListnerSet><RDListner/></ListnerSet>"
        "<Script><?p d?>s</Script><RSMResumeStatusFile>r</RSMResumeStatusFile></z>";
    std::vector<std::string> pieces{
        "<!-- c -->", "<![CDATA[d]]>", "<?p i?>", "&amp;", "&#10;", "\n",
        " ",          "<w>",           "</w>",    "<w/>",  "x",     "<![CDATA[]]>"};
    for (const std::string& name : check::elementNames()) {
        for (const char* const text : {"<", "</"}) {
            pieces.push_back(text + name + ">");
        }
        pieces.push_back("<" + name + "/>");
        pieces.push_back(in(name, "t"));
    }
    std::mt19937 random(20260301);
    std::size_t accepted = 0;
    for (int i = 0; i < 1500; ++i) {
        std::string text = i % 3 == 0 ? example : small;
        for (auto count = random() % 4; count > 0; --count) {
            // At a tag, where a piece more often leaves the document well-formed.
            const std::size_t at = text.find_first_of("<>", random() % text.size());
            const std::size_t place = at == std::string::npos ? 0 : at + (text[at] == '>' ? 1 : 0);
            if (random() % 4 == 0) {
                text.erase(place, random() % 20);
            } else {
                text.insert(place, pieces[random() % pieces.size()]);
            }
        }
        const auto settings = readAsModule(text);
        const check::Document document = check::readDocument(text, check::SourceText(text));
        ASSERT_EQ(settings.has_value(), !document.refusal) << text;
        if (settings) {
            ASSERT_EQ(asSelected(document, known_), asText(*settings)) << text;
            ++accepted;
        }
    }
    EXPECT_GT(accepted, 300U);
}

TEST_F(ConfigCheckAgreementTest, EntitiesAreReadAsTheModuleReadsThem) {
    const std::string declared =
        "<!DOCTYPE z [<!ENTITY t 'text'><!ENTITY s '<Script>s</Script>'><!ENTITY f '<FileSize>7</FileSize>'>"
        "<!ENTITY m '<Message>m</Message>'><!ENTITY n '&t;'>]>";
    for (const std::string& inside :
         {in("Script", "&t;"), in("Script", "a&t;b"), in("Script", "&n;x"), std::string("&s;"),
          in("FileLogging", "&f;<FileSize>8</FileSize>"), in("FileLogging", "<x>&f;</x>"),
          in("TunnelMessags", in("OpenMessage", "<Message>a</Message>&m;<Message>b</Message>"))}) {
        const std::string text = declared + in("z", inside);
        const auto settings = readAsModule(text);
        ASSERT_TRUE(settings) << inside;
        EXPECT_EQ(asSelected(check::readDocument(text, check::SourceText(text)), known_), asText(*settings))
            << inside;
    }
}

}  // namespace
