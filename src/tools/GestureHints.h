// What the mouse and the keys held with it do on the canvas and in the panels, in words: one table for the
// list of shortcuts. Texts are to be translated in the context "gestures". Any thread.
#pragma once

#include <span>

namespace orvanel {

struct GestureHint {
  /// What is held, turned or clicked.
  const char* input;
  const char* effect;
};

struct GestureGroup {
  /// The tools, or the part of the window, that this holds for.
  const char* title;
  std::span<const GestureHint> hints;
};

[[nodiscard]] std::span<const GestureGroup> gestureGroups();

}  // namespace orvanel
