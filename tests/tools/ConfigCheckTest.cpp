// What the checker says about configurations, and where.
#include "ConfigChecks.h"

#include <array>
#include <filesystem>
#include <iterator>
#include <nlohmann/json.hpp>
#include <regex>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/inotify.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using checks::check;
using checks::document;
using checks::in;

/// The findings of a run as "LINE:COLUMN error KIND; ...".
std::string findings(const std::string& printed) {
    static const std::regex line(R"(config\.xml:(?:(\d+:\d+):)? (error|warning): .* \[([a-z-]+)\])");
    std::string all;
    for (std::sregex_iterator found(printed.begin(), printed.end(), line), end; found != end; ++found) {
        all += (all.empty() ? "" : "; ") + found->str(1) + (found->str(1).empty() ? "" : " ") +
               found->str(2) + " " + found->str(3);
    }
    return all;
}

const std::string kFileListener = "<ListnerSet><FileListner>on</FileListner></ListnerSet>";
const std::string kDetection = "<ListnerSet><RDListner>on</RDListner></ListnerSet>";
const std::string kTexts = checks::messages("TunnelMessags", "opened", "closed");

/// A file logger with `more` in column 3 of line 4, and its listener.
std::string logging(const std::string& more) {
    return "<FileLogging>\n<LogFilePath>log/a.xml</LogFilePath><LogLevel>info</LogLevel>\n  " + more +
           "\n</FileLogging>" + kFileListener;
}
/// A file logger with this level or path at the start of line 3.
std::string level(const std::string& text) {
    return "<FileLogging>\n" + in("LogLevel", text) + "\n<LogFilePath>log/a.xml</LogFilePath></FileLogging>" +
           kFileListener;
}
std::string path(const std::string& text) {
    return "<FileLogging>\n" + in("LogFilePath", text) + "\n<LogLevel>info</LogLevel></FileLogging>" +
           kFileListener;
}
/// Listeners in line 2, with texts to look for behind.
std::string listeners(const std::string& inside) {
    return in("ListnerSet", inside) + kTexts;
}
/// Tunnel texts from line 3 on, with a listener for them.
std::string tunnel(const std::string& inside) {
    return "<TunnelMessags>\n" + inside + "\n</TunnelMessags>" + kDetection;
}
std::string script(const std::string& text) {
    return in("Script", text) + listeners("<TunnelListner>on</TunnelListner>");
}
std::string resume(const std::string& text) {
    return in("RSMResumeStatusFile", text) + listeners("<RDListner>on</RDListner>");
}

struct Row {
    std::string document;
    const char* expected;     ///< the findings
    const char* says;         ///< what is printed somewhere
    bool schemaFinds = true;  ///< the schema finds fault, too
};

class ConfigCheckTest : public testing::Test {
  protected:
    ConfigCheckTest() {
        workspace_.write("a-file", "");
        workspace_.write("bin/run.sh", "#!/bin/sh\n");
        workspace_.write("bin/no-run.sh", "#!/bin/sh\n");
        std::filesystem::permissions(workspace_.path("bin/run.sh"), std::filesystem::perms::owner_all);
    }

    checks::Run run(const std::string& text, const std::string& options = "--quiet") const {
        workspace_.write("config.xml", text);
        return check(workspace_, options + " config.xml");
    }
    template <std::size_t count>
    void expect(const Row (&rows)[count]) const {
        std::string names;
        for (std::size_t i = 0; i < count; ++i) {
            const Row& row = rows[i];
            const checks::Run found = run(row.document);
            EXPECT_EQ(findings(found.printed), row.expected) << row.document << found.printed;
            EXPECT_NE(found.printed.find(row.says), std::string::npos) << row.says << "\n" << found.printed;
            EXPECT_EQ(found.status, *row.expected == '\0' ? 0 : 1) << row.document;
            workspace_.write(std::to_string(i) + ".xml", row.document);
            names += " " + std::to_string(i) + ".xml";
        }
        const std::string valid = "\n" + checks::validate(workspace_, names);
        for (std::size_t i = 0; i < count; ++i) {
            const bool found = valid.find("\n" + std::to_string(i) + ".xml validates") == std::string::npos;
            EXPECT_EQ(found, rows[i].schemaFinds) << rows[i].document;
        }
    }

