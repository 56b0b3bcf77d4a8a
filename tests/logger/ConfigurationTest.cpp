// What the configuration reader makes of files, good, careless and hostile ones.
#include "config/XMLConfigData.h"
#include "lib/AgentHost.h"
#include "support/Lines.h"
#include "support/Rows.h"
#include "support/Workspace.h"
#include "support/Xml.h"

#include <array>
#include <random>
#include <stdexcept>
#include <string>
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
    mutable support::Lines lines_;
    const agent::AgentHost host_{{&lines_, nullptr, nullptr}};
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

std::string utf16(const std::string& text) {
    std::string wide = {'\xff', '\xfe'};
    for (const char one : text) {
        wide += {one, '\0'};
    }
    return wide;
}
/// Texts with the numbers from 0 on between them.
std::string many(int count, const std::string& before, const std::string& behind) {
    std::string all;
    for (int i = 0; i < count; ++i) {
        all += before + std::to_string(i) + behind;
    }
    return all;
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
        {"an entity that is empty", "<Script>&v;s</Script>", ""},
        {"an empty entity in a text", "<Script>a&v;b</Script>", "script=a"},
        {"an empty entity within another", "<Script>&w;s</Script>", ""},
        {"a section in an entity", "<Script>&c;</Script>", ""},
        {"a comment in an entity", "<Script>&k;s</Script>", ""},
        {"an empty entity behind a section", "<Script><![CDATA[x]]>&v;y</Script>", "script=x"},
        {"entities in an attribute", "<Script t='&v;&e;'>s</Script>", "script=s"},
        {"an empty section", "<Script><![CDATA[]]>s</Script>", ""},
        {"an instruction", "<Script><?p  d ?>s</Script>", "script=d"},
        {"an element out of an entity", "&s;" + logging("&f;<FileSize>2</FileSize>"), "size=1"},
        {"entities within entities", logging("&f2;"), "size=a"},
        {"messages out of entities", in("TunnelMessags", "&o;"), "tunnel open=[a][c]"},
        {"schema location",
         "<s x:noNamespaceSchemaLocation='no' xmlns:x='http://www.w3.org/2001/XMLSchema-instance'/>", ""},
    },
    [](const ElementRow& row) {
        EXPECT_EQ(Configuration().load(
                      "<!DOCTYPE z [<!ENTITY e 's'><!ENTITY v ''><!ENTITY s '<Script>s</Script>'>"
                      "<!ENTITY w '&v;'><!ENTITY c '<![CDATA[x]]>'><!ENTITY k '<!--x-->'>"
                      "<!ENTITY f '<FileSize>1</FileSize>'><!ENTITY f2 '<FileSize>a&e;b</FileSize>'>"
                      "<!ENTITY m '<Message>b</Message>'><!ENTITY o "
                      "'<OpenMessage><Message>a</Message>&m;<Message>c&v;d</Message></OpenMessage>'>]><z>" +
                      row.inside + "</z>"),
                  row.expected);
    });

struct EncodingRow {
    support::RowName name;  ///< what is declared
    std::string bytes;
    std::string expected;  ///< text, or the reason of the refusal
};

const support::Rows<EncodingRow> encodingRows(
    "Configuration/Encodings",
    {
        {"UTF-8", "\u00e4\u20ac\U0001f600", "\u00e4\u20ac\U0001f600"},
        {"utf-8", "\xfc", "no character of the encoding UTF-8, line 1, column 50"},
        {"US-ASCII", "\xfc", "no character of the encoding 'US-ASCII', line 1, column 53"},
        {"latin1", "\x9b\xfc", "\u009b\u00fc"},
        {"windows-1252", "\x80\x81\xfc", "\u20ac\u0081\u00fc"},
        {"Windows-1255", "\xf9\xd1", "\u05e9\u05c1"},  // a letter and its mark, not one character
        {"cp1258", "a\xcc", "a\u0300"},
        {"windows-1253", "\xaa", "no character of the encoding 'windows-1253', line 1, column 56"},
        {"ISO-8859-16", "\xa4", "\u20ac"},
        {"KOI8-R", "\xc1", "\u0430"},
        {"TCVN", "a\xb0", "a\u0300"},
        {"Shift_JIS", "\x93\xfa\xb1", "\u65e5\uff71"},
        {"EUC-KR", "\xb0\xa1", "\uac00"},
        {"GB18030", "\x81\x30\x81\x30", "\u0080"},
        {"Big5", "\xa4\xa4", "\u4e2d"},
        {"ISO-2022-JP", "\x1b$B$\"\x1b(B", "\u3042"},
        {"UTF-16", "\u00e4", "\u00e4"},  // which it is not
        {"no-such", "s",
         "the encoding 'no-such' is unknown here; UTF-8, UTF-16, US-ASCII, ISO-8859-1 to -16 and windows-1250 to "
         "-1258 are known everywhere, line 1, column 1"},
    },
    [](const EncodingRow& row) {
        const Configuration configuration;
        const std::string outcome = configuration.load("<?xml version='1.0' encoding='" + row.name.text +
                                                       "'?><z><Script>" + row.bytes + "</Script></z>");
        EXPECT_EQ(outcome == kRefused ? configuration.lines_.take() : outcome,
                  outcome == kRefused ? "250  Error Parsing File: " + row.expected + "|"
                                      : "script=" + row.expected);
    });

