#include "panels/controls/SymbolButton.h"

#include <QPainter>
#include <utility>

#include "look/Look.h"
#include "look/Symbol.h"

namespace orvanel {

SymbolButton::SymbolButton(QString symbolName, double symbolSize, QWidget* parent)
    : QAbstractButton(parent), symbolName_(std::move(symbolName)), symbolSize_(symbolSize) {
  setFocusPolicy(Qt::TabFocus);
  setAttribute(Qt::WA_Hover);
}

void SymbolButton::setSymbolName(const QString& name) {
  if (name == symbolName_) return;
  symbolName_ = name;
  update();
}

QSize SymbolButton::sizeHint() const {
  const int edge = qRound(symbolSize_) + 2 * look::space::tight;
  return {edge, edge};
}

void SymbolButton::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  if (isEnabled() && (isDown() || isChecked() || underMouse())) {
    painter.setPen(Qt::NoPen);
    painter.setBrush(isDown() || isChecked() ? look::color::pressed : look::color::hover);
    painter.drawRoundedRect(rect(), look::radius::control, look::radius::control);
  }
  if (hasFocus()) {
    painter.setPen(QPen(look::color::accent, look::size::focusRing));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(QRectF(rect()).adjusted(1, 1, -1, -1), look::radius::control,
                            look::radius::control);
  }
  QRectF box(0, 0, symbolSize_, symbolSize_);
  box.moveCenter(QRectF(rect()).center());
  look::paintSymbol(painter, symbolName_, box, isEnabled() ? look::color::symbol : look::color::disabledText);
}

}  // namespace orvanel