    const support::Workspace workspace_;
};

TEST_F(ConfigCheckTest, NamesAndPlaces) {
    const Row rows[] = {
        {document(logging("<FileLoger>on</FileLoger>")), "4:3 error unknown-element",
         "did you mean 'FileLogger'?"},
        {document(logging("<MaxFileSize>5000</MaxFileSize>")), "4:3 error unknown-element",
         "did you mean 'FileSize'?"},
        {document(logging("<Colour>red</Colour>")), "4:3 warning unknown-element",
         "the module does not read it"},
        {document(logging("<Script>echo</Script>")), "4:3 error misplaced",
         "'Script' is not read in 'FileLogging'; it is read directly in the root element"},
        {document(logging("<filesize>5000</filesize>")), "4:3 error unknown-element",
         "did you mean 'FileSize'?"},
        {document(logging("<LogLevel>warn</LogLevel>")), "4:3 error duplicate",
         "config.xml:3:37: note: the first"},
        {document(logging("<x>\n<FileSize>5000</FileSize></x>")), "4:3 warning unknown-element", ""},
        {document(logging("on")), "4:3 error stray-text", "text directly in 'FileLogging'"},
        {document(logging("<FileSize unit='B' other='c'>5000</FileSize>")),
         "4:3 warning attribute; 4:3 warning attribute", "the attribute 'unit' of 'FileSize' has no effect"},
        {document("<ListenerSet>\n<RDListener>on</RDListener></ListenerSet>"),
         "2:1 error unknown-element; 2:1 error no-listener",
         "did you mean 'ListnerSet'? The spelling is meant."},
        {document(in("ListnerSet", "<FileListener>on</FileListener>") + logging("")),
         "2:13 error unknown-element; 5:15 warning repeated",
         "did you mean 'FileListner'? The spelling is meant."},
        {document("<TunnelMessages/>" + logging("")), "2:1 error unknown-element",
         "did you mean 'TunnelMessags'? The spelling is meant."},
        {document("<Settings>\n <Script>echo</Script></Settings>" + logging("")),
         "2:1 warning unknown-element; 3:2 error misplaced",
         "'Script' is not read in 'Settings'; it is read directly in the root element"},
        {"<FileLogging>\n" + in("LogLevel", "info") + "</FileLogging>\n",
         "1:1 error root; 1:1 error no-listener; 2:1 error misplaced",
         "an element of any other name belongs around it"},
        {"<z:ZephanConfiguration xmlns:z='z'>\n<z:ListnerSet/>\n</z:ZephanConfiguration>",
         "2:1 error unknown-element; 2:1 error no-listener", "did you mean 'ListnerSet'?"},
        {document("<AbortMessage>gone</AbortMessage>" + logging("")), "2:1 error misplaced",
         "it is read in 'TunnelMessags'"},
        {document(logging("") + "\n" + logging("<FileSize>5000</FileSize>")),
         "6:1 warning repeated; 9:15 warning repeated", "config.xml:2:1: note: the first one"},
        {document(tunnel("<OpenMessage>opened</OpenMessage>")), "3:14 error stray-text; 4:29 error no-texts",
         "each text stands in a 'Message' of its own"},
        {document(tunnel("<Message>opened</Message>")), "3:1 error misplaced; 4:29 error no-texts",
         "'Message' is not read in 'TunnelMessags'; it is read directly in 'OpenMessage' or 'CloseMessage'"},
        {document(tunnel("<OpenMessage><Message>a</Message></OpenMessage>\n<OpenMessage><Message>b</Message>"
                         "</OpenMessage><AbortMessage>c</AbortMessage>")),
         "4:1 error duplicate", "a second 'OpenMessage' in the same section is not read"},
        {"<!DOCTYPE z [<!ENTITY e '<Script>echo</Script>'>]>\n" + document("&e;" + logging("")),
         "3:1 error entity", "comes out of an entity"},
    };
    expect(rows);
}

