#include "Rules.h"

#include <algorithm>

namespace check {
namespace {

/// A kind of activity that is followed: its texts, and where they stand.
struct Activity {
    const char* name;
    const char* section;
    Setting openSetting;
    Setting closeSetting;
    std::span<const std::string> open;
    std::span<const std::string> close;
    bool otherEnd;  ///< something else ends it, too
};

void checkEnds(const Inspection& in, const Activity& activity) {
    const Position root = in.root().place;
    if (!activity.open.empty() && activity.close.empty() && !activity.otherEnd) {
        in.warning(in.tagOf(activity.openSetting, root), "never-ends", "texts open a ", activity.name,
                   " and none closes it ('CloseMessage' in '", activity.section,
                   "'): once begun, the activity does not end");
    }
    if (activity.open.empty() && !activity.close.empty()) {
        in.warning(in.tagOf(activity.closeSetting, root), "no-effect", "texts close a ", activity.name,
                   " and none opens it ('OpenMessage' in '", activity.section, "')");
    }
}

constexpr std::size_t kMostCompared = 100;  // texts of a list; nobody writes more by hand

/// An audit message that holds texts of both kinds leaves the count unchanged.
void checkOverlap(const Inspection& in, const Activity& activity) {
    if (std::max(activity.open.size(), activity.close.size()) > kMostCompared) {
        return;
    }
    for (const std::string& open : activity.open) {
        for (const std::string& close : activity.close) {
            const bool closes = open.find(close) != std::string::npos;
            if (closes || close.find(open) != std::string::npos) {
                in.error(in.tagOf(closes ? activity.closeSetting : activity.openSetting, in.root().place),
                         "overlap", "the text ", shown(closes ? close : open), closes ? " closes" : " opens",
                         " a ", activity.name, ", and is part of ", shown(closes ? open : close), ", which ",
                         closes ? "opens" : "closes", " one: such a message opens and closes at once");
                return;
            }
        }
    }
}

void checkFileListener(const Inspection& in, Position listeners) {
    const Element* logging = nullptr;
    for (const Element* child = in.root().firstChild; child != nullptr; child = child->next) {
        logging = child->name == kTags[TagNames::FileLogging] && in.looked.contains(child) ? child : logging;
    }
    if (!in.settings.fileListner) {
        if (logging != nullptr) {
            in.warning(logging->place, "no-effect",
                       "'FileLogging' has no effect and no log file is written: 'FileListner' is not on");
        }
    } else if (logging == nullptr) {
        in.warning(in.tagOf(Setting::FileListner, listeners), "no-file-logger",
                   "'FileListner' is on, and there is no 'FileLogging': the log is ",
                   shown(in.settings.logFilePath), " and holds messages of level force only");
    } else if (in.originOf(Setting::LogLevel) == nullptr) {
        in.warning(logging->place, "no-level",
                   "without a 'LogLevel' the log file holds messages of level force only");
    } else if (in.settings.logLevel == config::levelNamed("audit")) {
        in.warning(
            in.textPositionOf(*in.originOf(Setting::LogLevel)), "writes-nothing",
            "at level 'audit' nothing is written to the log file, not even audit messages; 'info' holds them");
    }
}

/// Where the listeners are switched on, or were meant to be.
std::pair<Position, bool> findListeners(const Inspection& in) {
    Position position = in.root().place;
    bool isListnerSet = false;
    for (const Element* child = in.root().firstChild; child != nullptr; child = child->next) {
        if (child->name == kTags[TagNames::ListnerSet]) {
            position = child->place;
            isListnerSet = true;
        } else if (!isListnerSet && !in.findings.full() && !findTag(child->name) &&
                   meantBy(child->name, std::nullopt) == TagNames::ListnerSet) {
            position = child->place;
        }
    }
    return {position, isListnerSet};
}

}  // namespace

void checkListeners(const Inspection& in) {
    const config::Settings& settings = in.settings;
    const auto [listeners, isListnerSet] = findListeners(in);
    if (!in.detects() && !settings.fileListner) {
        in.error(listeners, "no-listener",
                 isListnerSet ? "'ListnerSet' switches no listener on" : "there is no 'ListnerSet'",
                 ": no log file is written, no remote activity is noticed and no script is run");
        return;
    }
    checkFileListener(in, listeners);

    const Activity activities[] = {
        {"tunnel", "TunnelMessags", Setting::TunnelOpen, Setting::TunnelClose,
         config::textsOf(settings.tunnelOpenMessages), config::textsOf(settings.tunnelCloseMessages),
         !settings.abortMessage.empty()},
        {"file transfer", "FileMessages", Setting::FileOpen, Setting::FileClose,
         config::textsOf(settings.fileOpenMessages), config::textsOf(settings.fileCloseMessages), false}};
    const bool texts = !activities[0].open.empty() || !activities[1].open.empty();
    if (!in.detects() && texts) {
        in.warning(
            in.tagOf(Setting::TunnelOpen, in.tagOf(Setting::FileOpen, listeners)), "no-effect",
            "texts that mark remote activity have no effect: neither 'RDListner' nor 'TunnelListner' is on");
    }
    if (in.detects() && !texts) {
        in.error(
            in.tagOf(settings.rdListner ? Setting::RDListner : Setting::TunnelListner, listeners), "no-texts",
            settings.rdListner ? "'RDListner'" : "'TunnelListner'",
            " is on, and no 'OpenMessage' names a text that begins remote activity: it never notices any");
    }
    for (const Activity& activity : activities) {
        if (in.detects()) {
            checkEnds(in, activity);
            checkOverlap(in, activity);
        }
    }
    if (settings.tunnelListner && settings.script.empty()) {
        in.warning(in.tagOf(Setting::TunnelListner, listeners), "no-script",
                   "'TunnelListner' is on, and there is no 'Script' for it to run");
    }
    if (!settings.tunnelListner && !settings.script.empty()) {
        in.warning(in.tagOf(Setting::Script, listeners), "no-effect",
                   "the script is never run: 'TunnelListner' is not on");
    }
}

}  // namespace check
