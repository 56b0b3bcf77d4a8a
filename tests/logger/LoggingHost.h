// The built library in a host of this process.
#pragma once

#include "lib/AgentHost.h"
#include "lib/Module.h"
#include "lib/Observer.h"
#include "logger/Interposed.h"
#include "logger/Logs.h"

#include <atomic>
#include <filesystem>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

namespace logs {

/// The library, to the end of the process.
inline const agent::Module& module() {
    static const auto& loaded = *new agent::Module(MODULE);
    return loaded;
}

/// Counts the lines that tell of a rotation that failed, and of a directory that could not be read.
class FileErrors final : public agent::Observer {
  public:
    void onLog(int /*level*/, std::string_view text) override {
        count += text == "\n Error renaming file" ? 1 : 0;
        unread += text.starts_with("\n \"Error(\" ") ? 1 : 0;
    }
    std::atomic<int> count{0};
    std::atomic<int> unread{0};
};

/// A host with the library, its log file in a directory of its own, and what it saw.
struct LoggingHost {
    LoggingHost() = default;
    LoggingHost(const LoggingHost&) = delete;
    LoggingHost& operator=(const LoggingHost&) = delete;
    ~LoggingHost() { interposed::now = 0, interposed::write = nullptr; }

    void start(const std::string& more = {}, const std::string& path = {}) const {
        configure(more, path);
        startAsConfigured();
    }
    void configure(const std::string& more = {}, const std::string& path = {}) const {
        const std::string log = setting("LogFilePath", path.empty() ? file.string() : path);
        workspace.write("config", configuration(log + more));
    }
    void startAsConfigured() const {
        ASSERT_EQ(module().ZPXRSMLoggerStatup(workspace.path("config").c_str()), 0);
    }
    static void stop() { module().ZPXRSMLoggerShutdown(); }
    static void log(const char* text) { module().ZPXRSMLoggerLog(30, text); }
    std::string written(const std::string& name = "log/k.xml") const {
        return withoutStamps(workspace.read(name));
    }

    const support::Workspace workspace;
    const std::filesystem::path file = workspace.path("log/k.xml");
    FileErrors errors;
    agent::AgentHost agent{{.observer = &errors}};
};

}  // namespace logs
