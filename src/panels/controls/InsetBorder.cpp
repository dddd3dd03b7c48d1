#include "panels/controls/InsetBorder.h"

#include <QPainter>
#include <QWidget>

#include "look/Look.h"

namespace orvanel {

InsetBorder InsetBorder::ofWells(const QWidget& widget) {
  return {look::color::bevelDark, look::color::border, look::hairline(widget)};
}

void InsetBorder::paint(QPainter& painter, const QRectF& box) const {
  painter.fillRect(QRectF(box.left(), box.top(), box.width(), width), topColor);
  painter.fillRect(QRectF(box.left(), box.top(), width, box.height()), topColor);
  painter.fillRect(QRectF(box.left(), box.bottom() - width, box.width(), width), bottomColor);
  painter.fillRect(QRectF(box.right() - width, box.top(), width, box.height()), bottomColor);
}

}  // namespace orvanel
