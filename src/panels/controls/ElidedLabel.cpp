#include "panels/controls/ElidedLabel.h"

#include <QHelpEvent>
#include <QPainter>
#include <QToolTip>

namespace orvanel {

ElidedLabel::ElidedLabel(QWidget* parent) : QLabel(parent) {
  setTextFormat(Qt::PlainText);
  setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
}

QString ElidedLabel::shownText() const {
  return fontMetrics().elidedText(text(), Qt::ElideMiddle, width());
}

QSize ElidedLabel::minimumSizeHint() const {
  return {fontMetrics().averageCharWidth(), fontMetrics().height()};
}

bool ElidedLabel::event(QEvent* event) {
  if (event->type() != QEvent::ToolTip) return QLabel::event(event);
  // Escaped, because names of files may look like markup.
  const QString whole =
      shownText() != text() ? QStringLiteral("<p>%1</p>").arg(text().toHtmlEscaped()) : QString();
  QToolTip::showText(static_cast<QHelpEvent*>(event)->globalPos(), whole, this);
  return true;
}

void ElidedLabel::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  painter.setPen(palette().color(foregroundRole()));
  painter.drawText(rect(), Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine, shownText());
}

}  // namespace orvanel
