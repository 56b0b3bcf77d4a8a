#include "Module.h"

#include <fstream>
#include <stdexcept>

#include <unistd.h>

namespace bench {
namespace {

/// The texts number `list`, `list` + 4, ... of `count`: 17 to 26 characters, half of them beginning with
/// letters that fill any message.
std::string messages(int list, int count) {
    static const char* const kBeginnings[] = {"Remote tunnel opened", "session closed by",
                                              "File transfer started", "ended upload of file"};
    std::string elements;
    for (int i = list; i < count; i += 4) {
        elements += "<Message>" + std::string(kBeginnings[(list + i / 4) % 4]) + " " + std::to_string(i) +
                    "</Message>";
    }
    return elements;
}

}  // namespace

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
