// Where work runs that nobody waits for: compressing the history, saving. It yields to the frame and to
// commands. Background work holds surfaces and tiles, never model objects.
#pragma once

#include <tbb/task_arena.h>

#include <functional>

namespace orvanel {

/// One low-priority arena for the process. Tasks should take a few milliseconds at most, so that a core
/// is free soon when the foreground needs it.
[[nodiscard]] tbb::task_arena& backgroundArena();

/// Has the arena carry out the task soon; returns at once. From any thread.
void enqueueBackgroundTask(std::function<void()> task);

/// Blocks until all that was given to `enqueueBackgroundTask` is done, what these tasks gave it in turn
/// included.
void waitForBackgroundWork();

}  // namespace orvanel
