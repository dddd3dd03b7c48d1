#include "panels/controls/RowPainting.h"

#include <QPainter>

#include "look/Look.h"
#include "look/Symbol.h"

namespace orvanel {

void paintRowBackground(QPainter& painter, const QRect& row, QStyle::State state) {
  // At fractional scales the sides may lie within a pixel: all of it belongs to the row, and none is blended.
  const bool wasSmooth = painter.testRenderHint(QPainter::Antialiasing);
  painter.setRenderHint(QPainter::Antialiasing, false);
  const QRectF place = QRectF(row).adjusted(-1, 0, 1, 0);
  if (state.testFlag(QStyle::State_Selected)) {
    painter.fillRect(place, look::color::selectedRow);
  } else if (state.testFlag(QStyle::State_MouseOver)) {
    painter.fillRect(place, look::color::hover);
  }
  const double line = 1.0 / painter.device()->devicePixelRatioF();
  painter.fillRect(QRectF(place.left(), place.bottom() - line, place.width(), line), look::color::divider);
  painter.setRenderHint(QPainter::Antialiasing, wasSmooth);
}

void paintRowFocus(QPainter& painter, const QRect& row) {
  constexpr double inset = look::size::focusRing / 2.0;
  painter.setPen(QPen(look::color::accent, look::size::focusRing));
  painter.setBrush(Qt::NoBrush);
  painter.drawRoundedRect(QRectF(row).adjusted(inset, inset, -inset, -inset), look::radius::control,
                          look::radius::control);
}

void paintRowButton(QPainter& painter, const QRect& button, const QString& symbol, const QColor& color,
                    RowButtonState state) {
  if (state != RowButtonState::plain) {
    painter.setPen(Qt::NoPen);
    painter.setBrush(state == RowButtonState::pressed ? look::color::bevelDark : look::color::pressed);
    painter.drawRoundedRect(button, look::radius::control, look::radius::control);
  }
  QRectF box(0, 0, look::size::symbol, look::size::symbol);
  box.moveCenter(QRectF(button).center());
  look::paintSymbol(painter, symbol, box, color);
}

}  // namespace orvanel
