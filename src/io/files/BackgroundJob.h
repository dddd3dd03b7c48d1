// Running file work in the background and delivering its progress on the main thread.
#pragma once

#include <QObject>
#include <functional>

#include "io/files/Progress.h"
#include "model/BackgroundCall.h"

namespace orvanel {

/// Forwards progress to the main thread in at most a hundred steps, until `receiver` is destroyed. The result
/// may be used by any thread, one at a time. Main thread.
[[nodiscard]] Progress progressOnMainThread(QObject* receiver, std::function<void(double)> progressChanged,
                                            CancellationPtr cancellation = nullptr);

}  // namespace orvanel
