#include "panels/SymbolButton.h"

#include <QPainter>

namespace orvanel {

namespace {

/// The symbols' view box is 24 units wide; the shape itself takes about 14 of them.
constexpr double gridPerShape = 24.0 / 14.0;

}  // namespace

SymbolButton::SymbolButton(const QString& symbolName, double symbolSize, QWidget* parent)
    : QAbstractButton(parent),
      icon_(QStringLiteral(":/icons/%1.svg").arg(symbolName)),
      symbolSize_(symbolSize) {
  setFocusPolicy(Qt::NoFocus);
  setAttribute(Qt::WA_Hover);
}

QSize SymbolButton::sizeHint() const {
  const int edge = qRound(symbolSize_ * gridPerShape) + 6;
  return {edge, edge};
}

void SymbolButton::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  if (underMouse() && isEnabled()) {
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0, 0, 0, isDown() ? 44 : 22));
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), 4, 4);
  }
  const int edge = qRound(symbolSize_ * gridPerShape);
  const QRect box((width() - edge) / 2, (height() - edge) / 2, edge, edge);
  icon_.paint(&painter, box, Qt::AlignCenter, isEnabled() ? QIcon::Normal : QIcon::Disabled);
}

}  // namespace orvanel
