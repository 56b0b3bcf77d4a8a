// What the checker says about configurations, and where.
#include "ConfigChecks.h"
#include "support/Rows.h"

#include <array>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <regex>
#include <string>
#include <vector>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/inotify.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using checks::check;
using checks::document;

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

/// A part of a document by its name, with the text at its "@".
std::string part(const std::string& name, const std::string& text = {}) {
    static const std::map<std::string, std::string> parts = {
        {"detection", kDetection},
        {"texts", kTexts},
        {"files", kFileListener},
        {"logging",
         "<FileLogging>\n<LogFilePath>log/agent.xml</LogFilePath><LogLevel>info</LogLevel>\n  @\n</FileLogging>" +
             kFileListener},
        {"level",
         "<FileLogging>\n<LogLevel>@</LogLevel>\n<LogFilePath>log/agent.xml</LogFilePath></FileLogging>" +
             kFileListener},
        {"path", "<FileLogging>\n<LogFilePath>@</LogFilePath>\n<LogLevel>info</LogLevel></FileLogging>" +
                     kFileListener},
        {"listeners", "<ListnerSet>@</ListnerSet>" + kTexts},
        {"tunnel", "<TunnelMessags>\n@\n</TunnelMessags>" + kDetection},
        {"script", "<Script>@</Script><ListnerSet><TunnelListner>on</TunnelListner></ListnerSet>" + kTexts},
        {"resume", "<RSMResumeStatusFile>@</RSMResumeStatusFile>" + kDetection + kTexts}};
    return support::replaced(parts.at(name), "@", text);
}

struct Case {
    support::RowName name;
    std::string document;
    std::string findings = {};
    std::string says = {};    ///< what is printed somewhere
    bool schemaFinds = true;  ///< the schema finds fault, too
};

/// The cases of the file beside this one, whose head says how they are written.
std::vector<Case> cases() {
    static const std::regex named(R"(\{(\w+)(?::([^}]*))?\})");
    static const std::regex end(R"(</\w+>)");
    std::vector<Case> all;
    std::ifstream file(CASES);
    int number = 1;
    for (std::string line; std::getline(file, line); ++number) {
        std::string text = support::replaced(line, "|", "\n");
        if (!text.starts_with("    ")) {
            if (text.empty() || text.starts_with('#')) {
                continue;
            }
            for (std::smatch found; std::regex_search(text, found, named);) {
                text = found.prefix().str() + part(found[1], found[2]) + found.suffix().str();
            }
            all.push_back({{std::regex_replace(line, end, ""), CASES, number},
                           text.starts_with("whole: ") ? text.substr(7) : document(text)});
        } else if (Case& last = all.back(); last.findings.empty()) {
            last.schemaFinds = !text.ends_with(" (valid)");
            last.findings = text.substr(4, text.find(" (valid)") - 4);
        } else {
            last.says = text.substr(4);
        }
    }
    return all;
}

struct Checker {
    Checker() {
        workspace.write("a-file", "");
        workspace.write("bin/run.sh", "#!/bin/sh\n");
        workspace.write("bin/no-run.sh", "#!/bin/sh\n");
        std::filesystem::permissions(workspace.path("bin/run.sh"), std::filesystem::perms::owner_all);
    }

    checks::Run run(const std::string& text, const std::string& options = "--quiet") const {
        workspace.write("config.xml", text);
        return check(workspace, options + " config.xml");
    }

    const support::Workspace workspace;
};

class ConfigCheckTest : public testing::Test, protected Checker {};

void checkCase(const Case& one) {
    const Checker checker;
    const checks::Run found = checker.run(one.document);
    const std::string printed = findings(found.printed);
    EXPECT_EQ(printed.empty() ? "nothing" : printed, one.findings) << one.document << found.printed;
    EXPECT_NE(found.printed.find(one.says), std::string::npos) << one.says << "\n" << found.printed;
    EXPECT_EQ(found.status, printed.empty() ? 0 : 1);
    const std::string valid = checks::validate(checker.workspace, "config.xml");
    EXPECT_EQ(valid != "config.xml validates\n", one.schemaFinds) << one.document << valid;
}

const std::size_t caseCount = [] {
    const std::vector<Case> all = cases();
    for (const Case& one : all) {
        support::registerRow("ConfigCheck/Cases", one.name, [one] { checkCase(one); });
    }
    return all.size();
}();

