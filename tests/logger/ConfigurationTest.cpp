// What the configuration reader makes of files, good, careless and hostile ones.
#include "config/XMLConfigData.h"
#include "platform/agent/Logging.h"
#include "support/Rows.h"
#include "support/Workspace.h"
#include "support/Xml.h"

#include <array>
#include <malloc.h>
#include <random>
#include <regex>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <sys/inotify.h>
#include <unistd.h>

namespace {

using support::in;
using support::laughs;
using support::repeated;
using support::typed;

const std::string kRefused =
    " Error Parsing the File: FILE !!! \n  Check the File Location & Format if the file is present \n ";

std::string listed(const std::string* texts) {
    std::string text = texts == nullptr ? "absent" : "";
    for (; texts != nullptr && !texts->empty(); ++texts) {
        text += "[" + *texts + "]";
    }
    return text;
}

/// The settings that differ from the defaults, as "name=value, ...".
std::string changes(const ConfigData& data) {
    const struct {
        const char* name;
        std::string value;
        const char* usual;
    } settings[] = {{"path", data.getLogFilePath(), "..\\log\\kelp-logs.xml"},
                    {"size", data.getFileSize(), "5000000"},
                    {"days", data.getLogRevisionDays(), "30"},
                    {"level", std::to_string(data.getLogLevel()), "80"},
                    {"logger", data.getFileLogger() ? "on" : "off", "on"},
                    {"tunnel open", listed(data.getTunnelOpenMessages()), "absent"},
                    {"tunnel close", listed(data.getTunnelCloseMessages()), "absent"},
                    {"file open", listed(data.getFileOpenMessages()), "absent"},
                    {"file close", listed(data.getFileCloseMessages()), "absent"},
                    {"abort", data.getAbortMessage(), ""},
                    {"script", data.getScript(), ""},
                    {"resume", data.getRSMResumeStatusFile(), ""},
                    {"RD", data.getRDListner() ? "on" : "off", "off"},
                    {"tunnel", data.getTunnelListner() ? "on" : "off", "off"},
                    {"file", data.getFileListner() ? "on" : "off", "off"}};
    std::string text;
    for (const auto& setting : settings) {
        if (setting.value != setting.usual) {
            text += (text.empty() ? "" : ", ") + std::string(setting.name) + "=" + setting.value;
        }
    }
    return text;
}

class Configuration {
  public:
    Configuration() = default;
    Configuration(const Configuration&) = delete;
    Configuration& operator=(const Configuration&) = delete;
    ~Configuration() { XMLConfigData::destroyInstance(); }

    /// Loads a file with this text into the object there is: what it then holds, or the load's error.
    std::string loadAgain(const std::string& document) const {
        workspace_.write("config.xml", document);
        return loadFile("config.xml");
    }
    std::string load(const std::string& document) const {
        XMLConfigData::destroyInstance();
        return loadAgain(document);
    }
    std::string loadFile(const std::string& name) const {
        const std::string path = workspace_.path(name).string();
        try {
            return changes(*loadConfiguration(path));
        } catch (const std::runtime_error& error) {
            std::string text = error.what();
            const std::size_t found = text.find(path);
            return found == std::string::npos ? text : text.replace(found, path.size(), "FILE");
        }
    }

