#pragma once

/// The run of the XML toolkit for the loads of this module. A run that a failed load left going is taken over
/// by the next load, and ended when the library is unloaded. A start or stop that fails half-way leaves a
/// toolkit that would crash when it is started or stopped once more; from then on there is none in this
/// process. It is not begun when memory is short. One load at a time.
namespace toolkit {

/// Starts the toolkit, unless it runs. What is thrown in it becomes a log line.
void start();
/// Stops the toolkit if it runs; likewise.
void stop();
bool isRunning() noexcept;

}  // namespace toolkit
