// Leaving the main thread and coming back to it. Needs a running application object.
#pragma once

#include <functional>

namespace orvanel {

/// Runs `work` on a thread of the application's pool. Main thread.
void runInBackground(std::function<void()> work);

/// Runs `call` on the main thread, soon; calls from one thread run in order. Any thread.
void runOnMainThread(std::function<void()> call);

}  // namespace orvanel