TEST_F(ConfigCheckTest, Texts) {
    const Row rows[] = {
        {document(level("Info")), "3:11 warning level", "'Info' is no level and is read as 'info'"},
        {document(level("warning")), "3:11 error level", "did you mean 'warn'?"},
        {document(level("debug")), "3:11 error level",
         "levels are trace, info, warn, error, force and audit"},
        {document(level("30")), "3:11 error level", "'30' is no level and is read as 'info'"},
        {document(level("audit")), "3:11 warning writes-nothing", "nothing is written", false},
        {document(level("\nerror")), "3:1 error line-break", "it is read as 'info'"},
        {document(level("error\n")), "3:1 error line-break", "ends with a line break"},
        {document(level("<!-- error or warn --> error")), "3:11 error comment-first", "it is read as 'info'",
         false},
        {document(level("")), "2:1 warning no-level; 3:1 warning empty", "leaves the setting as it was"},
        {document(logging("<FileSize>5 MB</FileSize>")), "4:13 error size",
         "'5 MB' is read as 5 bytes: an archive for every entry"},
        {document(logging("<FileSize> 5000000B</FileSize>")), "4:14 error size",
         "only digits are read, and no unit"},
        {document(logging("<FileSize>unlimited</FileSize>")), "4:13 error size", "is read as 0 bytes"},
        {document(logging("<FileSize>0</FileSize>")), "4:13 error size", "an archive for every entry"},
        {document(logging("<FileSize>-1</FileSize>")), "4:13 error size", "an archive for every entry"},
        {document(logging("<FileSize>5000000000</FileSize>")), "4:13 warning size", "is read as 2147483647"},
        {document(logging("<FileSize>100</FileSize>")), "4:13 warning size", "every few entries", false},
        {document(logging("<FileSize>\n5000\n</FileSize>")), "4:3 warning line-break", "it is read as 5000"},
        {document(logging("<LogRevisionDays>30 days</LogRevisionDays>")), "4:20 error days",
         "'30 days' is read as 30 days; only digits are read"},
        {document(logging("<LogRevisionDays>0</LogRevisionDays>")), "4:20 warning days", "older than a day"},
        {document(logging("<LogRevisionDays>-30</LogRevisionDays>")), "4:20 error days",
         "the log itself included"},
        {document(logging("<FileLogger>off</FileLogger>")), "4:15 error flag",
         "it cannot be switched off here: leave 'FileListner' empty instead"},
        {document(logging("<FileLogger/>")), "4:3 warning empty", "leaves it on"},
        {document(listeners("<RDListner>false</RDListner>")), "2:24 error flag",
         "'RDListner' is switched on by 'false', as by any text; leave it empty to switch it off"},
        {document(listeners("<RDListner>No</RDListner>")), "2:24 error flag", "switched on by 'No'"},
        {document(listeners("<RDListner> 0 </RDListner>")), "2:25 error flag", "switched on by '0'"},
        {document(listeners("<RDListner>on</RDListner><FileListner><!-- off --></FileListner>")),
         "2:38 error missing-directory; 2:38 warning no-file-logger; 2:51 error comment-first",
         "any text switches this on", false},
        {document(script("<b/>echo")),
         "2:9 error no-text; 2:9 warning unknown-element; 2:38 warning no-script", "begins with an element"},
        {document(script("<?shell echo?>")), "2:9 error comment-first",
         "an instruction comes first in 'Script'"},
        {document(script("echo <!-- all --> done")), "2:27 error cut-text", "it is read as 'echo'", false},
        {"<!DOCTYPE z [<!ENTITY e 'echo'>]>\n" + document(script("&e;")),
         "3:9 error entity; 3:33 warning no-script", "which the module reads as no text"},
        {document(tunnel("<OpenMessage/>")), "3:1 error empty; 4:29 error no-texts", "holds no 'Message'"},
        {document(tunnel("<OpenMessage><Message>a</Message>\n<Message> </Message></OpenMessage>"
                         "<AbortMessage>c</AbortMessage>")),
         "4:1 warning empty", "an empty 'Message' is left out of the list"},
        {document(tunnel("<OpenMessage><Message>\na</Message></OpenMessage><AbortMessage>c</AbortMessage>")),
         "3:14 error line-break", "it is read as '\\na'"},
    };
    expect(rows);
}

