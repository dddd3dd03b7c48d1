// The toolkit's input events in the editor's vocabulary. Main thread only.
#pragma once

#include <QKeyEvent>
#include <QMouseEvent>
#include <QWheelEvent>

#include "tools/EventRecord.h"

namespace orvanel::eventTranslation {

[[nodiscard]] std::uint32_t modifierBits(Qt::KeyboardModifiers modifiers);
/// Shift, Control, Alt, Meta and Caps Lock, which change modifiers rather than type.
[[nodiscard]] bool isModifierKey(int key);
/// Of a modifier key: the modifiers that hold after the event.
[[nodiscard]] EventRecord keyRecord(const QKeyEvent& event);
[[nodiscard]] EventRecord mouseRecord(const QMouseEvent& event);

/// How a wheel or touchpad moved.
struct WheelRecord {
  /// Logical pixels when precise, otherwise clicks of an ordinary wheel.
  QPointF delta;
  bool hasPreciseDeltas = false;
  Qt::ScrollPhase phase = Qt::NoScrollPhase;
  std::uint32_t modifiers = 0;
};
[[nodiscard]] WheelRecord wheelRecord(const QWheelEvent& event);

}  // namespace orvanel::eventTranslation
