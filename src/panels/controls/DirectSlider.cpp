#include "panels/controls/DirectSlider.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QStyleOptionSlider>
#include <QWheelEvent>

#include "look/Look.h"

namespace orvanel {

namespace {

constexpr int largeStep = 10;

}  // namespace

DirectSlider::DirectSlider(QWidget* parent) : QSlider(Qt::Horizontal, parent) {
  setMinimumHeight(look::size::control);
  setSingleStep(1);
  setPageStep(largeStep);
}

void DirectSlider::setEditing(bool isEditing) {
  if (onEditingChanged) onEditingChanged(isEditing);
}

QRect DirectSlider::partRect(QStyle::SubControl part) const {
  QStyleOptionSlider option;
  initStyleOption(&option);
  return style()->subControlRect(QStyle::CC_Slider, &option, part, this);
}

void DirectSlider::moveHandle(double x) {
  const QRect groove = partRect(QStyle::SC_SliderGroove);
  const int length = partRect(QStyle::SC_SliderHandle).width();
  const int position = qRound(x - groove.left() - length / 2.0);
  setSliderPosition(QStyle::sliderValueFromPosition(minimum(), maximum(), position, groove.width() - length));
}

void DirectSlider::mousePressEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton || isSliderDown()) return event->ignore();
  const QRectF handle = partRect(QStyle::SC_SliderHandle);
  const double x = event->position().x();
  const bool isOnHandle = handle.contains(event->position());
  grabOffset_ = isOnHandle ? x - handle.center().x() : 0.0;
  setEditing(true);
  setSliderDown(true);
  if (!isOnHandle) moveHandle(x);
}

void DirectSlider::mouseMoveEvent(QMouseEvent* event) {
  if (isSliderDown()) moveHandle(event->position().x() - grabOffset_);
}

void DirectSlider::mouseReleaseEvent(QMouseEvent* event) {
  if (event->button() == Qt::LeftButton) endDrag();
}

void DirectSlider::hideEvent(QHideEvent* event) {
  endDrag();
  QSlider::hideEvent(event);
}

void DirectSlider::endDrag() {
  if (!isSliderDown()) return;
  setSliderDown(false);
  setEditing(false);
}

void DirectSlider::step(SliderAction action) {
  if (isSliderDown()) return;
  setEditing(true);
  triggerAction(action);
  setEditing(false);
}

void DirectSlider::wheelEvent(QWheelEvent* event) {
  event->accept();
  // Some systems turn the wheel sideways while a modifier is held.
  const QPoint delta = event->angleDelta();
  wheelRemainder_ += delta.y() != 0 ? delta.y() : delta.x();
  const int notches = wheelRemainder_ / QWheelEvent::DefaultDeltasPerStep;
  wheelRemainder_ -= notches * QWheelEvent::DefaultDeltasPerStep;
  const bool isLarge = event->modifiers().testFlag(Qt::ShiftModifier);
  for (int notch = 0; notch < std::abs(notches); ++notch) {
    if (notches > 0) {
      step(isLarge ? SliderPageStepAdd : SliderSingleStepAdd);
    } else {
      step(isLarge ? SliderPageStepSub : SliderSingleStepSub);
    }
  }
}

void DirectSlider::keyPressEvent(QKeyEvent* event) {
  const bool isLarge = event->modifiers().testFlag(Qt::ShiftModifier);
  switch (event->key()) {
    case Qt::Key_Up:
    case Qt::Key_Right:
      return step(isLarge ? SliderPageStepAdd : SliderSingleStepAdd);
    case Qt::Key_Down:
    case Qt::Key_Left:
      return step(isLarge ? SliderPageStepSub : SliderSingleStepSub);
    case Qt::Key_PageUp:
      return step(SliderPageStepAdd);
    case Qt::Key_PageDown:
      return step(SliderPageStepSub);
    case Qt::Key_Home:
      return step(SliderToMinimum);
    case Qt::Key_End:
      return step(SliderToMaximum);
    default:
      event->ignore();
  }
}

}  // namespace orvanel