TEST_F(ConfigCheckTest, ListenersPathsAndScript) {
    const std::string both = listeners("<TunnelListner>on</TunnelListner>");
    const Row rows[] = {
        {document(""), "1:1 error no-listener", "there is no 'ListnerSet'", false},
        {document("<ListnerSet><RDListner/></ListnerSet>"), "2:1 error no-listener",
         "'ListnerSet' switches no listener on", false},
        {document(kFileListener), "2:13 error missing-directory; 2:13 warning no-file-logger",
         "the log is '..\\log\\kelp-logs.xml' and holds messages of level force only", false},
        {document("<FileLogging>\n<LogFilePath>log/a.xml</LogFilePath></FileLogging>" + kFileListener),
         "2:1 warning no-level", "", false},
        {document("<FileLogging/>" + kDetection + kTexts), "2:1 warning no-effect", "'FileListner' is not on",
         false},
        {document(kDetection), "2:13 error no-texts", "it never notices any", false},
        {document(kTexts + logging("")), "2:16 warning no-effect", "neither 'RDListner' nor 'TunnelListner'",
         false},
        {document(tunnel("<OpenMessage><Message>a</Message></OpenMessage>")), "3:1 warning never-ends",
         "once begun, the activity does not end", false},
        {document(tunnel("<CloseMessage><Message>a</Message></CloseMessage>")),
         "3:1 warning no-effect; 4:29 error no-texts", "none opens it", false},
        {document(checks::messages("FileMessages", "Transfer opened", "opened") + kDetection),
         "3:1 error overlap", "such a message opens and closes at once", false},
        {document(both), "2:13 warning no-script", "there is no 'Script' for it to run", false},
        {document("<Script>echo</Script>" + listeners("<RDListner>1</RDListner>")), "2:1 warning no-effect",
         "the script is never run", false},
        {document(script("bin/run.sh --fast")), "", "", false},
        {document(script("A=b sh bin/no-run.sh &amp;&amp; $X")), "", "", false},
        {document(script("bin/gone.sh")), "2:9 error script", "there is no script 'bin/gone.sh'", false},
        {document(script("'bin/no-run.sh' now")), "2:9 error script", "is not executable", false},
        {document(script("bin")), "2:9 error script", "there is no command 'bin' on the PATH", false},
        {document(script("./bin")), "2:9 error script", "is no regular file", false},
        {document(script("sh bin/gone.sh")), "2:9 error script", "there is no script 'bin/gone.sh'", false},
        {document(script("bin\\run.sh")), "2:9 error script", "looks for 'binrun.sh'; write '/'", false},
        {document(path("gone/a.xml")), "3:14 error missing-directory",
         "note: 'gone/a.xml' is relative to the agent's working directory; from here it is '/", false},
        {document(path("a-file\\a.xml")), "3:14 error missing-directory", "'a-file' is a file", false},
        {document(path("log")), "3:14 error path-is-directory", "", false},
        {document(path("log/")), "3:14 error path-is-directory", "", false},
        {document(path("/dev/null")), "3:14 error not-a-file", "", false},
        {document(path("log/agent.log")), "3:14 warning archives", "its archives are never deleted", false},
        {document(path("a.xml")), "3:14 warning archives", "write './a.xml'", false},
        {document(path("./log/agent")), "3:14 warning archives", "archives are named '2026_", false},
        {document(path("~/a.xml")), "3:14 error missing-directory; 3:14 warning path", "", false},
        {document(path("$HOME/a.xml")), "3:14 error missing-directory; 3:14 warning path",
         "neither '~' nor variables are replaced", false},
        {document(resume("state")), "2:22 error path-is-directory", "", false},
        {document(resume("gone/r.xml")), "2:22 error missing-directory", "for the resume file", false},
        {document(in("RSMResumeStatusFile", "./log/a.xml") + logging("")), "3:14 error same-file",
         "the log file and the resume file are the same file", false},
        {document(in("RSMResumeStatusFile", "log/data.xml") + logging("")), "3:14 warning clean-up",
         "so the resume file 'log/data.xml' too", false},
        {document(resume("config.xml")), "2:22 error same-file",
         "the resume file and the configuration are the same file", false},
    };
    expect(rows);
}

