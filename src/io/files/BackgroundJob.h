// Running file work in the background and delivering its results on the main thread.
#pragma once

#include <QObject>
#include <functional>

#include "io/files/Progress.h"

namespace orvanel {

/// Runs `work` on a thread of the application's pool. Main thread.
void runInBackground(std::function<void()> work);

/// Runs `call` on the main thread, soon. Any thread.
void runOnMainThread(std::function<void()> call);

/// Forwards progress to the main thread in at most a hundred steps, until `receiver` is destroyed. The result
/// may be used by any thread, one at a time. Main thread.
[[nodiscard]] Progress progressOnMainThread(QObject* receiver, std::function<void(double)> progressChanged,
                                            CancellationPtr cancellation = nullptr);

}  // namespace orvanel
