#include "Rules.h"

#include <algorithm>

namespace check {
namespace {

using Texts = std::span<const std::string>;

/// A kind of activity that is followed: its texts, and where they stand.
struct Activity {
    const char* name;
    const char* section;
    Setting openSetting;
    Setting closeSetting;
    Texts open;
    Texts close;
    bool otherEnd;  ///< something else ends it, too
};

void checkEnds(const Inspection& in, const Activity& activity) {
    const Position root = in.root().place;
    if (!activity.open.empty() && activity.close.empty() && !activity.otherEnd) {
        in.warning(in.tagOf(activity.openSetting, root), "never-ends",
                   std::string("texts open a ") + activity.name + " and none closes it ('CloseMessage' in '" +
                       activity.section + "'): once begun, the activity does not end");
    }
    if (activity.open.empty() && !activity.close.empty()) {
        in.warning(in.tagOf(activity.closeSetting, root), "no-effect",
                   std::string("texts close a ") + activity.name + " and none opens it ('OpenMessage' in '" +
                       activity.section + "')");
    }
}

constexpr std::size_t kMostCompared = 100;  // texts of a list; nobody writes more by hand

/// An audit message that holds texts of both kinds leaves the count as it was.
void checkOverlap(const Inspection& in, const Activity& activity) {
    if (std::max(activity.open.size(), activity.close.size()) > kMostCompared) {
        return;
    }
    for (const std::string& open : activity.open) {
        for (const std::string& close : activity.close) {
            const bool closeInOpen = open.find(close) != std::string::npos;
            if (!closeInOpen && close.find(open) == std::string::npos) {
                continue;
            }
            const Setting setting = closeInOpen ? activity.closeSetting : activity.openSetting;
            in.error(in.tagOf(setting, in.root().place), "overlap",
                     closeInOpen
                         ? "the text " + shown(close) + " closes a " + activity.name + ", and is part of " +
                               shown(open) + ", which opens one: such a message opens and closes at once"
                         : "the text " + shown(open) + " opens a " + activity.name + ", and is part of " +
                               shown(close) + ", which closes one: such a message opens and closes at once");
            return;
        }
    }
}

void checkFileListener(const Inspection& in, Position listeners) {
    const Position position = in.tagOf(Setting::FileListner, listeners);
    const Element* logging = nullptr;
    for (const auto& [element, tag] : in.selection.looked) {
        logging = tag == TagNames::FileLogging ? element : logging;
    }
    if (!in.settings.fileListner) {
        if (logging != nullptr) {
            in.warning(logging->place, "no-effect",
                       "'FileLogging' has no effect and no log file is written: 'FileListner' is not on");
        }
        return;
    }
    if (logging == nullptr) {
        in.warning(position, "no-file-logger",
                   "'FileListner' is on, and there is no 'FileLogging': the log is " +
                       shown(in.settings.logFilePath) + " and holds messages of level force only");
    } else if (in.selection[Setting::LogLevel] == nullptr) {
        in.warning(logging->place, "no-level",
                   "without a 'LogLevel' the log file holds messages of level force only");
    } else if (in.settings.logLevel == config::levelNamed("audit")) {
        in.warning(
            in.textPositionOf(*in.selection[Setting::LogLevel]), "writes-nothing",
            "at level 'audit' nothing is written to the log file, not even audit messages; 'info' holds them");
    }
}

/// Where the listeners are switched on, or were meant to be.
struct ListenerPlace {
    Position position;
    bool isListnerSet = false;
};

ListenerPlace findListeners(const Inspection& in) {
    ListenerPlace place{in.root().place};
    for (const Element* child = in.root().firstChild; child != nullptr; child = child->next) {
        if (child->name == kTags[TagNames::ListnerSet]) {
            place = {child->place, true};
        } else if (!place.isListnerSet && !in.findings.full() && !findTag(child->name) &&
                   meantBy(child->name, std::nullopt) == TagNames::ListnerSet) {
            place.position = child->place;
        }
    }
    return place;
}

}  // namespace

void checkListeners(const Inspection& in) {
    const config::Settings& settings = in.settings;
    const auto [listeners, isListnerSet] = findListeners(in);
    if (!in.detects() && !settings.fileListner) {
        in.error(
            listeners, "no-listener",
            std::string(isListnerSet ? "'ListnerSet' switches no listener on" : "there is no 'ListnerSet'") +
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
    if (!in.detects()) {
        if (texts) {
            const Position first = in.tagOf(Setting::TunnelOpen, in.tagOf(Setting::FileOpen, listeners));
            in.warning(
                first, "no-effect",
                "texts that mark remote activity have no effect: neither 'RDListner' nor 'TunnelListner' is on");
        }
    } else if (!texts) {
        in.error(
            in.tagOf(settings.rdListner ? Setting::RDListner : Setting::TunnelListner, listeners), "no-texts",
            std::string(settings.rdListner ? "'RDListner'" : "'TunnelListner'") +
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