TEST(ConfigCheck, FindsItsCases) {
    EXPECT_GT(caseCount, 80U);
}

struct RefusedRow {
    support::RowName name;
    std::string document;
    const char* expected;
    const char* says;
};

const support::Rows<RefusedRow> refusedRows(
    "ConfigCheck/Refused",
    {
        {"misspelled end", "<z>\n <FileSize>5</FileSise>\n</z>", "2:15 error not-well-formed",
         "config.xml:2:2: note: 'FileSize' is open; it was opened here"},
        {"open element", "<z>\n  <Script>\n", "3:1 error not-well-formed",
         "config.xml:2:3: note: 'Script' is open"},
        {"bare ampersand", "<z>\n<Script>a & b</Script></z>", "2:11 error not-well-formed", "write '&amp;'"},
        {"ampersand in a word", "<z>\n<Script>a &b c</Script></z>", "2:11 error not-well-formed",
         "write '&amp;'"},
        {"bare less-than sign", "<z>\n<Script>a < b</Script></z>", "2:11 error not-well-formed",
         "write '&lt;'"},
        {"less-than sign before a word", "<z>\n<Script>a <b</Script></z>", "2:11 error not-well-formed",
         "write '&lt;'"},
        {"tag without its end", "<z>\n<FileSize\n<LogLevel/></z>", "3:1 error not-well-formed",
         "the tag of 'FileSize' has no '>'"},
        {"less-than sign in a value", "<z>\n<Script a='<'/></z>", "2:12 error not-well-formed",
         "write '&lt;'"},
        {"typographic quotes", "<?xml version=\u201c1.0\u201d?>\n<z/>", "1:15 error not-well-formed",
         "a typographic quote"},
        {"typographic quotes of a value", "<z>\n<Script a=\u201eb\u201c/></z>", "2:11 error not-well-formed",
         "a typographic quote"},
        {"value without quotes", "<z>\n<Script a=b/></z>", "2:11 error not-well-formed", ""},
        {"second root", "<z/>\n<z/>", "2:1 error not-well-formed", "a second root element"},
        {"text behind the root", "<z/>\nx", "2:1 error not-well-formed", "junk after document element"},
        {"nothing", "", "1:1 error not-well-formed", "the file is empty"},
        {"blanks", " \n", "1:1 error not-well-formed", "the file is empty"},
        {"JSON", "\n[{\"FileSize\": 1}]\n", "1:1 error not-well-formed", "this is JSON"},
        {"INI", "FileSize=1\n", "1:1 error not-well-formed", "names and values (INI)"},
        {"INI with sections", "[FileLogging]\nFileSize=1\n", "1:1 error not-well-formed",
         "names and values (INI)"},
        {"no XML", "hello\n", "1:1 error not-well-formed", "this is not XML"},
        {"unknown entity", "<z>&e;</z>", "1:4 error not-well-formed", "no entity 'e'"},
        {"another encoding",
         "<?xml version='1.0' encoding='UTF-8'?>\n<z>\u00e4\n<Script>gr\xfc\xdf</Script></z>",
         "3:11 error not-well-formed", "the encoding is wrong: the byte 0xFC is not a character of UTF-8"},
        {"unknown encoding", "<?xml version='1.0' encoding='no-such'?><z/>", "1:1 error not-well-formed",
         "the encoding is wrong: the encoding 'no-such' is unknown here; UTF-8, "},
        {"external subset", "<!DOCTYPE z SYSTEM 'secret'>\n<z/>", "1:1 error external-name",
         "the external subset 'secret'"},
        {"external entity", "<!DOCTYPE z [\n<!ENTITY e SYSTEM 'secret'>]><z>&e;</z>",
         "2:1 error external-name", "the entity 'e' names 'secret', which is outside"},
        {"external parameter entity", "<!DOCTYPE z [\n<!ENTITY % e SYSTEM 'secret'> %e;]><z/>",
         "2:1 error external-name", "opens nothing"},
        {"unparsed entity",
         "<!DOCTYPE z [<!NOTATION n SYSTEM 'n'>\n<!ENTITY e SYSTEM 'secret' NDATA n>]><z/>",
         "2:1 error external-name", "'secret'"},
        {"too deep", "<b>\n" + support::repeated("<a>", 257), "2:766 error too-deep",
         "nested deeper than 256"},
        {"too large", "<z>" + std::string(1U << 20U, ' ') + "</z>", "1:1 error too-large",
         "larger than 1048576 bytes"},
        {"billion laughs", support::typed(support::laughs("", "&", "ha"), "\n<z><Script>&a12;</Script></z>"),
         "2:12 error too-much", "expand to too much"},
    },
    [](const RefusedRow& row) {
        const Checker checker;
        checker.workspace.write("secret", "top secret");
        const int watch = ::inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
        ASSERT_GE(::inotify_add_watch(watch, checker.workspace.path("secret").c_str(), IN_OPEN), 0);
        const checks::Run found = checker.run(row.document, "");
        EXPECT_EQ(findings(found.printed), row.expected) << found.printed;
        EXPECT_NE(found.printed.find(row.says), std::string::npos) << found.printed;
        EXPECT_NE(found.printed.find("no settings are in force: the module refuses the file"),
                  std::string::npos);
        EXPECT_EQ(found.status, 1);
        std::array<char, 4096> events{};
        EXPECT_EQ(::read(watch, events.data(), events.size()), -1) << "the file outside was opened";
        ::close(watch);
    });