TEST_F(ConfigCheckTest, Refused) {
    workspace_.write("secret", "top secret");
    const int watch = ::inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    ASSERT_GE(::inotify_add_watch(watch, workspace_.path("secret").c_str(), IN_OPEN), 0);
    std::string deep;
    for (int i = 0; i < 257; ++i) {
        deep += "<a>";
    }
    std::string laughs = "<!DOCTYPE z [<!ENTITY a0 'ha'>\n";
    for (int i = 1; i <= 12; ++i) {
        std::string ten;
        for (int j = 0; j < 10; ++j) {
            ten += "&a" + std::to_string(i - 1) + ";";
        }
        laughs += "<!ENTITY a" + std::to_string(i) + " '" + ten + "'>\n";
    }
    const Row rows[] = {
        {"<z>\n <FileSize>5</FileSise>\n</z>", "2:15 error not-well-formed",
         "config.xml:2:2: note: 'FileSize' is open; it was opened here"},
        {"<z>\n  <Script>\n", "3:1 error not-well-formed", "config.xml:2:3: note: 'Script' is open"},
        {"<z>\n<Script>a & b</Script></z>", "2:12 error not-well-formed", ""},
        {"<z>\n<Script a=b/></z>", "2:11 error not-well-formed", ""},
        {"<z/>\n<z/>", "2:1 error not-well-formed", ""},
        {"", "1:1 error not-well-formed", ""},
        {"FileSize=1\n", "1:1 error not-well-formed", ""},
        {"<?xml version='1.2'?><z/>", "1:1 error not-well-formed", "the XML version '1.2' is none"},
        {"<z>&e;</z>", "1:7 error not-well-formed", "'e'"},
        {"<z>\xc3(</z>", "1:1 error not-well-formed", ""},
        {"<!DOCTYPE z SYSTEM 'secret'>\n<z/>", "1:28 error external-name", "the external subset 'secret'"},
        {"<!DOCTYPE z [\n<!ENTITY e SYSTEM 'secret'>]><z>&e;</z>", "2:1 error external-name",
         "the entity 'e' names 'secret', which is outside"},
        {"<!DOCTYPE z [\n<!ENTITY % e SYSTEM 'secret'> %e;]><z/>", "2:1 error external-name",
         "opens nothing"},
        {"<!DOCTYPE z [<!NOTATION n SYSTEM 'n'>\n<!ENTITY e SYSTEM 'secret' NDATA n>]><z/>",
         "2:1 error external-name", "'secret'"},
        {"<b>\n" + deep, "2:766 error too-deep", "nested deeper than 256"},
        {"<z>" + std::string(1U << 20U, ' ') + "</z>", "1:1 error too-large", "larger than 1048576 bytes"},
        {laughs + "]>\n<z><Script>&a12;</Script></z>", "1:1 error too-much",
         "more memory than the module allows"},
    };
    for (const Row& row : rows) {
        const checks::Run found = run(row.document, "");
        const std::string start = row.document.substr(0, 200);
        EXPECT_EQ(findings(found.printed), row.expected) << start << found.printed;
        EXPECT_NE(found.printed.find(row.says), std::string::npos) << start << found.printed;
        EXPECT_NE(found.printed.find("no settings are in force: the module refuses the file"),
                  std::string::npos);
        EXPECT_EQ(found.status, 1) << start;
    }
    std::array<char, 4096> events{};
    EXPECT_EQ(::read(watch, events.data(), events.size()), -1) << "the file outside was opened";
    ::close(watch);
}

