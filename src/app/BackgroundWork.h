// Keeps background work that never ends, such as a read from a dead network mount, from blocking saves or the
// exit of the program. Main thread only.
#pragma once

#include <chrono>

namespace orvanel {

/// Allows enough concurrent jobs that a few hung reads don't block saves.
void makeRoomForHangingReads();

/// Waits for background jobs to finish. If some don't within `patience`, exits the process immediately with
/// `status`, because a thread blocked in a system call can't be stopped. All writes must have finished.
void endBackgroundWork(int status, std::chrono::milliseconds patience);

}  // namespace orvanel
