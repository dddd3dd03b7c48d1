#include "panels/palette/ActiveTooltip.h"

#include <QFocusEvent>
#include <QPainter>
#include <QScreen>

#include "look/Look.h"

namespace orvanel {

ActiveTooltipView::ActiveTooltipView(QWidget* owner)
    : QLabel(owner, Qt::ToolTip | Qt::WindowTransparentForInput | Qt::WindowDoesNotAcceptFocus) {
  setAttribute(Qt::WA_ShowWithoutActivating);
  setAttribute(Qt::WA_TransparentForMouseEvents);
  setTextFormat(Qt::PlainText);
  setFont(look::font());
  setMargin(look::space::tight);
}

void ActiveTooltipView::showBeside(const QWidget& widget, const QString& tooltipText) {
  setText(tooltipText);
  adjustSize();
  const QRect beside(widget.mapToGlobal(QPoint(0, 0)), widget.size());
  QRect box(0, 0, width(), height());
  box.moveCenter(beside.center());
  box.moveLeft(beside.right() + 1 + look::space::normal);
  if (const QScreen* screen = widget.screen(); box.right() > screen->availableGeometry().right()) {
    box.moveRight(beside.left() - 1 - look::space::normal);
  }
  move(box.topLeft());
  show();
}

void ActiveTooltipView::paintEvent(QPaintEvent* event) {
  QPainter painter(this);
  painter.fillRect(rect(), look::color::border);
  const double line = look::hairline(*this);
  painter.fillRect(QRectF(rect()).adjusted(line, line, -line, -line), look::color::field);
  painter.end();
  QLabel::paintEvent(event);
}

ActiveTooltip::ActiveTooltip(QWidget* owner) : QObject(owner), view_(new ActiveTooltipView(owner)) {}

void ActiveTooltip::attach(QWidget* widget) {
  widget->installEventFilter(this);
}

bool ActiveTooltip::eventFilter(QObject* watched, QEvent* event) {
  const auto* widget = qobject_cast<QWidget*>(watched);
  if (widget == nullptr) return false;
  switch (event->type()) {
    case QEvent::Enter:
      view_->showBeside(*widget, widget->toolTip());
      return false;
    case QEvent::FocusIn: {
      const auto reason = static_cast<QFocusEvent*>(event)->reason();
      const bool isByKeys = reason == Qt::TabFocusReason || reason == Qt::BacktabFocusReason;
      if (isByKeys) view_->showBeside(*widget, widget->toolTip());
      return false;
    }
    case QEvent::ToolTipChange:
      if (view_->isVisible() && widget->underMouse()) view_->showBeside(*widget, widget->toolTip());
      return false;
    case QEvent::Leave:
    case QEvent::FocusOut:
    case QEvent::Hide:
    case QEvent::MouseButtonPress:
    case QEvent::KeyPress:
    case QEvent::WindowDeactivate:
      view_->hide();
      return false;
    case QEvent::ToolTip:
      return true;  // the toolkit's own would cover this one after a while
    default:
      return false;
  }
}

}  // namespace orvanel
