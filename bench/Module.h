// The built library as an agent has it: loaded with dlopen, its logger started on a configuration file.
#pragma once

#include "lib/AgentHost.h"
#include "lib/Module.h"

#include <filesystem>
#include <string>

namespace bench {

/// A directory of this benchmark's own below the build tree; gone with the object.
class Scratch final {
  public:
    Scratch();
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;
    ~Scratch();

    std::string path(const std::string& name) const { return (directory_ / name).string(); }

  private:
    std::filesystem::path directory_;
};

/// One of the texts that mark remote activity: 17 to 26 characters, half of them beginning with letters that fill
/// any message.
std::string activityText(int number);

/// Writes a configuration whose log file lies beside it and is never rotated. Returns its path. `texts`: how
/// many texts mark remote activity, spread over the four lists; `logLevel`: as in the file.
std::string writeConfiguration(const Scratch& scratch, int texts = 4, const std::string& logLevel = "info");

class Module final {
  public:
    explicit Module(const std::string& configuration);
    Module(const Module&) = delete;
    Module& operator=(const Module&) = delete;
    ~Module();

  private:
    agent::AgentHost host_;
    agent::Module library_;

  public:
    decltype(&ZPXRSMLoggerLog) log = library_.ZPXRSMLoggerLog;
    decltype(&ZPXRSMLoggerAudit) audit = library_.ZPXRSMLoggerAudit;
};

}  // namespace bench