TEST_F(ConfigCheckTest, ExampleGivesNothing) {
    std::filesystem::copy_file(EXAMPLE, workspace_.path("config.xml"));
    const checks::Run quiet = check(workspace_, "--quiet config.xml");
    EXPECT_EQ(quiet.printed, "");
    EXPECT_EQ(quiet.status, 0);
    EXPECT_EQ(checks::validate(workspace_, "config.xml"), "config.xml validates\n");
    const std::string all = check(workspace_, "config.xml").printed;
    for (const std::string& line :
         {std::string("config.xml: settings in force:\n  FileLogging/LogFilePath "),
          "log/kelp-logs.xml                             line 8 (from here " +
              std::filesystem::canonical(workspace_.path("log")).string() + "/kelp-logs.xml)\n",
          std::string("line 10 (bytes)\n"), std::string("line 14 (every message but those of level trace)\n"),
          std::string("'Remote tunnel opened'                        line 22\n"),
          std::string("'Desktop session opened'                      line 23\n")}) {
        EXPECT_NE(all.find(line), std::string::npos) << line << "\n" << all;
    }
}

TEST_F(ConfigCheckTest, DefaultsInForce) {
    const std::string all = run(document(kTexts + kDetection), "").printed;
    for (const char* const line :
         {"..\\log\\kelp-logs.xml  default (from here ", "5000000               default (bytes)\n",
          "80                    default (messages of level force only)\n",
          "RDListner         on                    line 3\n",
          "none                  default (RSM does not survive a restart of the agent)\n"}) {
        EXPECT_NE(all.find(line), std::string::npos) << line << "\n" << all;
    }
}

TEST_F(ConfigCheckTest, MarksThePlace) {
    const std::string line = "  <Scrip>\xc3\xa4</Scrip> <x\xc3\xbc/>\n";
    EXPECT_EQ(run("<z>\n\t" + line.substr(1) + kDetection + kTexts + "</z>").printed,
              "config.xml:2:3: error: unknown element 'Scrip'; did you mean 'Script'? [unknown-element]\n"
              "      2 | " +
                  line +
                  "        |   ^\n"
                  "config.xml:2:20: warning: unknown element 'x\xc3\xbc': the module does not read it "
                  "[unknown-element]\n"
                  "      2 | " +
                  line + "        |                    ^\n");
    // A long line is shown around the place.
    const std::string far =
        run("<z>" + std::string(500, ' ') + "<Scrip/>" + kDetection + kTexts + "</z>").printed;
    EXPECT_NE(far.find("      1 | " + std::string(50, ' ') + "<Scrip/><Lis"), std::string::npos) << far;
    EXPECT_NE(far.find("\n        | " + std::string(50, ' ') + "^\n"), std::string::npos) << far;
    // UTF-16, Windows line ends, and a character that a terminal obeys.
    const std::string narrow = "<z>\r\n<Scrip/>\x9b</z>";
    std::string wide = {'\xff', '\xfe'};
    for (const char one : narrow) {
        wide += {one, '\0'};
    }
    const std::string printed = run(wide).printed;
    EXPECT_EQ(findings(printed), "1:1 error no-listener; 2:1 error unknown-element; 2:9 error stray-text");
    EXPECT_NE(printed.find("| <Scrip/>\\x9b</z>\n        |         ^"), std::string::npos) << printed;
}

