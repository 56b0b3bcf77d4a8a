#pragma once

#include "FileCheck.h"
#include "Rules.h"

#include <vector>

namespace check {

/// What the module works with, in the order of `settingPlaces`.
std::vector<SettingInForce> settingsInForce(const Inspection& inspection);

}  // namespace check
