#pragma once

/// The run of the XML toolkit for the loads of this module. A run that a failed load left going is taken over
/// by the next load, and ended when the library is unloaded. A start or stop that fails half-way leaves a
/// toolkit that would crash when it is started or stopped once more; from then on there is none in this
/// process. It is not begun when memory is short. Any thread; loads may overlap.
namespace toolkit {

/// A load begins: starts the toolkit, unless it runs. What is thrown in it becomes a log line.
void start();
/// The load that began with `start` is over.
void leave() noexcept;
/// Stops the toolkit if it runs and no load is under way; what is thrown in it becomes a log line.
void stop();
bool isRunning() noexcept;

}  // namespace toolkit