TEST_F(ConfigurationTest, WholeDocuments) {
    EXPECT_EQ(load("<Script>s</Script>"), "");
    EXPECT_EQ(load(utf16("<z><Script>s</Script></z>")), "script=s");
    std::string swapped = utf16("<z><Script>\xd8=\xde\x02</Script></z>").substr(2);
    for (std::size_t i = 0; i < swapped.size(); i += 2) {
        std::swap(swapped[i], swapped[i + 1]);
    }
    swapped.erase(swapped.find('\xd8') - 1, 1).erase(swapped.find('=') - 1, 1);
    swapped.erase(swapped.find('\xde') - 1, 1).erase(swapped.find('\x02') - 1, 1);
    EXPECT_EQ(load(swapped), "script=\U0001f602") << "the other order of bytes, with a pair of surrogates";
    EXPECT_EQ(load("\xef\xbb\xbf<?xml version='1.0' encoding='windows-1252'?><z><Script>\x80</Script></z>"),
              "script=\u20ac");
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
std::string full() {
    return "<z>" + std::string((1U << 20U) - 7, ' ') + "</z>";
}

struct HostileRow {
    support::RowName name;
    std::string document;  ///< SECRET stands for the path of a file outside, FULL for all that may be
    std::string reason;    ///< as it is logged
};

const std::string kTooMuch = "its entities and defaults expand to too much";
const std::string kNoToken = "not well-formed (invalid token)";
const std::string kNoDocument = "no element found";

const support::Rows<HostileRow> hostileRows(
    "Configuration/Hostile",
    {
        {"external subset", "<!DOCTYPE z SYSTEM SECRET><z/>",
         "the document type names the external subset SECRET"},
        {"public external subset", "<!DOCTYPE z PUBLIC 'p' SECRET><z/>",
         "the document type names the external subset SECRET"},
        {"external entity", typed("<!ENTITY e SYSTEM SECRET>", "<z><Script>&e;</Script></z>"),
         "the entity 'e' names SECRET, which is outside"},
        {"external entity, unused", typed("<!ENTITY e SYSTEM SECRET>", "<z/>"),
         "the entity 'e' names SECRET, which is outside"},
        {"external parameter entity", typed("<!ENTITY % e SYSTEM SECRET> %e;", "<z/>"),
         "the entity 'e' names SECRET, which is outside"},
        {"unparsed entity", typed("<!NOTATION n SYSTEM 'n'><!ENTITY e SYSTEM SECRET NDATA n>", "<z/>"),
         "the entity 'e' names SECRET, which is outside"},
        {"billion laughs", typed(laughs("", "&", "ha"), "<z><Script>&a12;</Script></z>"), kTooMuch},
        {"billion silences", typed(laughs("", "&", ""), "<z>&a12;</z>"), kTooMuch},
        {"billion elements", typed(laughs("", "&", "<b/>"), "<z>&a12;</z>"),
         "there are more than 32768 elements"},
        {"billion laughs in an attribute", typed(laughs("", "&", "ha"), "<z t='&a12;'/>"), kTooMuch},
        {"billion laughs by default", typed(laughs("", "&", "ha") + "<!ATTLIST z t CDATA '&a12;'>", "<z/>"),
         kTooMuch},
        {"billion declarations", typed(laughs("% ", "&#37;", "<!ENTITY x 'y'>") + "%a12;", "<z/>"), kTooMuch},
        {"quadratic",
         typed("<!ENTITY e '" + std::string(100000, 'x') + "'>", "<z>" + repeated("&e;", 10000) + "</z>"),
         kTooMuch},
        {"quadratic by default",
         typed("<!ATTLIST b t CDATA '" + std::string(100000, 'x') + "'>",
               "<z>" + repeated("<b/>", 10000) + "</z>"),
         kTooMuch},
        {"entity within itself", typed("<!ENTITY e '&f;'><!ENTITY f '&e;'>", "<z>&e;</z>"),
         "recursive entity reference"},
        {"many attributes", "<z" + many(40000, " a", "=''") + "/>", "there are more than 32768 attributes"},
        {"many declared attributes", typed("<!ATTLIST z" + many(5000, " a", " CDATA ''") + ">", "<z/>"),
         "there are more than 4096 declared attributes"},
        {"many entities", typed(many(300, "<!ENTITY a", " ''>"), "<z/>"), "there are more than 256 entities"},
        {"257 deep", "<a>" + kNested + "</a>", "elements are nested deeper than 256"},
        {"257 deep, empty element", repeated("<a>", 256) + "<b/>" + repeated("</a>", 256),
         "elements are nested deeper than 256"},
        {"above 1 MiB", "FULL ", "the file is larger than 1048576 bytes"},
        {"NUL", "<z><Script>s" + std::string(1, '\0') + "</Script></z>", kNoToken},
        {"reference to NUL", "<z>&#0;</z>", "reference to invalid character number"},
        {"no UTF-8", "<z>\xc3(</z>", "no character of the encoding UTF-8"},
        {"another encoding than declared", utf16("<?xml version='1.0' encoding='UTF-8'?><z/>"),
         "the encoding 'UTF-8' is declared, and this is UTF-16"},
        {"nothing", "", kNoDocument},
        {"blanks", " \n", kNoDocument},
        {"no XML", "FileSize=1", kNoToken},
        {"an end for another", "<z>\n <b></z>\n", "mismatched tag, line 2, column 7"},
        {"two roots", "<z/><z/>", "junk after document element"},
        {"undefined entity", "<z>&e;</z>", "undefined entity"},
        {"NUL behind the root", "<z/>" + std::string(1, '\0'), kNoToken},
        {"a second document behind a NUL", "<z/>\n" + std::string(1, '\0') + "<z/>", kNoToken},
        {"character cut off behind the root", "<z/>\n\xe2\x82", "no character of the encoding UTF-8"},
        {"character cut off behind the root, of a code page",
         "<?xml version='1.0' encoding='Shift_JIS'?><z/>\x83", "no character of the encoding 'Shift_JIS'"},
        {"half a character behind the root", "\xff\xfe<" + std::string("\0z\0/\0>\0x", 8),
         "half a character"},
    },
    [](const HostileRow& row) {
        Configuration configuration;
        configuration.workspace_.write("secret", "top secret");
        const std::string secret = configuration.workspace_.path("secret").string();
        const int watch = ::inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
        ASSERT_GE(::inotify_add_watch(watch, secret.c_str(), IN_OPEN), 0);
        const auto events = [&] { return ::read(watch, std::array<char, 4096>().data(), 4096); };
        const std::string document = support::replaced(row.document, "FULL", full());
        EXPECT_EQ(configuration.load(support::replaced(document, "SECRET", "'" + secret + "'")), kRefused);
        const std::string reason = support::replaced(row.reason, "SECRET", "'" + secret + "'");
        const std::string logged = configuration.lines_.take();
        EXPECT_TRUE(logged.starts_with("250  Error Parsing File: " + reason)) << logged;
        EXPECT_EQ(changes(*XMLConfigData::instance()), "");
        EXPECT_EQ(configuration.load("<z><Script>good</Script></z>"), "script=good");
        EXPECT_EQ(events(), -1) << "the file outside the document was opened";
        EXPECT_EQ(configuration.workspace_.read("secret"), "top secret");
        EXPECT_GT(events(), 0) << "an opening does not show";
        ::close(watch);
    });

TEST_F(ConfigurationTest, LimitsAndMissingFiles) {
    EXPECT_EQ(load(kNested), "");
    EXPECT_EQ(load(full()), "");
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

}  // namespace
