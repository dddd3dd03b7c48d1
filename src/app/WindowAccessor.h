// What the program keeps of its main window beyond the window's own life: the size of its contents, for the
// length of the run, and the rule of its close button. Main thread only.
#pragma once

#include <QSize>
#include <optional>

#include "app/WindowState.h"

namespace orvanel {

/// The close button of the main window closes a tab; only without any does it close the window.
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

  /// The size that a re-created window begins with; none before the first resize.
  [[nodiscard]] static std::optional<QSize> rememberedContentSize();
  static void rememberContentSize(const QSize& size);
};

}  // namespace orvanel
