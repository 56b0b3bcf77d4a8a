// zephan-log: prints the module's log file and its archives, one entry a line.
#include "ConfiguredPath.h"
#include "Follower.h"
#include "Listing.h"
#include "LogFiles.h"
#include "OpenLog.h"
#include "Options.h"
#include "platform/Clock.h"

#include <chrono>
#include <cstdio>
#include <exception>
#include <iostream>
#include <thread>

#include <unistd.h>

namespace {

using namespace logreader;

enum ExitStatus : int { printed = 0, nothingToPrint = 1, failed = 2 };

constexpr std::chrono::milliseconds kLookInterval(100);
constexpr std::size_t kLastWhenFollowing = 10;

void complain(const std::exception& error) {
    std::cerr << "zephan-log: " << error.what() << std::endl;
}

/// Prints each entry as soon as the next one begins, for what comes through a pipe.
void printStandardInput(Listing& listing) {
    EntryReader entries([&listing](char* buffer, std::size_t size) {
        listing.flush();
        const ssize_t length = ::read(STDIN_FILENO, buffer, size);
        return length < 0 ? 0 : static_cast<std::size_t>(length);
    });
    for (Entry entry; entries.next(entry) || entries.rest(entry);) {
        listing.take(entry, "-");
    }
}

/// False when the file could not be read.
bool print(LogFile& file, Listing& listing) {
    try {
        if (file.path == "-") {
            printStandardInput(listing);
        } else if (file.file.isOpen()) {
            OpenLog log(file.path, std::move(file.file));
            printAll(log, listing);
        } else {
            OpenLog log(file.path);
            printAll(log, listing);
        }
        return true;
    } catch (const std::runtime_error& error) {
        complain(error);
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
    if (options.follow && (named.size() != 1 || named.front() == "-")) {
        throw UsageError("--follow takes one FILE");
    }
    return named;
}

Listing listingFor(const Options& options) {
    const TimeZone logZone = options.logZone ? TimeZone::named(*options.logZone) : TimeZone::local();
    const TimeZone zone = options.zone ? TimeZone::named(*options.zone) : logZone;
    const std::chrono::sys_seconds now{std::chrono::seconds(platform::now())};
    std::optional<std::size_t> last = options.last;
    if (options.follow && !options.since && !last) {
        last = kLastWhenFollowing;
    }
    return {logZone, Selection(options, readSpan(options.since, options.until, now, zone)),
            EntryWriter(options.json, zone), last, stdout};
}

ExitStatus run(const Options& options) {
    Listing listing = listingFor(options);
    std::vector<LogFile> files = filesFor(namedFiles(options));
    bool complete = true;
    if (!options.follow) {
        for (LogFile& file : files) {
            complete = print(file, listing) && complete;
        }
        listing.releaseLast();
        listing.flush();
        return !complete ? failed : listing.printedAny() ? printed : nothingToPrint;
    }
    LogFile log = std::move(files.back());
    files.pop_back();
    if (options.since || options.last) {
        for (LogFile& archive : files) {
            print(archive, listing);
        }
    }
    Follower follower(log.path, std::move(log.file), listing);
    follower.look();
    follower.look();  // what stands at the end of the file is one of the last entries, too
    listing.releaseLast();
    for (;;) {
        listing.flush();
        std::this_thread::sleep_for(kLookInterval);
        follower.look();
    }
}

}  // namespace

int main(int count, char** words) {
    try {
        const Options options = parseOptions(count, words);
        switch (options.mode) {
            case Options::Mode::help:
                std::cout << kHelp;
                return printed;
            case Options::Mode::version:
                std::cout << "zephan-log " TOOL_VERSION "\n";
                return printed;
            case Options::Mode::read:
                return run(options);
        }
    } catch (const UsageError& error) {
        complain(error);
        std::cerr << "Try zephan-log --help.\n";
    } catch (const std::exception& error) {
        complain(error);
    }
    return failed;
}
