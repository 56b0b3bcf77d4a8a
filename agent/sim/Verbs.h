// What a scenario can ask for.
#pragma once

#include "Clock.h"
#include "Settings.h"
#include "Words.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace sim {

enum class Verb : std::uint8_t {
    startDataSource,
    startRsm,
    startLogger,
    startWebService,
    stopDataSource,
    stopRsm,
    stopLogger,
    stopWebService,
    serviceCreate,
    serviceDestroy,
    connect,
    disconnect,
    call,
    command,
    log,
    audit,
    assetPresent,
    assetAbsent,
    enterpriseAccept,
    enterpriseRefuse,
    enterpriseDelay,
    enterpriseThread,
    pollInterval,
    failThreadConstruct,
    failThreadStart,
    routeOn,
    routeOff,
    logLock,
    threadDestroy,
    write,
    remove,
    age,
    show,
    clockStep,
    unload,
    end,
};

/// A verb and its arguments, found to fit each other.
struct Action {
    Verb verb = Verb::end;
    std::vector<Word> arguments;
    std::string text;    ///< the words as they stood, unquoted
    Instant time{0};     ///< when it is due
    std::string source;  ///< the file
    int line = 0;
};

/// The action in `words`, without time and place. Throws std::runtime_error with the reason when there is
/// none.
Action parseAction(const std::vector<Word>& words);

/// A number of seconds or days with an optional sign and fraction, in millionths of its unit; none for
/// anything else.
std::optional<std::int64_t> parseDecimal(const std::string& text);
/// A whole number from 0 to `maximum`.
std::optional<unsigned int> parseCount(const std::string& text, unsigned int maximum);
/// What `on` and `off` stand for.
std::optional<bool> parseOnOff(const std::string& text);
/// A way to destroy a thread by its name.
std::optional<agent::ThreadDestroy> parseThreadDestroy(const std::string& text);
/// A level by number or name.
std::optional<std::uint8_t> parseLevel(const std::string& text);

}  // namespace sim
