#include "app/dialogs/AnchorButton.h"

#include <QPainter>

#include "look/Look.h"

namespace orvanel {

AnchorButton::AnchorButton(const QString& placeName, QWidget* parent) : QAbstractButton(parent) {
  setCheckable(true);
  setAttribute(Qt::WA_Hover);
  setFocusPolicy(Qt::StrongFocus);
  setFont(look::font(look::type::heading));
  setAccessibleName(placeName);
  setToolTip(placeName);
  setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

QSize AnchorButton::sizeHint() const {
  const int edge = qMax(look::size::control, fontMetrics().height() + look::space::tight);
  return {edge, edge};
}

void AnchorButton::paintEvent(QPaintEvent* /*event*/) {
  using namespace look;
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  const double line = hasFocus() ? size::focusRing : 1.0;
  painter.setPen(QPen(hasFocus() ? color::accent : color::border, line));
  painter.setBrush(isDown()       ? color::pressed
                   : isChecked()  ? color::selectedRow
                   : underMouse() ? color::hover
                                  : color::field);
  const double inset = line / 2.0;
  painter.drawRoundedRect(QRectF(rect()).adjusted(inset, inset, -inset, -inset), radius::control,
                          radius::control);
  painter.setPen(isChecked() ? color::accent : color::symbol);
  painter.drawText(rect(), Qt::AlignCenter, text());
}

}  // namespace orvanel
