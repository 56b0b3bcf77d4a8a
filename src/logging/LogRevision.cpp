#include "logging/LogRevision.h"

#include "config/XMLConfigData.h"
#include "logging/LogFamily.h"
#include "platform/Directory.h"
#include "platform/agent/Logging.h"
#include "platform/portable/Number.h"

LogRevision::LogRevision() {
    const auto configuration = XMLConfigData::instance();
    if (configuration == nullptr) {
        return;
    }
    const LogFamily family(configuration->getLogFilePath());
    KRXLog(level::kForce, "\n Log File Location = %s", family.directory().c_str());
    std::vector<std::string> names;
    platform::Directory opened;
    listDirectory(family.openedDirectory(), opened, names);
    KRXLog(level::kForce, "\n Revision for no of days = %s \n", configuration->getLogRevisionDays().c_str());
    const std::int64_t daysKept = platform::readNumber(configuration->getLogRevisionDays());
    family.keepDue(names, opened, daysKept, LogFamily::Undated::date);
    for (const std::string& name : names) {
        // Once more: among many files some time has passed, and another process may write to this one by now.
        if (!LogFamily::isDue(opened, name, daysKept, LogFamily::Undated::date) || !opened.mayRead(name)) {
            continue;
        }
        KRXLog(level::kForce, "\n deleting file = %s \n", family.pathOf(name).c_str());
        if (opened.remove(name)) {
            KRXLog(level::kForce, "\n File successfully deleted.");
        } else {
            KRXLog(level::kForce, "\n Error deleting file....");
        }
    }
}

int LogRevision::listDirectory(const std::string& path, platform::Directory& directory,
                               std::vector<std::string>& names) {
    int error = directory.open(path);
    if (error == 0) {
        error = directory.list(names);
    }
    if (error != 0) {
        KRXLog(level::kForce, "\n \"Error(\" %d \") opening \" %s \n", error, path.c_str());
    }
    return error;
}
