// The parts that every status has in common.
#pragma once

#include "status/StateFiles.h"

#include <array>
#include <cstdint>
#include <nlohmann/json.hpp>

namespace status {

/// Names of a file's states, in their order.
inline constexpr std::array kFileStates = {"not named", "missing", "empty", "unreadable",
                                           "no record", "damaged", "sound"};

/// {"gmt": ..., "local": ...}
nlohmann::ordered_json momentJson(std::int64_t moment);
/// Path, state and problem of a file.
nlohmann::ordered_json foundJson(const FoundFile& file);
/// What the files hold and what a start would do.
nlohmann::ordered_json stateFilesJson(const StateFiles& files, std::int64_t now);
/// As text; bytes that are not UTF-8 are replaced.
std::string dumped(const nlohmann::ordered_json& json);

}  // namespace status
