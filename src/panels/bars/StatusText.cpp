#include "panels/bars/StatusText.h"

#include <QPainter>
#include <cmath>
#include <utility>

#include "look/Look.h"

namespace orvanel {

namespace {

constexpr QLatin1String separator("  ");

}  // namespace

StatusText::StatusText(const QString& name, const QString& widestPart, QWidget* parent)
    : QWidget(parent), name_(name), widestPart_(widestPart), color_(look::color::secondaryText) {
  setFont(look::font(look::type::small));
  setAccessibleName(name);
}

void StatusText::setText(const QString& text) {
  if (text == text_) return;
  text_ = text;
  setAccessibleName(text.isEmpty() ? name_ : QStringLiteral("%1: %2").arg(name_, text));
  update();
}

void StatusText::setColor(const QColor& color) {
  color_ = color;
  update();
}

QStringList StatusText::parts() const {
  return text_.split(separator);
}

int StatusText::widthOfParts(int count) const {
  return count * fontMetrics().horizontalAdvance(widestPart_ + separator);
}

int StatusText::neededWidth() const {
  const QStringList all = parts();
  // Rounded up, or the text would be cut for the sake of a fraction of a point.
  const double last = std::ceil(QFontMetricsF(font(), this).horizontalAdvance(all.constLast()));
  return widthOfParts(static_cast<int>(all.size()) - 1) + static_cast<int>(last);
}

QSize StatusText::sizeHint() const {
  return {std::max(widthOfParts(1), neededWidth()), fontMetrics().height()};
}

void StatusText::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  painter.setPen(color_);
  QRect place = rect();
  for (const QString& part : parts()) {
    const QString shown = fontMetrics().elidedText(part, Qt::ElideRight, place.width());
    painter.drawText(place, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine, shown);
    place.setLeft(place.left() + widthOfParts(1));
  }
}

}  // namespace orvanel
