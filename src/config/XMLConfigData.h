#pragma once

#include "config/ConfigData.h"
#include "config/TagNames.h"

#include <memory>

#include <xercesc/util/XercesDefs.hpp>

XERCES_CPP_NAMESPACE_BEGIN
class DOMElement;
XERCES_CPP_NAMESPACE_END

/// The one configuration object, filled from an XML file.
class XMLConfigData final : public ConfigData {
  public:
    /// Creates the object with the path of its file on the first call; later calls answer the same object and
    /// ignore the path. Null when the object cannot be created. Start thread only.
    static XMLConfigData* getInstance(const std::string& path) noexcept;
    /// The object, or null. Any thread that holds a pass of the module gate.
    static XMLConfigData* instance() noexcept;
    /// Destroys the object. Start/stop thread only.
    static void destroyInstance() noexcept;

    void parseConfigFile() override;
    const std::string& getLogFilePath() const override { return logFilePath_; }
    void setLogFilePath(const std::string& path) override { logFilePath_ = path; }
    const std::string& getFileSize() const override { return fileSize_; }
    void setFileSize(const std::string& bytes) override { fileSize_ = bytes; }
    const std::string& getLogRevisionDays() const override { return logRevisionDays_; }
    void setLogRevisionDays(const std::string& days) override { logRevisionDays_ = days; }
    std::int32_t getLogLevel() const override { return logLevel_; }
    void setLogLevel(const std::string& name) override;
    bool getFileLogger() const override { return fileLogger_; }
    void setFileLogger(bool on) override { fileLogger_ = on; }
    const std::string* getTunnelOpenMessages() const override { return tunnelOpenMessages_.get(); }
    const std::string* getTunnelCloseMessages() const override { return tunnelCloseMessages_.get(); }
    const std::string* getFileOpenMessages() const override { return fileOpenMessages_.get(); }
    const std::string* getFileCloseMessages() const override { return fileCloseMessages_.get(); }
    const std::string& getAbortMessage() const override { return abortMessage_; }
    void setAbortMessage(const std::string& text) override { abortMessage_ = text; }
    const std::string& getScript() const override { return script_; }
    void setScript(const std::string& command) override { script_ = command; }
    bool getRDListner() const override { return rdListner_; }
    void setRDListner(bool on) override { rdListner_ = on; }
    bool getTunnelListner() const override { return tunnelListner_; }
    void setTunnelListner(bool on) override { tunnelListner_ = on; }
    bool getFileListner() const override { return fileListner_; }
    void setFileListner(bool on) override { fileListner_ = on; }
    const std::string& getRSMResumeStatusFile() const override { return resumeStatusFile_; }
    void setRSMResumeStatusFile(const std::string& path) override { resumeStatusFile_ = path; }

  private:
    using MessageList = std::unique_ptr<std::string[]>;

    static constexpr TagNames tags_{};
    /// No level of a message: nothing but `level::kForce` passes it.
    static constexpr std::int32_t kDefaultLogLevel = 80;

    explicit XMLConfigData(const std::string& path) : configFilePath_(path) {}

    // Reading of the file (XMLConfigReader.cpp)
    void readDocument(const xercesc::DOMElement& root);
    void readSettingOfRoot(const xercesc::DOMElement& child);
    void handleElement(const xercesc::DOMElement& element);
    void readFileLogging(const xercesc::DOMElement& element);
    void readTunnelMessages(const xercesc::DOMElement& element);
    void readListeners(const xercesc::DOMElement& element);
    void readFileMessages(const xercesc::DOMElement& element);
    void readMessageList(const xercesc::DOMElement& parent, TagNames::Tag tag, MessageList& list) const;

    std::string configFilePath_;
    std::string logFilePath_ = "..\\log\\kelp-logs.xml";
    std::string fileSize_ = "5000000";
    std::string logRevisionDays_ = "30";
    std::int32_t logLevel_ = kDefaultLogLevel;
    bool fileLogger_ = true;
    MessageList tunnelOpenMessages_;
    MessageList tunnelCloseMessages_;
    MessageList fileOpenMessages_;
    MessageList fileCloseMessages_;
    std::string abortMessage_;
    std::string resumeStatusFile_;
    std::string script_;
    bool rdListner_ = false;
    bool tunnelListner_ = false;
    bool fileListner_ = false;
};

/// Loads the configuration: starts the XML toolkit, creates the object on the first call, reads its file,
/// stops the toolkit. Null when the object cannot be created. Throws std::runtime_error when the file cannot
/// be read. Start thread only.
XMLConfigData* loadConfiguration(const std::string& path);
