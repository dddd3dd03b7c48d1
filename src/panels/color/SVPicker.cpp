#include "panels/color/SVPicker.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <array>

#include "look/Look.h"
#include "panels/color/PickerMetrics.h"
#include "panels/controls/InsetBorder.h"

namespace orvanel {

namespace {

constexpr double markerRadius = 5;

}  // namespace

SVPicker::SVPicker(ColorPickerModel& model, int size, QWidget* parent)
    : QWidget(parent), model_(model), size_(size) {
  setFixedSize(size + 2 * picker::overhang, size + 2 * picker::overhang);
  setFocusPolicy(Qt::StrongFocus);
  setCursor(Qt::CrossCursor);
  setAccessibleName(tr("Saturation and brightness"));
  const auto changed = [this] {
    describe();
    update();
  };
  notifiers_.push_back(model.hue.addNotifier([this] { update(); }));
  notifiers_.push_back(model.saturation.addNotifier(changed));
  notifiers_.push_back(model.brightness.addNotifier(changed));
  describe();
}

void SVPicker::describe() {
  setAccessibleDescription(tr("Saturation %1%, brightness %2%")
                               .arg(qRound(model_.saturation.value() * 100))
                               .arg(qRound(model_.brightness.value() * 100)));
}

QRectF SVPicker::square() const {
  return QRectF(picker::overhang, picker::overhang, size_, size_);
}

void SVPicker::pick(QPointF position) {
  const QPointF inSquare = (position - square().topLeft()) / size_;
  model_.setSaturationAndBrightness(inSquare.x(), 1.0 - inSquare.y());
}

void SVPicker::mousePressEvent(QMouseEvent* event) {
  if (event->button() == Qt::LeftButton) pick(event->position());
}

void SVPicker::mouseMoveEvent(QMouseEvent* event) {
  if (event->buttons().testFlag(Qt::LeftButton)) pick(event->position());
}

void SVPicker::keyPressEvent(QKeyEvent* event) {
  const double step = picker::keyStep(*event);
  const double saturation = model_.saturation.value();
  const double brightness = model_.brightness.value();
  switch (event->key()) {
    case Qt::Key_Left:
      return model_.setSaturationAndBrightness(saturation - step, brightness);
    case Qt::Key_Right:
      return model_.setSaturationAndBrightness(saturation + step, brightness);
    case Qt::Key_Up:
      return model_.setSaturationAndBrightness(saturation, brightness + step);
    case Qt::Key_Down:
      return model_.setSaturationAndBrightness(saturation, brightness - step);
    default:
      event->ignore();
  }
}

void SVPicker::updateImage() {
  const int edge = qRound(size_ * devicePixelRatioF());
  if (cachedHue_ == model_.hue.value() && cachedImage_.width() == edge) return;
  cachedHue_ = model_.hue.value();
  cachedImage_ = QImage(edge, edge, QImage::Format_RGB32);
  const QColor pure = QColor::fromHsvF(static_cast<float>(cachedHue_), 1.0F, 1.0F);
  const std::array missing{255 - pure.red(), 255 - pure.green(), 255 - pure.blue()};
  const double last = edge - 1;
  for (int y = 0; y < edge; ++y) {
    auto* row = reinterpret_cast<QRgb*>(cachedImage_.scanLine(y));
    const double brightness = 1.0 - y / last;
    for (int x = 0; x < edge; ++x) {
      const double saturation = x / last;
      const auto component = [&](int channel) { return qRound(brightness * (255 - saturation * channel)); };
      row[x] = qRgb(component(missing[0]), component(missing[1]), component(missing[2]));
    }
  }
}

void SVPicker::paintEvent(QPaintEvent* /*event*/) {
  updateImage();
  QPainter painter(this);
  painter.drawImage(square(), cachedImage_);
  InsetBorder::ofWells(*this).paint(painter, square());
  if (hasFocus()) picker::paintFocusRing(painter, square());

  painter.setRenderHint(QPainter::Antialiasing);
  const QPointF marker = square().topLeft() + QPointF(model_.saturation.value() * size_,
                                                      (1.0 - model_.brightness.value()) * size_);
  painter.setBrush(Qt::NoBrush);
  painter.setPen(QPen(look::color::symbol, 3));
  painter.drawEllipse(marker, markerRadius, markerRadius);
  painter.setPen(QPen(look::color::onAccent, 1.5));
  painter.drawEllipse(marker, markerRadius, markerRadius);
}

}  // namespace orvanel
