#include "config/TagNames.h"

#include "config/ToolkitMemory.h"
#include "platform/Console.h"

#include <xercesc/util/XMLString.hpp>

namespace {

constexpr std::array<const char*, TagNames::Count> kNames{
    "Message",       "LogFilePath",  "FileSize",           "LogRevisionDays", "LogLevel",
    "FileLogger",    "FileLogging",  "OpenMessage",        "CloseMessage",    "AbortMessage",
    "TunnelMessags", "ListnerSet",   "RDListner",          "TunnelListner",   "FileListner",
    "Script",        "FileMessages", "RSMResumeStatusFile"};

}  // namespace

// The names outlive the toolkit's run, and its own memory manager ends with it.
TagNames::TagNames() {
    try {
        for (std::size_t i = 0; i < names_.size(); ++i) {
            names_[i] = xercesc::XMLString::transcode(kNames[i], ToolkitMemory::unbounded());
        }
    } catch (...) {
        release();
        throw;
    }
}

TagNames::~TagNames() {
    try {
        release();
    } catch (...) {
        platform::complain("Unknown Exception encountered in TagNames Destructor\n");
    }
}

void TagNames::release() {
    for (XMLCh*& name : names_) {
        xercesc::XMLString::release(&name, ToolkitMemory::unbounded());
    }
}
