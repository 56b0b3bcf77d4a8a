// One entry of log or audit: the first byte selects the export and how full the file is, the second is the
// level, the rest is the message. An accepted entry stands in the file as a whole.
#include "Host.h"
#include "ZephanRSMLogger.h"
#include "platform/agent/Logging.h"

#include <cstring>

namespace {

constexpr std::size_t kLimit = 20000;
constexpr std::size_t kLongest = 10239;

const fuzz::Host& startedHost() {
    static const fuzz::Host& host = []() -> const fuzz::Host& {
        const fuzz::Host& fresh = fuzz::Host::instance();
        fresh.write(
            "config",
            "<z><FileLogging><LogFilePath>" + fresh.path("log/k.xml") +
                "</LogFilePath><LogLevel>warn</LogLevel><FileSize>20000</FileSize></FileLogging>"
                "<TunnelMessags><OpenMessage><Message>o</Message><Message>open</Message></OpenMessage>"
                "<CloseMessage><Message>c</Message></CloseMessage><AbortMessage>abort</AbortMessage></"
                "TunnelMessags>"
                "<FileMessages><OpenMessage><Message>send</Message></OpenMessage><CloseMessage><Message>s</"
                "Message>"
                "</CloseMessage></FileMessages><ListnerSet><RDListner>1</RDListner><TunnelListner>1</"
                "TunnelListner>"
                "<FileListner>1</FileListner></ListnerSet></z>");
        fuzz::require(ZPXRSMLoggerStatup(fresh.path("config").c_str()) == 0);
        KRXLogSetFunc(ZPXRSMLoggerLog);
        return fresh;
    }();
    return host;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const fuzz::Host& host = startedHost();
    if (size < 2) {
        return 0;
    }
    const bool audit = data[0] % 2 != 0;
    const std::uint8_t level = data[1];
    // A file of more than the limit makes this entry the first one after a rotation.
    const std::string before(data[0] % 4 >= 2 ? kLimit : 0, 'x');
    host.write("log/k.xml", before);
    const std::string message(fuzz::text(data + 2, size - 2));
    fuzz::require((audit ? ZPXRSMLoggerAudit(message.c_str()) : ZPXRSMLoggerLog(level, message.c_str())) ==
                  0);
    const bool accepted = !audit && (level == 40 || level == 50 || level == 250);
    const std::string kept(message.c_str(), strnlen(message.c_str(), kLongest));
    std::string written(kLimit + kLongest + 200, '\0');
    std::FILE* const file = std::fopen(host.path("log/k.xml").c_str(), "r");
    written.resize(std::fread(written.data(), 1, written.size(), file));
    std::fclose(file);
    fuzz::require(accepted ? written.ends_with(" :: " + kept + (before.empty() ? "" : "\n"))
                           : written == before);
    for (const auto& entry : std::filesystem::directory_iterator(host.path("log"))) {
        if (entry.path().filename() != "k.xml") {
            std::filesystem::remove(entry.path());
        }
    }
    return 0;
}
