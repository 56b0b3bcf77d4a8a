#pragma once

namespace platform {

/// Nothing is ever unwound from outside here: a thread that others end is gone where it stands.
struct ForcedUnwind {};

}  // namespace platform
