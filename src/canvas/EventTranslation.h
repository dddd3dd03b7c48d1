// Translates the toolkit's input events into the editor's vocabulary. Main thread only.
#pragma once

#include <QKeyEvent>
#include <QMouseEvent>
#include <QWheelEvent>

#include "tools/EventRecord.h"

namespace orvanel::eventTranslation {

[[nodiscard]] std::uint32_t modifierBits(Qt::KeyboardModifiers modifiers);
/// Whether the key is a modifier: Shift, Control, Alt, Meta or Caps Lock.
[[nodiscard]] bool isModifierKey(int key);
/// For a modifier key, the record holds the modifiers in effect after the event.
[[nodiscard]] EventRecord keyRecord(const QKeyEvent& event);
[[nodiscard]] EventRecord mouseRecord(const QMouseEvent& event);

/// A movement of a wheel or touchpad.
struct WheelRecord {
  /// Logical pixels if precise, otherwise clicks of an ordinary wheel.
  QPointF delta;
  bool hasPreciseDeltas = false;
  Qt::ScrollPhase phase = Qt::NoScrollPhase;
  std::uint32_t modifiers = 0;
};
[[nodiscard]] WheelRecord wheelRecord(const QWheelEvent& event);

}  // namespace orvanel::eventTranslation
