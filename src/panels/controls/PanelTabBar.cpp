#include "panels/controls/PanelTabBar.h"

#include <QPainter>

#include "look/Look.h"
#include "panels/controls/RowPainting.h"

namespace orvanel {

PanelTabBar::PanelTabBar(QWidget* parent) : QTabBar(parent) {
  setFont(look::font());
  setExpanding(false);
  setDrawBase(false);
  setElideMode(Qt::ElideNone);
  setUsesScrollButtons(false);
  setFocusPolicy(Qt::TabFocus);
  setMouseTracking(true);
  setAttribute(Qt::WA_Hover);
}

QSize PanelTabBar::tabSizeHint(int index) const {
  // As wide as the heavier text of the current tab, so that nothing moves.
  const QFontMetrics metrics(look::font(look::type::normal, QFont::DemiBold));
  return {metrics.horizontalAdvance(tabText(index)) + 2 * look::space::wide, look::size::bar};
}

void PanelTabBar::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  const double line = look::hairline(*this);
  painter.fillRect(QRectF(0, height() - line, width(), line), look::color::divider);
  const QPoint pointer = mapFromGlobal(QCursor::pos());
  for (int index = 0; index < count(); ++index) {
    const QRect tab = tabRect(index);
    const bool isCurrent = index == currentIndex();
    const bool isHovered = underMouse() && tab.contains(pointer);
    painter.setFont(isCurrent ? look::font(look::type::normal, QFont::DemiBold) : look::font());
    painter.setPen(isCurrent || isHovered ? look::color::text : look::color::secondaryText);
    painter.drawText(tab, Qt::AlignCenter | Qt::TextSingleLine, tabText(index));
    if (!isCurrent) continue;
    if (hasFocus()) {
      paintRowFocus(painter, tab.adjusted(look::space::tight, look::space::tight, -look::space::tight,
                                          -look::space::tight));
    } else {
      const QRectF underline(tab.left() + look::space::wide, height() - look::size::focusRing,
                             tab.width() - 2 * look::space::wide, look::size::focusRing);
      painter.fillRect(underline, look::color::accent);
    }
  }
}

}  // namespace orvanel