    const support::Workspace workspace_;
};

class ConfigurationTest : public testing::Test, protected Configuration {};

std::string logging(const std::string& inside) {
    return in("FileLogging", inside);
}
std::string level(const std::string& text) {
    return logging(in("LogLevel", text));
}
std::string opening(const std::string& inside) {
    return in("TunnelMessags", in("OpenMessage", inside));
}
std::string closing(const std::string& inside) {
    return in("FileMessages", in("CloseMessage", inside));
}

struct ElementRow {
    support::RowName name;
    std::string inside;  ///< of the root
    const char* expected;
};

const support::Rows<ElementRow> elementRows(
    "Configuration/Elements",
    {
        {"nothing", "", ""},
        {"trace", level("trace"), "level=20"},
        {"info", level("info"), "level=30"},
        {"warn", level("warn"), "level=40"},
        {"error", level("error"), "level=50"},
        {"force", level("force"), "level=250"},
        {"audit", level("audit"), "level=254"},
        {"capital letter", level("Error"), "level=30"},
        {"blanks around", level("\t error  "), "level=50"},
        {"line end before", level("\nerror"), "level=30"},
        {"line end behind", level("error\n"), "level=30"},
        {"nothing but blanks", level(" \t "), ""},
        {"nested elements", logging("<a><b><LogFilePath>l.xml</LogFilePath></b></a>"), "path=l.xml"},
        {"the first in document order", logging("<a><FileSize>1</FileSize></a><FileSize>2</FileSize>"),
         "size=1"},
        {"an empty one counts as the first", logging("<FileSize/><FileSize>2</FileSize>"), ""},
        {"a second FileLogging",
         logging("<FileSize>1</FileSize><LogFilePath>a</LogFilePath>") +
             logging("<FileSize>2</FileSize><LogFilePath/>"),
         "path=a, size=2"},
        {"any text switches on", in("ListnerSet", "<RDListner>false</RDListner><FileListner>0</FileListner>"),
         "RD=on, file=on"},
        {"a second ListnerSet",
         in("ListnerSet", "<RDListner>1</RDListner>") + in("ListnerSet", "<RDListner/>"), ""},
        {"messages among other nodes",
         opening("<Message>a</Message>t<Message> </Message><other>x</other><!-- c --><Message> b </Message>"),
         "tunnel open=[a][b]"},
        {"no message", opening("text<!-- c --><other/>"), "tunnel open="},
        {"a nested message", opening("<w><Message>a</Message></w>"), "tunnel open="},
        {"an empty list", opening(""), ""},
        {"the last list counts",
         closing("<Message>a</Message><Message>b</Message>") + closing("<Message>c</Message>"),
         "file close=[c]"},
        {"Script in a section", logging("<Script>s</Script>"), ""},
        {"other spellings of Script", "<script>s</script><Scripts>s</Scripts>", ""},
        // The first node's value counts, whatever it is.
        {"a comment first", "<Script><!--c--> s</Script>", "script=c"},
        {"an element first", "<Script><b/>s</Script>", ""},
        {"references", "<Script> a &lt;&#65;&amp; b<b/>c</Script>", "script=a <A& b"},
        {"CDATA", "<Script><![CDATA[<x>]]></Script>", "script=<x>"},
        {"an entity", "<Script>&e;</Script>", ""},
        {"a text before an entity", "<Script>a&e;</Script>", "script=a"},
        {"schema location",
         "<s x:noNamespaceSchemaLocation='no' xmlns:x='http://www.w3.org/2001/XMLSchema-instance'/>", ""},
    },
    [](const ElementRow& row) {
        EXPECT_EQ(Configuration().load("<!DOCTYPE z [<!ENTITY e 's'>]><z>" + row.inside + "</z>"),
                  row.expected);
    });

TEST_F(ConfigurationTest, WholeDocuments) {
    EXPECT_EQ(load("<Script>s</Script>"), "");
    std::string wide = {'\xff', '\xfe'};
    for (const char one : std::string("<z><Script>s</Script></z>")) {
        wide += {one, '\0'};
    }
    EXPECT_EQ(load(wide), "script=s");
    EXPECT_EQ(load("<?xml version='1.0' encoding='Shift_JIS'?><z><Script>s</Script></z><!-- \x83\x41 -->\n"),
              "script=s");
    EXPECT_EQ(load("<z>" + repeated("<a>t</a>", 300) + "<Script>s</Script></z>"), "script=s")
        << "many beside each other are not deep";
    XMLConfigData::destroyInstance();
    EXPECT_EQ(
        changes(*loadConfiguration(EXAMPLE)),
        "path=log/kelp-logs.xml, level=30, tunnel open=[Remote tunnel opened][Desktop session opened], "
        "tunnel close=[Remote tunnel closed][Desktop session closed], file open=[File transfer started], "
        "file close=[File transfer finished], abort=All tunnels aborted, "
        "script=echo \"[modality script: remote access begins]\", resume=state/resume.xml, RD=on, tunnel=on, "
        "file=on");
}

TEST_F(ConfigurationTest, SecondLoadReadsTheFirstFileIntoTheSameObject) {
    EXPECT_EQ(load("<z><Script>s</Script><FileLogging><FileSize>1</FileSize></FileLogging></z>"),
              "size=1, script=s");
    workspace_.write("other.xml", "<z><Script>other</Script></z>");
    workspace_.write("config.xml", "<z><FileLogging><FileSize>2</FileSize></FileLogging></z>");
    EXPECT_EQ(loadFile("other.xml"), "size=2, script=s");
    EXPECT_EQ(loadAgain("<z><Script>t</Script>"), kRefused);
    EXPECT_EQ(changes(*XMLConfigData::instance()), "size=2, script=s");
}

const std::string kNested = repeated("<a>", 256) + repeated("</a>", 256);
const std::string kFull = "<z>" + std::string((1U << 20U) - 7, ' ') + "</z>";

struct HostileRow {
    support::RowName name;
    std::string document;  ///< SECRET stands for the path of a file outside
};

const support::Rows<HostileRow> hostileRows(
    "Configuration/Hostile",
    {
        {"external subset", "<!DOCTYPE z SYSTEM SECRET><z/>"},
        {"public external subset", "<!DOCTYPE z PUBLIC 'p' SECRET><z/>"},
        {"external entity", typed("<!ENTITY e SYSTEM SECRET>", "<z><Script>&e;</Script></z>")},
        {"external entity, unused", typed("<!ENTITY e SYSTEM SECRET>", "<z/>")},
        {"external parameter entity", typed("<!ENTITY % e SYSTEM SECRET> %e;", "<z/>")},
        {"unparsed entity", typed("<!NOTATION n SYSTEM 'n'><!ENTITY e SYSTEM SECRET NDATA n>", "<z/>")},
        {"billion laughs", typed(laughs("", "&", "ha"), "<z><Script>&a12;</Script></z>")},
        {"billion silences", typed(laughs("", "&", ""), "<z>&a12;</z>")},
        {"billion elements", typed(laughs("", "&", "<b/>"), "<z>&a12;</z>")},
        {"billion laughs in an attribute", typed(laughs("", "&", "ha"), "<z t='&a12;'/>")},
        {"billion laughs by default", typed(laughs("", "&", "ha") + "<!ATTLIST z t CDATA '&a12;'>", "<z/>")},
        {"billion declarations", typed(laughs("% ", "&#37;", "<!ENTITY x 'y'>") + "%a12;", "<z/>")},
        {"quadratic",
         typed("<!ENTITY e '" + std::string(100000, 'x') + "'>", "<z>" + repeated("&e;", 10000) + "</z>")},
        {"quadratic by default", typed("<!ATTLIST b t CDATA '" + std::string(100000, 'x') + "'>",
                                       "<z>" + repeated("<b/>", 10000) + "</z>")},
        {"entity within itself", typed("<!ENTITY e '&f;'><!ENTITY f '&e;'>", "<z>&e;</z>")},
        {"257 deep", "<a>" + kNested + "</a>"},
        {"257 deep, empty element", repeated("<a>", 256) + "<b/>" + repeated("</a>", 256)},
        {"above 1 MiB", kFull + " "},
        {"NUL", "<z><Script>s" + std::string(1, '\0') + "</Script></z>"},
        {"reference to NUL", "<z>&#0;</z>"},
        {"no such encoding", "<?xml version='1.0' encoding='no-such'?><z/>"},
        {"no UTF-8", "<z>\xc3(</z>"},
        {"nothing", ""},
        {"blanks", " \n"},
        {"no XML", "FileSize=1"},
        {"two roots", "<z/><z/>"},
        {"undefined entity", "<z>&e;</z>"},
        {"NUL behind the root", "<z/>" + std::string(1, '\0')},
        {"a second document behind a NUL", "<z/>\n" + std::string(1, '\0') + "<z/>"},
        {"character cut off behind the root", "<z/>\n\xe2\x82"},
        {"character cut off behind the root, of a code page",
         "<?xml version='1.0' encoding='Shift_JIS'?><z/>\x83"},
        {"half a character behind the root", "\xff\xfe<" + std::string("\0z\0/\0>\0x", 8)},
    },
    [](const HostileRow& row) {
        Configuration configuration;
        configuration.workspace_.write("secret", "top secret");
        const std::string secret = configuration.workspace_.path("secret").string();
        const int watch = ::inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
        ASSERT_GE(::inotify_add_watch(watch, secret.c_str(), IN_OPEN), 0);
        const auto events = [&] { return ::read(watch, std::array<char, 4096>().data(), 4096); };
        EXPECT_EQ(
            configuration.load(std::regex_replace(row.document, std::regex("SECRET"), "'" + secret + "'")),
            kRefused);
        EXPECT_EQ(changes(*XMLConfigData::instance()), "");
        EXPECT_EQ(configuration.load("<z><Script>good</Script></z>"), "script=good");
        EXPECT_EQ(events(), -1) << "the file outside the document was opened";
        EXPECT_EQ(configuration.workspace_.read("secret"), "top secret");
        EXPECT_GT(events(), 0) << "an opening does not show";
        ::close(watch);
    });

TEST_F(ConfigurationTest, LimitsAndMissingFiles) {
    EXPECT_EQ(load(kNested), "");
    EXPECT_EQ(load(kFull), "");
    XMLConfigData::destroyInstance();
    EXPECT_EQ(loadFile("missing.xml"), kRefused);
    XMLConfigData::destroyInstance();
    EXPECT_EQ(loadFile("log"), kRefused) << "a directory";
}

TEST_F(ConfigurationTest, AnyBytesEndInSettingsOrTheError) {
    const std::string valid =
        "<?xml version='1.0'?><!DOCTYPE z [<!ENTITY e "
        "'s'>]><z><FileLogging><FileSize>1</FileSize></FileLogging>"
        "<TunnelMessags><OpenMessage><Message>&e;</Message></OpenMessage></TunnelMessags><!-- c --></z>";
    for (std::size_t length = 0; length < valid.size(); ++length) {
        EXPECT_EQ(load(valid.substr(0, length)), kRefused) << length;
    }
    std::mt19937 random(20260301);
    for (int i = 0; i < 300; ++i) {
        std::string text = valid;
        for (auto count = random() % 4 + 1; count > 0; --count) {
            text[random() % text.size()] = static_cast<char>(random());
        }
        const std::string outcome = load(text);
        EXPECT_TRUE(outcome == kRefused || outcome.find("rror") == std::string::npos) << outcome;
    }
    EXPECT_EQ(load(valid), "size=1, tunnel open=");
}

// A start that is held up for long does not keep others back for ever.
TEST_F(ConfigurationTest, LoadsThatOverlap) {
    const auto loads = [] {
        for (int i = 0; i < 50; ++i) {
            EXPECT_EQ(loadConfiguration(EXAMPLE)->getLogLevel(), level::kInfo);
        }
    };
    std::thread other(loads);
    loads();
    other.join();
}

// The address sanitizer finds the same by itself.
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
TEST_F(ConfigurationTest, FailedLoadsLeaveNothingBehind) {
    const auto heapAfter = [&](int loads) {
        while (loads-- > 0) {
            load(typed(laughs("", "&", "ha"), "<z><Script>&a12;</Script></z>"));
        }
        XMLConfigData::destroyInstance();
        const auto usage = ::mallinfo2();
        return usage.uordblks + usage.hblkhd;
    };
    const std::size_t before = heapAfter(10);
    EXPECT_LT(heapAfter(60), before + 3000);
}
#endif

}  // namespace
