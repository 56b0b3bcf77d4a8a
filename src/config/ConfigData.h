#pragma once

#include <cstdint>
#include <string>

/// The settings of file logging, remote detection and the RSM resume state. Written while the configuration
/// is loaded, only read afterwards. Message lists are arrays ended by an empty text; an absent list is null
/// and counts as empty. Texts and lists belong to the object and stay valid as long as the object lives; a further
/// load fills an object of its own.
class ConfigData {
  public:
    /// Reads the configuration file into the settings. Throws std::runtime_error; what was read before stays.
    virtual void parseConfigFile() = 0;

    virtual const std::string& getLogFilePath() const = 0;
    virtual void setLogFilePath(const std::string& path) = 0;
    virtual const std::string& getFileSize() const = 0;  ///< decimal bytes
    virtual void setFileSize(const std::string& bytes) = 0;
    virtual const std::string& getLogRevisionDays() const = 0;  ///< decimal days
    virtual void setLogRevisionDays(const std::string& days) = 0;
    virtual std::int32_t getLogLevel() const = 0;
    /// Takes the name of a level; any other text counts as "info".
    virtual void setLogLevel(const std::string& name) = 0;
    virtual bool getFileLogger() const = 0;
    virtual void setFileLogger(bool on) = 0;
    virtual const std::string* getTunnelOpenMessages() const = 0;
    virtual const std::string* getTunnelCloseMessages() const = 0;
    virtual const std::string* getFileOpenMessages() const = 0;
    virtual const std::string* getFileCloseMessages() const = 0;
    virtual const std::string& getAbortMessage() const = 0;
    virtual void setAbortMessage(const std::string& text) = 0;
    virtual const std::string& getScript() const = 0;
    virtual void setScript(const std::string& command) = 0;
    virtual bool getRDListner() const = 0;
    virtual void setRDListner(bool on) = 0;
    virtual bool getTunnelListner() const = 0;
    virtual void setTunnelListner(bool on) = 0;
    virtual bool getFileListner() const = 0;
    virtual void setFileListner(bool on) = 0;
    virtual const std::string& getRSMResumeStatusFile() const = 0;
    virtual void setRSMResumeStatusFile(const std::string& path) = 0;

    ConfigData& operator=(const ConfigData&) = delete;
    virtual ~ConfigData() = default;

  protected:
    ConfigData() = default;
    ConfigData(const ConfigData&) = default;
};