TEST_F(ConfigCheckTest, ExampleGivesNothing) {
    std::filesystem::copy_file(EXAMPLE, workspace.path("config.xml"));
    const checks::Run quiet = check(workspace, "--quiet config.xml");
    EXPECT_EQ(quiet.printed, "");
    EXPECT_EQ(quiet.status, 0);
    EXPECT_EQ(checks::validate(workspace, "config.xml"), "config.xml validates\n");
    const std::string all = check(workspace, "config.xml").printed;
    for (const std::string& line :
         {std::string("config.xml: settings in force:\n  FileLogging/LogFilePath "),
          "log/kelp-logs.xml                             line 8 (from here " +
              std::filesystem::canonical(workspace.path("log")).string() + "/kelp-logs.xml)\n",
          std::string("line 10 (bytes)\n"), std::string("line 14 (every message but those of level trace)\n"),
          std::string("'Remote tunnel opened'                        line 23\n"),
          std::string("'Desktop session opened'                      line 24\n")}) {
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
    EXPECT_NE(printed.find("| <Scrip/>\\xc2\\x9b</z>\n        |         ^"), std::string::npos) << printed;
    const std::string latin =
        run("<?xml version='1.0' encoding='ISO-8859-1'?>\n<z>\xfc<Scrip/>\x9b</z>").printed;
    EXPECT_NE(latin.find("| <z>\xc3\xbc<Scrip/>\\xc2\\x9b</z>\n        |     ^"), std::string::npos) << latin;
}

TEST_F(ConfigCheckTest, NothingThatATerminalObeysIsPrinted) {
    const std::string text = document(part("path", "log/\xc2\x9b\x7f.xml") + "<b c='d'>\xc2\x85</b>");
    workspace.write("a\x1b[31m.xml", text);
    workspace.write("bad\xc2\x9b.xml", "<z>\x9b\xff\x1b</z>");
    const checks::Run found = check(workspace, "a\x1b*.xml bad*.xml 'gone\x1b.xml'; '" CONFIG_CHECK
                                               "' '--\x1b'; '" CONFIG_CHECK "' -j a*.xml bad*.xml");
    EXPECT_EQ(found.printed.find_first_of("\x1b\x7f\x9b\x85\r\t"), std::string::npos) << found.printed;
    for (const char* const signs : {"a\\x1b[31m.xml: settings", "gone\\x1b.xml: No such", "option --\\x1b",
                                    "log/\\xc2\\x9b\\x7f.xml "}) {
        EXPECT_NE(found.printed.find(signs), std::string::npos) << signs << "\n" << found.printed;
    }
}

TEST_F(ConfigCheckTest, CleanUpOfWhatIsNoArchive) {
    const auto old = std::filesystem::file_time_type::clock::now() - std::chrono::hours(24 * 40);
    for (const char* const name : {"agent.xml", "agent2026_1_31_10_5_0.xml", "agent2026_1_31_10_5_0.xml.gz",
                                   "my-agent.xml", "agenda.xml", "agent.xmlx"}) {
        workspace.write(std::string("log/") + name, "");
        std::filesystem::last_write_time(workspace.path(std::string("log/") + name), old);
    }
    workspace.write("log/new-agent.xml", "");
    const std::string printed = run(document(part("logging"))).printed;
    EXPECT_EQ(findings(printed), "3:14 warning clean-up") << printed;
    EXPECT_NE(printed.find("the next start deletes 'agent.xmlx', 'my-agent.xml', no archive"),
              std::string::npos)
        << printed;
    EXPECT_EQ(run(document(part("logging", "<LogRevisionDays>40</LogRevisionDays>"))).printed, "");
    EXPECT_EQ(std::filesystem::last_write_time(workspace.path("log/my-agent.xml")), old);
}

TEST_F(ConfigCheckTest, LongNames) {
    const auto found = [&](std::size_t length) {
        return findings(run(document(part("path", "log/" + std::string(length - 4, 'n') + ".xml"))).printed);
    };
    EXPECT_EQ(found(236), "");
    EXPECT_EQ(found(237), "3:14 warning archives");
    EXPECT_EQ(found(256), "3:14 error path; 3:14 warning archives");
}

TEST_F(ConfigCheckTest, WrittenByOthers) {
    using std::filesystem::perms;
    workspace.write("config.xml", "");
    const auto with = [&](const char* name, perms added) {
        const std::filesystem::path path = workspace.path(name);
        const perms before = std::filesystem::status(path).permissions();
        std::filesystem::permissions(path, added, std::filesystem::perm_options::add);
        const std::string printed = run(document(part("script", "bin/run.sh"))).printed;
        std::filesystem::permissions(path, before);
        return findings(printed);
    };
    EXPECT_EQ(with("config.xml", perms::group_write), "");
    EXPECT_EQ(with("config.xml", perms::others_write), "1:1 warning others-may-write");
    EXPECT_EQ(with("", perms::others_write), "1:1 warning others-may-write");
    EXPECT_EQ(with("", perms::others_write | perms::sticky_bit), "");
    EXPECT_EQ(with("config.xml", perms::others_write | perms::sticky_bit), "1:1 warning others-may-write");
    EXPECT_EQ(with("bin/run.sh", perms::others_write), "2:9 warning others-may-write");
    EXPECT_EQ(with("bin", perms::others_write), "2:9 warning others-may-write");
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
        workspace.write("config.xml", text);
        const ::pid_t child = ::fork();
        if (child == 0) {
            const int out = ::open("/dev/null", O_WRONLY);
            ::dup2(out, STDOUT_FILENO);
            ::execl(CONFIG_CHECK, CONFIG_CHECK, workspace.path("config.xml").c_str(), nullptr);
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
    workspace.write("config.xml", document(part("resume", "locked/r.xml") + part("logging")));
    workspace.write("log/agent.xml", "");
    workspace.write("locked/other", "");
    using std::filesystem::perms;
    const perms readable = perms::owner_read | perms::owner_exec | perms::group_read | perms::group_exec |
                           perms::others_read | perms::others_exec;
    std::filesystem::permissions(workspace.path(""), readable);
    std::filesystem::permissions(workspace.path("locked"), readable);
    std::filesystem::permissions(workspace.path("log/agent.xml"), readable);
    // The super-user may write everything.
    const std::string user = ::geteuid() == 0 ? "setpriv --reuid=65534 --regid=65534 --clear-groups " : "";
    const checks::Run found = checks::shell(workspace, user + "'" CONFIG_CHECK "' --quiet config.xml");
    EXPECT_EQ(findings(found.printed),
              "2:22 error not-writable; 4:14 error not-writable; 6:15 warning repeated")
        << found.printed;
    std::filesystem::permissions(workspace.path(""), perms::owner_all);
    std::filesystem::permissions(workspace.path("locked"), perms::owner_all);
}

struct ScheduleRow {
    support::RowName name;  ///< also the schedule file's
    const char* expected;
};

const support::Rows<ScheduleRow> scheduleRows(
    "ConfigCheck/ScheduleFile",
    {{"state/new", ""},
     {"state/good", ""},
     {"state/empty", ""},
     {"state/bad", "error schedule"},
     {"gone/s", "error missing-directory"},
     {"state", "error path-is-directory"},
     {"./state/resume.xml", "2:22 error same-file"}},
    [](const ScheduleRow& row) {
        const Checker checker;
        checker.workspace.write("state/good", "<RSMExecuteCommand><RSMStartDate>");
        checker.workspace.write("state/bad", " <RSMExecuteCommand>");
        checker.workspace.write("state/empty", "");
        const checks::Run found =
            checker.run(document(part("resume", "state/resume.xml")), "-q --schedule=" + row.name.text);
        EXPECT_EQ(findings(found.printed), row.expected) << found.printed;
    });

TEST_F(ConfigCheckTest, JsonHoldsAllOfIt) {
    std::filesystem::copy_file(EXAMPLE, workspace.path("good.xml"));
    workspace.write("bad.xml", "<z>");
    workspace.write("config.xml", document(part("script", "\xc3\xa4") + "<B\xc3\xa4/>"));
    const checks::Run found = check(workspace, "--json good.xml bad.xml config.xml gone.xml 2>/dev/null");
    EXPECT_EQ(found.status, 2);
    const auto files = nlohmann::json::parse(found.printed).at("files");
    ASSERT_EQ(files.size(), 4U);
    EXPECT_EQ(files[0]["findings"].size(), 0U);
    EXPECT_EQ(files[0]["settings"].size(), 15U);
    EXPECT_EQ(files[0]["settings"][1].dump(), R"({"meaning":"bytes","name":"FileLogging/FileSize",)"
                                              R"("origin":{"column":9,"line":10},"value":"5000000"})");
    EXPECT_EQ(files[0]["settings"][5]["values"][1].dump(),
              R"({"origin":{"column":13,"line":24},"value":"Desktop session opened"})");
    EXPECT_EQ(files[1]["accepted"], false);
    EXPECT_EQ(files[1]["findings"][0]["kind"], "not-well-formed");
    EXPECT_EQ(files[1]["findings"][0]["notes"][0]["line"], 1);
    EXPECT_FALSE(files[1].contains("settings"));
    EXPECT_EQ(files[2]["settings"][0]["origin"], "default");
    EXPECT_EQ(files[3]["unreadable"], "No such file or directory");
    EXPECT_FALSE(
        nlohmann::json::parse(check(workspace, "-jq good.xml").printed)["files"][0].contains("settings"));
}

struct CommandRow {
    support::RowName name;
    const char* arguments;
    int status;
    const char* says;
};

const support::Rows<CommandRow> commandRows(
    "ConfigCheck/CommandLine",
    {{"help", "--help", 0, "Usage: zephan-config-check [OPTION]... FILE...\n"},
     {"version", "--version", 0, "zephan-config-check " VERSION "\n"},
     {"no file", "", 2, "no FILE to check\nTry zephan-config-check --help.\n"},
     {"unknown option", "--no-such good.xml", 2, "unknown option --no-such"},
     {"unknown letter", "--quiet -zj good.xml", 2, "unknown option -z\n"},
     {"option without its value", "--schedule", 2, "no value for option --schedule"},
     {"empty path of the schedule", "--schedule= good.xml", 2, "the path of the schedule file is empty"},
     {"file that is not there", "gone.xml", 2, "zephan-config-check: gone.xml: No such file or directory"},
     {"directory", "log", 2, "zephan-config-check: log: is a directory"},
     {"device", "/dev/null", 2, "/dev/null: is not a regular file"},
     {"good file", "good.xml", 0, "settings in force"},
     {"good and bad file", "good.xml bad.xml", 1, "bad.xml: settings in force"},
     {"absent and bad file", "gone.xml bad.xml", 2, "bad.xml:1:1: error"},
     {"end of the options", "-- good.xml", 0, ""},
     {"full device", "good.xml >/dev/full", 2, "the output could not be written"}},
    [](const CommandRow& row) {
        const support::Workspace workspace;
        std::filesystem::copy_file(EXAMPLE, workspace.path("good.xml"));
        workspace.write("bad.xml", document(""));
        const checks::Run found = check(workspace, row.arguments);
        EXPECT_EQ(found.status, row.status);
        EXPECT_NE(found.printed.find(row.says), std::string::npos) << found.printed;
    });

}  // namespace
