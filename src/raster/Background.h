// The arena for background work, such as compressing the history and saving. It yields to frames and
// commands. Background work holds surfaces and tiles, never model objects.
#pragma once

#include <tbb/task_arena.h>

#include <functional>

namespace orvanel {

/// One low-priority arena for the process. Tasks should take a few milliseconds at most, so that a core
/// is free soon when the foreground needs it.
[[nodiscard]] tbb::task_arena& backgroundArena();

/// Queues a task and returns at once. Callable from any thread.
void enqueueBackgroundTask(std::function<void()> task);

/// Blocks until all queued tasks are done, including tasks that they queue in turn.
void waitForBackgroundWork();

}  // namespace orvanel
