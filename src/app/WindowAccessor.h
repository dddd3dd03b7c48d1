// Main window state that outlives the window itself: its content size, remembered until the program ends, and
// the behaviour of its close button. Main thread only.
#pragma once

#include <QSize>
#include <optional>

#include "app/WindowState.h"

namespace orvanel {

/// The close button of the main window closes the active tab; without tabs it closes the window.
class WindowCloseDelegate {
 public:
  explicit WindowCloseDelegate(WindowState& windowState) : windowState_(windowState) {}

  [[nodiscard]] bool windowShouldClose();

 private:
  WindowState& windowState_;
};

class WindowAccessor {
 public:
  explicit WindowAccessor(WindowState& windowState) : closeDelegate(windowState) {}

  WindowCloseDelegate closeDelegate;

  /// The initial size of a re-created window; nothing before the first resize.
  [[nodiscard]] static std::optional<QSize> rememberedContentSize();
  static void rememberContentSize(const QSize& size);
};

}  // namespace orvanel
