// What the square and the strip of the colour picker have in common. Main thread only.
#pragma once

#include <QKeyEvent>
#include <QPainter>

#include "look/Look.h"

namespace orvanel::picker {

/// The room around the colours for markers at their edges.
inline constexpr int overhang = 7;

/// How far an arrow key moves a marker: one in a hundred, with Shift ten.
[[nodiscard]] inline double keyStep(const QKeyEvent& key) {
  return key.modifiers().testFlag(Qt::ShiftModifier) ? 0.1 : 0.01;
}

/// Around the colours rather than above them.
inline void paintFocusRing(QPainter& painter, const QRectF& colors) {
  constexpr double distance = 2;
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setBrush(Qt::NoBrush);
  painter.setPen(QPen(look::color::accent, look::size::focusRing));
  painter.drawRoundedRect(colors.adjusted(-distance, -distance, distance, distance), distance, distance);
}

}  // namespace orvanel::picker
