#pragma once

namespace platform {

/// Writes a text to standard output unchanged, through the C stream, so that its order with the host's own
/// output is kept. Never fails visibly: output that nobody can receive is lost, and the host gets no signal
/// for it. Any thread.
///
/// While standard output takes nothing (a pipe that nobody reads), one thread waits for it at most: a thread
/// that finds another one writing leaves its text to that one and goes on. Up to 1 MiB of such texts is kept,
/// texts beyond that are lost, each as a whole. A thread with an `EchoWithoutWait` does not wait at all.
void echo(const char* text) noexcept;

/// Hands on to the system what the C stream has kept of standard output, unless another thread is writing to
/// it. Any thread.
void flushEcho() noexcept;

/// Writes a text to standard error. Any thread.
void complain(const char* text) noexcept;

}  // namespace platform
