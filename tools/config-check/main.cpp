// zephan-config-check: what is wrong with a configuration, and what is in force.
#include "FileCheck.h"
#include "Options.h"
#include "Reports.h"

#include <algorithm>
#include <exception>
#include <iostream>

namespace {

enum ExitStatus : int { nothingFound = 0, somethingFound = 1, failed = 2 };

ExitStatus run(const check::Options& options) {
    ExitStatus status = nothingFound;
    std::vector<check::Result> results;
    for (const std::string& file : options.files) {
        check::Result result = check::checkFile(file, options.schedule);
        if (!result.unreadable.empty()) {
            std::cerr << "zephan-config-check: " << file << ": " << result.unreadable << "\n";
            status = failed;
        } else if (!result.findings.all().empty()) {
            status = std::max(status, somethingFound);
        }
        if (options.json) {
            results.push_back(std::move(result));
        } else if (result.unreadable.empty()) {
            check::printText(std::cout, result, options.quiet);
        }
    }
    if (options.json) {
        check::printJson(std::cout, results, options.quiet);
    }
    return status;
}

ExitStatus runAsTold(int count, char** words) {
    try {
        const check::Options options = check::parseOptions(count, words);
        switch (options.mode) {
            case check::Options::Mode::help:
                std::cout << check::kHelp;
                return nothingFound;
            case check::Options::Mode::version:
                std::cout << "zephan-config-check " CHECK_VERSION "\n";
                return nothingFound;
            case check::Options::Mode::check:
                return run(options);
        }
    } catch (const check::UsageError& error) {
        std::cerr << "zephan-config-check: " << error.what() << "\nTry zephan-config-check --help.\n";
    } catch (const std::exception& error) {
        std::cerr << "zephan-config-check: " << error.what() << "\n";
    }
    return failed;
}

}  // namespace

int main(int count, char** words) {
    const ExitStatus status = runAsTold(count, words);
    if (!std::cout.flush()) {
        std::cerr << "zephan-config-check: the output could not be written\n";
        return failed;
    }
    return status;
}
