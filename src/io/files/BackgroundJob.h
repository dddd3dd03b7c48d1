// A piece of file work beside the main thread whose outcome comes back there.
#pragma once

#include <QObject>
#include <functional>

#include "io/files/Progress.h"

namespace orvanel {

/// Runs `work` on a thread of the application's pool. Both calls are made from the main thread's side.
void runInBackground(std::function<void()> work);

/// Runs `call` on the main thread, soon. Any thread.
void runOnMainThread(std::function<void()> call);

/// Passes progress on to the main thread, a hundred steps at most; silent when `receiver` has gone. The
/// result may be told by any thread, one at a time. Main thread.
[[nodiscard]] Progress progressOnMainThread(QObject* receiver, std::function<void(double)> progressChanged,
                                            CancellationPtr cancellation = nullptr);

}  // namespace orvanel
