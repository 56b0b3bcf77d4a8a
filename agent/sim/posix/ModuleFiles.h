// The descriptors that the module opened.
#pragma once

namespace sim {

/// Remembers a descriptor that the module has opened. Any thread.
void noteOpened(int descriptor);
/// Closes those that are still open, as the end of the module's process would.
void closeOpened();

}  // namespace sim
