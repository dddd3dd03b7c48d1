// Waiting for background work on the main thread, with user input restricted to cancelling. Main thread only.
#pragma once

#include <functional>

namespace orvanel {

/// Processes events while the condition holds. User input is deferred until the cancel button appears. From
/// then on it reaches only that button and open alerts; Escape presses the button.
void processEventsWhile(const std::function<bool()>& condition);

}  // namespace orvanel
