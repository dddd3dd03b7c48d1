#include "canvas/OverlayScrollIndicator.h"

#include <QMouseEvent>
#include <QPainter>
#include <algorithm>

#include "look/Look.h"

namespace orvanel {
namespace {

constexpr double shortestKnob = 24.0;
/// The knob is thinner than its track until the pointer is near.
constexpr double restingInset = 1.5;
constexpr double hoveredInset = 0.5;

}  // namespace

OverlayScrollIndicator::OverlayScrollIndicator(Qt::Orientation orientation, QWidget* parent)
    : QWidget(parent), isHorizontal_(orientation == Qt::Horizontal) {
  setAccessibleName(isHorizontal_ ? tr("Horizontal position") : tr("Vertical position"));
  setCursor(Qt::ArrowCursor);
}

void OverlayScrollIndicator::show(double knobProportion, double doubleValue) {
  if (knobProportion == knobProportion_ && doubleValue == doubleValue_) return;
  knobProportion_ = knobProportion;
  doubleValue_ = doubleValue;
  update();
}

double OverlayScrollIndicator::knobLength() const {
  return std::max(trackLength() * knobProportion_, shortestKnob);
}

QRectF OverlayScrollIndicator::knobRect() const {
  const double inset = isHovered_ || isDragging_ ? hoveredInset : restingInset;
  if (isHorizontal_) return {knobPosition(), inset, knobLength(), height() - 2.0 * inset};
  return {inset, knobPosition(), width() - 2.0 * inset, knobLength()};
}

void OverlayScrollIndicator::paintEvent(QPaintEvent* event) {
  (void)event;
  const QRectF knob = knobRect();
  const double radius = std::min(knob.width(), knob.height()) / 2.0;
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(QPen(look::color::indicatorRim, 1.0));
  painter.setBrush(isHovered_ || isDragging_ ? look::color::indicatorHover : look::color::indicator);
  painter.drawRoundedRect(knob.adjusted(0.5, 0.5, -0.5, -0.5), radius, radius);
}

void OverlayScrollIndicator::enterEvent(QEnterEvent* event) {
  isHovered_ = true;
  update();
  QWidget::enterEvent(event);
}

void OverlayScrollIndicator::leaveEvent(QEvent* event) {
  isHovered_ = false;
  update();
  QWidget::leaveEvent(event);
}

// The canvas may start to fit while the knob is held; the release event then never arrives.
void OverlayScrollIndicator::hideEvent(QHideEvent* event) {
  isDragging_ = false;
  isHovered_ = false;
  QWidget::hideEvent(event);
}

void OverlayScrollIndicator::mousePressEvent(QMouseEvent* event) {
  // The canvas beneath pans with the middle button.
  if (event->button() != Qt::LeftButton) return event->ignore();
  isDragging_ = true;
  dragStartValue_ = doubleValue_;
  dragStartPosition_ = along(event->position());
  update();
}

void OverlayScrollIndicator::mouseMoveEvent(QMouseEvent* event) {
  const double slack = trackLength() - knobLength();
  if (!isDragging_ || slack <= 0.0) return;
  const double moved = (along(event->position()) - dragStartPosition_) / slack;
  doubleValue_ = std::clamp(dragStartValue_ + moved, 0.0, 1.0);
  update();
  if (onValueChanged) onValueChanged(doubleValue_);
}

void OverlayScrollIndicator::mouseReleaseEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton) return;
  isDragging_ = false;
  update();
}

}  // namespace orvanel
