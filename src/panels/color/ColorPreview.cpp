#include "panels/color/ColorPreview.h"

#include <QPainter>

#include "panels/controls/InsetBorder.h"

namespace orvanel {

namespace {

constexpr int viewHeight = 48;

QColor screenColor(const DisplayColor& color) {
  return QColor::fromRgbF(color.red, color.green, color.blue);
}

}  // namespace

ColorPreview::ColorPreview(ColorPickerModel& model, QWidget* parent) : QWidget(parent), model_(model) {
  setFixedHeight(viewHeight);
  setAccessibleName(tr("New and current color"));
  const auto changed = [this] {
    setAccessibleDescription(
        tr("New: %1, current: %2").arg(model_.color().hexText(), model_.originalColor.value().hexText()));
    update();
  };
  for (QProperty<double>* value : {&model.hue, &model.saturation, &model.brightness}) {
    notifiers_.push_back(value->addNotifier(changed));
  }
  notifiers_.push_back(model.originalColor.addNotifier(changed));
  changed();
}

void ColorPreview::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  QRectF half(0, 0, width() / 2.0, height());
  painter.fillRect(half, screenColor(model_.color()));
  half.moveLeft(half.right());
  painter.fillRect(half, screenColor(model_.originalColor.value()));
  InsetBorder::ofWells(*this).paint(painter, rect());
}

}  // namespace orvanel
