#include "Module.h"

#include <fstream>
#include <stdexcept>

#include <unistd.h>

namespace bench {
namespace {

constexpr int kLists = 4;

/// The texts number `list`, `list` + 4, ... of `count`.
std::string messages(int list, int count) {
    std::string elements;
    for (int i = list; i < count; i += kLists) {
        elements += "<Message>" + activityText(i) + "</Message>";
    }
    return elements;
}

}  // namespace

std::string activityText(int number) {
    static const char* const kBeginnings[] = {"Remote tunnel opened", "session closed by",
                                              "File transfer started", "ended upload of file"};
    return std::string(kBeginnings[(number + number / kLists) % 4]) + " " + std::to_string(number);
}

Scratch::Scratch() : directory_(std::filesystem::path(BENCH_SCRATCH) / std::to_string(::getpid())) {
    std::filesystem::create_directories(directory_);
}

Scratch::~Scratch() {
    std::filesystem::remove_all(directory_);
}

std::string writeConfiguration(const Scratch& scratch, int texts, const std::string& logLevel) {
    std::string path = scratch.path("config.xml");
    std::ofstream(path)
        << "<?xml version=\"1.0\" encoding=\"UTF-8\"?><Configuration><FileLogging><LogFilePath>"
        << scratch.path("agent-log.xml") << "</LogFilePath><FileSize>2000000000</FileSize><LogLevel>"
        << logLevel << "</LogLevel></FileLogging><ListnerSet><FileListner>on</FileListner></ListnerSet>"
        << "<TunnelMessags><OpenMessage>" << messages(0, texts) << "</OpenMessage><CloseMessage>"
        << messages(1, texts) << "</CloseMessage></TunnelMessags><FileMessages><OpenMessage>"
        << messages(2, texts) << "</OpenMessage><CloseMessage>" << messages(3, texts)
        << "</CloseMessage></FileMessages></Configuration>";
    return path;
}

Module::Module(const std::string& configuration) : library_(BENCH_MODULE) {
    if (library_.ZPXRSMLoggerStatup(configuration.c_str()) != 0) {
        throw std::runtime_error("the logger does not start");
    }
}

Module::~Module() {
    library_.ZPXRSMLoggerShutdown();
}

}  // namespace bench
