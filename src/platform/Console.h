#pragma once

namespace platform {

/// Writes a text to standard output as it is, through the C stream, so that its order with the host's own
/// output is kept. Never fails visibly. Any thread.
void echo(const char* text) noexcept;

/// Writes a text to standard error.
void complain(const char* text) noexcept;

}  // namespace platform