// The sanitizers' own memory is not the program's.
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
TEST_F(ConfigCheckTest, HostileFilesTakeLittleMemory) {
    const auto filled = [](const std::string& start, const std::string& unit, const std::string& end) {
        std::string text = start;
        while (text.size() + unit.size() + end.size() <= (1U << 20U)) {
            text += unit;
        }
        return text + end;
    };
    const auto kilobytes = [&](const std::string& text) {
        workspace_.write("config.xml", text);
        const ::pid_t child = ::fork();
        if (child == 0) {
            const int out = ::open("/dev/null", O_WRONLY);
            ::dup2(out, STDOUT_FILENO);
            ::execl(CONFIG_CHECK, CONFIG_CHECK, workspace_.path("config.xml").c_str(), nullptr);
            ::_exit(127);
        }
        int status = 0;
        struct ::rusage usage {};
        ::wait4(child, &status, 0, &usage);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) < 2) << text.substr(0, 100);
        return usage.ru_maxrss;
    };
    const auto usual = kilobytes("<z/>");
    const std::string texts = "<z><TunnelMessags><OpenMessage>";
    const std::string textsEnd = "</OpenMessage></TunnelMessags></z>";
    for (const std::string& text :
         {filled("<z>", "<a/>", "</z>"), filled("<z>", "<a/>\n", ""), filled("<z>", "<Script/>", "</z>"),
          filled(texts, "<Message>a</Message>", textsEnd), filled("<z>", "<a b='c'/>", "</z>"),
          filled("<z>", "<ListnerSet><RDListner/></ListnerSet>", "</z>"),
          filled("<z><Script>", "x ", "</Script></z>"),
          filled("<!DOCTYPE z [<!ENTITY e '" + std::string(500000, 'x') + "'>]><z>", "&e;", "</z>"),
          filled("<!DOCTYPE z [<!ATTLIST b t CDATA '" + std::string(100000, 'x') + "'>]><z>", "<b/>",
                 "</z>")}) {
        EXPECT_LT(kilobytes(text) - usual, 32 * 1024) << text.substr(0, 100);
    }
}
#endif

TEST_F(ConfigCheckTest, NotWritable) {
    workspace_.write("config.xml", document(resume("locked/r.xml") + logging("")));
    workspace_.write("log/a.xml", "");
    workspace_.write("locked/other", "");
    using std::filesystem::perms;
    const perms readable = perms::owner_read | perms::owner_exec | perms::group_read | perms::group_exec |
                           perms::others_read | perms::others_exec;
    std::filesystem::permissions(workspace_.path(""), readable);
    std::filesystem::permissions(workspace_.path("locked"), readable);
    std::filesystem::permissions(workspace_.path("log/a.xml"), readable);
    // The super-user may write everything.
    const std::string user = ::geteuid() == 0 ? "setpriv --reuid=65534 --regid=65534 --clear-groups " : "";
    const checks::Run found = checks::shell(workspace_, user + "'" CONFIG_CHECK "' --quiet config.xml");
    EXPECT_EQ(findings(found.printed),
              "2:22 error not-writable; 4:14 error not-writable; 6:15 warning repeated")
        << found.printed;
    std::filesystem::permissions(workspace_.path(""), perms::owner_all);
    std::filesystem::permissions(workspace_.path("locked"), perms::owner_all);
}

