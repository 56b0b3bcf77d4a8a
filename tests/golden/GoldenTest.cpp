// The whole trace of each scenario, here and among the examples, against the one that is kept here.
#include "support/Replay.h"
#include "support/Rows.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <iterator>
#include <sstream>

#include <gtest/gtest.h>

namespace {

namespace fs = std::filesystem;

/// Scenarios for the simulator with a module that does little.
const fs::path kSimulator = fs::path(GOLDEN) / "simulator";

std::string contents(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// What is around the column, so that long lines can be compared by eye.
std::string excerpt(const std::string& line, std::size_t column) {
    constexpr std::size_t before = 120;
    constexpr std::size_t length = 240;
    const std::size_t begin = column > before ? column - before : 0;
    return (begin > 0 ? "..." : "") + line.substr(std::min(begin, line.size()), length) +
           (begin + length < line.size() ? "..." : "");
}

void compare(const fs::path& golden, const std::string& present) {
    std::istringstream keptLines(contents(golden));
    std::istringstream presentLines(present);
    std::string kept, now, before = "the begin";
    for (int number = 1;; ++number, before = kept) {
        const bool isKept = static_cast<bool>(std::getline(keptLines, kept));
        const bool isNow = static_cast<bool>(std::getline(presentLines, now));
        if (!isKept && !isNow) {
            return;
        }
        if (isKept && isNow && kept == now) {
            continue;
        }
        const auto column = static_cast<std::size_t>(
            std::mismatch(kept.begin(), kept.end(), now.begin(), now.end()).first - kept.begin());
        ADD_FAILURE_AT(golden.c_str(), number)
            << "after " << excerpt(before, 0)                              //
            << "\nkept  " << (isKept ? excerpt(kept, column) : "nothing")  //
            << "\nnow   " << (isNow ? excerpt(now, column) : "nothing")    //
            << "\nat column " << column + 1 << "; README.md beside it says how a trace is renewed";
        return;
    }
}

void check(const fs::path& scenario) {
    const support::Workspace workspace;
    for (const char* const folder : {GOLDEN, EXAMPLES}) {
        for (const auto& entry : fs::directory_iterator(folder)) {
            if (entry.path().extension() == ".xml") {
                workspace.write(entry.path().filename().string(), contents(entry.path()));
            }
        }
    }
    const bool simulatorAlone = scenario.parent_path() == kSimulator;
    const support::Replay replay(workspace, contents(scenario), "UTC",
                                 simulatorAlone ? "--module '" FAKE_MODULE "'" : "");
    ASSERT_EQ(replay.exitStatus(), 0) << replay.printed();
    const fs::path golden =
        (simulatorAlone ? kSimulator : fs::path(GOLDEN)) / (scenario.stem().string() + ".jsonl");
    if (std::getenv("ZEPHAN_RENEW_GOLDEN") != nullptr) {
        std::ofstream(golden, std::ios::binary) << replay.bytes();
        std::cout << golden.string() << " renewed\n";
    } else {
        compare(golden, replay.bytes());
    }
}

const bool registered = [] {
#ifdef __SANITIZE_THREAD__  // the other tests replay the module often enough for the time that it takes there
    const fs::path folders[] = {kSimulator};
#else
    const fs::path folders[] = {kSimulator, GOLDEN, EXAMPLES};
#endif
    for (const fs::path& folder : folders) {
        for (const auto& entry : fs::directory_iterator(folder)) {
            if (entry.path().extension() == ".scenario") {
                const fs::path path = entry.path();
                const std::string name = (folder == kSimulator ? "simulator " : "") + path.stem().string();
                support::registerRow("Golden", {name, path.c_str(), 1}, [path] { check(path); });
            }
        }
    }
    return true;
}();

}  // namespace
