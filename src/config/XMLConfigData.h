#pragma once

#include "config/ConfigData.h"
#include "config/Settings.h"

#include <memory>

/// The one configuration object, filled from an XML file.
class XMLConfigData final : public ConfigData {
  public:
    /// The object that a load is to fill: a copy of the present one, or a new one with the path of its file
    /// (later paths are ignored). Nobody else sees it before it is published. Null when there is no memory for it.
    static std::shared_ptr<XMLConfigData> getInstance(const std::string& path) noexcept;
    /// Puts a filled object into the place of the present one, whole.
    static void publish(std::shared_ptr<XMLConfigData> filled) noexcept;
    /// The present object, or null; who has it may read on after it was replaced or destroyed. Any thread.
    static std::shared_ptr<const XMLConfigData> instance() noexcept;
    /// Changes with each object that is published, for those who keep one. Any thread.
    static std::uint64_t age() noexcept;
    /// Takes the present object away; it goes with its last reader. Any thread.
    static void destroyInstance() noexcept;

    void parseConfigFile() override;
    const std::string& getLogFilePath() const override { return settings_.logFilePath; }
    void setLogFilePath(const std::string& path) override { settings_.logFilePath = path; }
    const std::string& getFileSize() const override { return settings_.fileSize; }
    void setFileSize(const std::string& bytes) override { settings_.fileSize = bytes; }
    const std::string& getLogRevisionDays() const override { return settings_.logRevisionDays; }
    void setLogRevisionDays(const std::string& days) override { settings_.logRevisionDays = days; }
    std::int32_t getLogLevel() const override { return settings_.logLevel; }
    void setLogLevel(const std::string& name) override { settings_.logLevel = config::levelNamed(name); }
    bool getFileLogger() const override { return settings_.fileLogger; }
    void setFileLogger(bool on) override { settings_.fileLogger = on; }
    const std::string* getTunnelOpenMessages() const override { return list(settings_.tunnelOpenMessages); }
    const std::string* getTunnelCloseMessages() const override { return list(settings_.tunnelCloseMessages); }
    const std::string* getFileOpenMessages() const override { return list(settings_.fileOpenMessages); }
    const std::string* getFileCloseMessages() const override { return list(settings_.fileCloseMessages); }
    const std::string& getAbortMessage() const override { return settings_.abortMessage; }
    void setAbortMessage(const std::string& text) override { settings_.abortMessage = text; }
    const std::string& getScript() const override { return settings_.script; }
    void setScript(const std::string& command) override { settings_.script = command; }
    bool getRDListner() const override { return settings_.rdListner; }
    void setRDListner(bool on) override { settings_.rdListner = on; }
    bool getTunnelListner() const override { return settings_.tunnelListner; }
    void setTunnelListner(bool on) override { settings_.tunnelListner = on; }
    bool getFileListner() const override { return settings_.fileListner; }
    void setFileListner(bool on) override { settings_.fileListner = on; }
    const std::string& getRSMResumeStatusFile() const override { return settings_.resumeStatusFile; }
    void setRSMResumeStatusFile(const std::string& path) override { settings_.resumeStatusFile = path; }

    const config::Settings& settings() const noexcept { return settings_; }

  private:
    explicit XMLConfigData(const std::string& path) : configFilePath_(path) {}
    XMLConfigData(const XMLConfigData&) = default;

    static const std::string* list(const config::MessageList& texts) {
        return texts.empty() ? nullptr : texts.data();
    }
    void read(const config::Element& child);

    std::string configFilePath_;
    config::Settings settings_;
};

/// Loads the configuration: reads the file of the first load into a copy of the present object and publishes that.
/// Null when there is no memory for the object. Throws std::runtime_error when the file cannot be read; what was read before is
/// published nevertheless. Any thread; of loads that overlap the last one that is published stays.
std::shared_ptr<const XMLConfigData> loadConfiguration(const std::string& path);