TEST_F(ConfigCheckTest, ScheduleFile) {
    workspace_.write("state/good", "<RSMExecuteCommand><RSMStartDate>");
    workspace_.write("state/bad", " <RSMExecuteCommand>");
    workspace_.write("state/empty", "");
    const struct {
        const char* path;
        const char* expected;
    } rows[] = {{"state/new", ""},
                {"state/good", ""},
                {"state/empty", ""},
                {"state/bad", "error schedule"},
                {"gone/s", "error missing-directory"},
                {"state", "error path-is-directory"},
                {"./state/resume.xml", "2:22 error same-file"}};
    for (const auto& row : rows) {
        const checks::Run found =
            run(document(resume("state/resume.xml")), std::string("-q --schedule=") + row.path);
        EXPECT_EQ(findings(found.printed), row.expected) << row.path << found.printed;
    }
}

TEST_F(ConfigCheckTest, JsonHoldsAllOfIt) {
    std::filesystem::copy_file(EXAMPLE, workspace_.path("good.xml"));
    workspace_.write("bad.xml", "<z>");
    workspace_.write("config.xml", document(script("\xc3\xa4") + "<B\xc3\xa4/>"));
    const checks::Run found = check(workspace_, "--json good.xml bad.xml config.xml gone.xml 2>/dev/null");
    EXPECT_EQ(found.status, 2);
    const auto files = nlohmann::json::parse(found.printed).at("files");
    ASSERT_EQ(files.size(), 4U);
    EXPECT_EQ(files[0]["findings"].size(), 0U);
    EXPECT_EQ(files[0]["settings"].size(), 15U);
    EXPECT_EQ(files[0]["settings"][1].dump(), R"({"meaning":"bytes","name":"FileLogging/FileSize",)"
                                              R"("origin":{"column":9,"line":10},"value":"5000000"})");
    EXPECT_EQ(files[0]["settings"][5]["values"][1].dump(),
              R"({"origin":{"column":13,"line":23},"value":"Desktop session opened"})");
    EXPECT_EQ(files[1]["accepted"], false);
    EXPECT_EQ(files[1]["findings"][0]["kind"], "not-well-formed");
    EXPECT_EQ(files[1]["findings"][0]["notes"][0]["line"], 1);
    EXPECT_FALSE(files[1].contains("settings"));
    EXPECT_EQ(files[2]["settings"][0]["origin"], "default");
    EXPECT_EQ(files[3]["unreadable"], "No such file or directory");
    EXPECT_FALSE(
        nlohmann::json::parse(check(workspace_, "-jq good.xml").printed)["files"][0].contains("settings"));
}

TEST_F(ConfigCheckTest, CommandLine) {
    std::filesystem::copy_file(EXAMPLE, workspace_.path("good.xml"));
    workspace_.write("bad.xml", document(""));
    const struct {
        const char* arguments;
        int status;
        const char* says;
    } rows[] = {{"--help", 0, "Usage: zephan-config-check [OPTION]... FILE...\n"},
                {"--version", 0, "zephan-config-check (ZephanRSMLogger) "},
                {"", 2, "no FILE to check\nTry 'zephan-config-check --help'"},
                {"--no-such good.xml", 2, "unknown option --no-such"},
                {"--schedule", 2, "no value for option --schedule"},
                {"--schedule= good.xml", 2, "the path of the schedule file is empty"},
                {"gone.xml", 2, "zephan-config-check: gone.xml: No such file or directory"},
                {"log", 2, "zephan-config-check: log: is a directory"},
                {"/dev/null", 2, "/dev/null: is no regular file"},
                {"good.xml", 0, "settings in force"},
                {"good.xml bad.xml", 1, "bad.xml: settings in force"},
                {"gone.xml bad.xml", 2, "bad.xml:1:1: error"},
                {"-- good.xml", 0, ""},
                {"good.xml >/dev/full", 2, "the output could not be written"}};
    for (const auto& row : rows) {
        const checks::Run found = check(workspace_, row.arguments);
        EXPECT_EQ(found.status, row.status) << row.arguments;
        EXPECT_NE(found.printed.find(row.says), std::string::npos) << row.arguments << found.printed;
    }
}

}  // namespace
