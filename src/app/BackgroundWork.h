// How the program deals with background work that may never end, such as reading from a network folder whose
// server has gone. Main thread only.
#pragma once

#include <chrono>

namespace orvanel {

/// Lets so much work run at once that a few reads that hang don't keep saves from running.
void makeRoomForHangingReads();

/// Waits for the background work. If some of it still runs then, ends the process at once with `status`,
/// because a thread that hangs in the system can't be ended. No file may be being written any more.
void endBackgroundWork(int status, std::chrono::milliseconds patience);

}  // namespace orvanel
