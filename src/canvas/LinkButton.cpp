#include "canvas/LinkButton.h"

#include <QKeyEvent>
#include <QPainter>

#include "look/Look.h"

namespace orvanel {

LinkButton::LinkButton(const QString& text, QWidget* parent) : QAbstractButton(parent) {
  setText(text);
  setFont(look::font(look::type::heading));
  setCursor(Qt::PointingHandCursor);
  setFocusPolicy(Qt::StrongFocus);
  setAttribute(Qt::WA_Hover);
  setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

QSize LinkButton::sizeHint() const {
  return fontMetrics().size(Qt::TextSingleLine, text());
}

void LinkButton::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  QFont shown = font();
  shown.setUnderline(underMouse() || isDown() || (hasFocus() && isFocusShown_));
  painter.setFont(shown);
  painter.setPen(isDown() ? look::color::text : look::color::accent);
  painter.drawText(rect(), Qt::AlignCenter | Qt::TextSingleLine, text());
}

void LinkButton::keyPressEvent(QKeyEvent* event) {
  if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) return click();
  isFocusShown_ = true;
  update();
  QAbstractButton::keyPressEvent(event);
}

void LinkButton::focusInEvent(QFocusEvent* event) {
  isFocusShown_ = event->reason() == Qt::TabFocusReason || event->reason() == Qt::BacktabFocusReason;
  QAbstractButton::focusInEvent(event);
}

}  // namespace orvanel
