#include "panels/controls/RowScrollBar.h"

#include <QPainter>
#include <utility>

namespace orvanel {

RowScrollBar::RowScrollBar(PaintRows paintRows, QWidget* parent)
    : QScrollBar(Qt::Vertical, parent), paintRows_(std::move(paintRows)) {
  setAccessibleName(parent->accessibleName());
}

void RowScrollBar::paintEvent(QPaintEvent* event) {
  {
    QPainter painter(this);
    paintRows_(painter);
  }
  QScrollBar::paintEvent(event);
}

}  // namespace orvanel
