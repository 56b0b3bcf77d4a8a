// zephan-log: prints the module's log file and its archives, one entry a line.
#include "ConfiguredPath.h"
#include "Cursor.h"
#include "FileTable.h"
#include "Follower.h"
#include "Listing.h"
#include "LogFiles.h"
#include "Messages.h"
#include "Options.h"
#include "Pager.h"
#include "Reading.h"
#include "common/Program.h"
#include "platform/Clock.h"

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <thread>

#include <unistd.h>

namespace {

using namespace logreader;

enum ExitStatus : int { printed = 0, nothingToPrint = 1, failed = 2 };

constexpr std::chrono::milliseconds kLookInterval(100);
constexpr std::size_t kLastWhenFollowing = 10;

/// Prints each entry as soon as the next one begins, for what comes through a pipe.
bool printStandardInput(Listing& listing) {
    EntryReader entries([&listing](char* buffer, std::size_t size) {
        listing.flush();
        const ssize_t length = ::read(STDIN_FILENO, buffer, size);
        if (length < 0) {
            throw std::runtime_error(std::string("standard input: ") + std::strerror(errno));
        }
        return static_cast<std::size_t>(length);
    });
    try {
        printAll("-", entries, listing);
        return true;
    } catch (const std::runtime_error& error) {
        complain(error.what());
        return false;
    }
}

std::vector<std::string> namedFiles(const Options& options) {
    std::vector<std::string> named = options.files;
    if (options.config) {
        named.push_back(configuredPath(*options.config));
    }
    if (named.empty()) {
        if (::isatty(STDIN_FILENO) == 1) {
            throw UsageError("no FILE");
        }
        named.emplace_back("-");
    }
    const bool isOne = named.size() == 1 && named.front() != "-";
    if (options.mode != Options::Mode::read && named.front() == "-") {
        throw UsageError("--files and --disk-usage take a FILE");
    }
    if (options.follow && !isOne) {
        throw UsageError("--follow takes one FILE");
    }
    if (options.cursorFile && !isOne) {
        throw UsageError("--cursor-file takes one FILE");
    }
    return named;
}

/// One run of the program.
class Run final {
  public:
    explicit Run(const Options& options)
        : options_(options),
          logZone_(options.logZone ? TimeZone::named(*options.logZone) : TimeZone::local()),
          zone_(options.zone ? TimeZone::named(*options.zone) : logZone_),
          files_(namedFiles(options), logZone_, options.follow) {
        reading_.span = readSpan(options.since, options.until,
                                 std::chrono::sys_seconds{std::chrono::seconds(platform::now())}, zone_);
        if (reading_.span.until && reading_.span.until < reading_.span.since) {
            note("--until lies before --since, so there is nothing to print");
        }
    }

    ExitStatus entries() {
        Selection selection(options_, reading_.span);
        Listing listing(logZone_, std::move(selection), EntryWriter(options_.form, zone_), printing());
        if (reading_.after) {
            listing.skipTo(*reading_.after);
        }
        std::optional<Follower> follower;
        const ReadResult result = readFor(listing, files_, logZone_, reading_, [&](const LogFile& file) {
            if (options_.follow && !file.isArchive()) {
                follower.emplace(file, files_.archives(), logZone_, listing, options_.quiet);
                follower->look();
                follower->look();  // what stands at the end of the file is one of the last entries, too
                return true;
            }
            return file.path == "-" ? printStandardInput(listing) : printAll(file, listing);
        });
        listing.release();
        if (!result.found) {
            note("the entry that " + *options_.cursorFile +
                 " names is gone; beginning with the oldest one left");
        }
        listing.flush();
        while (follower) {
            std::this_thread::sleep_for(kLookInterval);
            follower->look();
            listing.flush();
        }
        return !result.complete || !listing.cursorIsKept() ? failed
               : listing.printedAny()                      ? printed
                                                           : nothingToPrint;
    }

    ExitStatus files() {
        EntryWriter times(options_.form, zone_);
        return printFiles(files_, logZone_, times, options_.form, output()) ? printed : failed;
    }

    ExitStatus diskUsage() { return printDiskUsage(files_, options_.form, output()) ? printed : failed; }

  private:
    Printing printing() {
        Printing printing;
        printing.last = options_.last;
        printing.reverse = options_.reverse;
        printing.context = options_.context;
        printing.output = output();
        if (options_.cursorFile) {
            printing.cursor = &cursor_.emplace(*options_.cursorFile);
            reading_.after = cursor_->read();
            if (!reading_.after && std::filesystem::exists(*options_.cursorFile)) {
                note(*options_.cursorFile + " names no entry; beginning with the oldest one left");
            }
        } else if (options_.follow && !options_.since && !options_.last) {
            printing.last = kLastWhenFollowing;
            reading_.logOnly = true;
        }
        reading_.stepwise = (printing.last || printing.reverse) && printing.context == 0 && !reading_.logOnly;
        return printing;
    }

    /// Wrong usage has been told by now.
    std::FILE* output() {
        return pager_.emplace(options_.pager && !options_.follow && options_.form != Form::json).output();
    }

    void note(const std::string& text) const {
        if (!options_.quiet) {
            complain(text);
        }
    }

    const Options& options_;
    TimeZone logZone_;
    TimeZone zone_;
    LogFiles files_;
    Reading reading_;
    std::optional<Cursor> cursor_;
    std::optional<Pager> pager_;
};

int run(const tools::CommandLine& given) {
    const Options options = readOptions(given);
    Run program(options);
    switch (options.mode) {
        case Options::Mode::files:
            return program.files();
        case Options::Mode::diskUsage:
            return program.diskUsage();
        case Options::Mode::read:
            break;
    }
    return program.entries();
}

}  // namespace

int main(int count, char** words) {
    return tools::runProgram({.name = "zephan-log",
                              .version = TOOL_VERSION,
                              .help = kHelp,
                              .failed = failed,
                              .options = optionRows()},
                             count, words, run);
}
