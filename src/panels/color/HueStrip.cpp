#include "panels/color/HueStrip.h"

#include <QKeyEvent>
#include <QLinearGradient>
#include <QMouseEvent>
#include <QPainter>
#include <QWheelEvent>

#include "look/Look.h"
#include "panels/color/PickerMetrics.h"
#include "panels/controls/InsetBorder.h"

namespace orvanel {

namespace {

constexpr int trackWidth = 20;
/// Half the height of the triangle, and its width.
constexpr int triSize = 6;
constexpr double degrees = 360;
constexpr double perDegree = 1 / degrees;
constexpr double largeStep = 10;
/// What a notch of the wheel turns.
constexpr double notch = QWheelEvent::DefaultDeltasPerStep;

}  // namespace

HueStrip::HueStrip(ColorPickerModel& model, int height, QWidget* parent)
    : QWidget(parent), model_(model), height_(height), notifier_(model.hue.addNotifier([this] {
        describe();
        update();
      })) {
  // Room for the focus at the left, for the triangle at the right.
  setFixedSize(picker::overhang + trackWidth + 2 + triSize, height + 2 * picker::overhang);
  setFocusPolicy(Qt::StrongFocus);
  setAccessibleName(tr("Hue"));
  describe();
}

void HueStrip::describe() {
  setAccessibleDescription(tr("%1 degrees").arg(qRound(model_.hue.value() * degrees)));
}

QRectF HueStrip::track() const {
  return QRectF(picker::overhang, picker::overhang, trackWidth, height_);
}

void HueStrip::pick(double y) {
  model_.setHue(1.0 - (y - track().top()) / height_);
}

void HueStrip::mousePressEvent(QMouseEvent* event) {
  if (event->button() == Qt::LeftButton) pick(event->position().y());
}

void HueStrip::mouseMoveEvent(QMouseEvent* event) {
  if (event->buttons().testFlag(Qt::LeftButton)) pick(event->position().y());
}

void HueStrip::wheelEvent(QWheelEvent* event) {
  model_.setHue(model_.hue.value() + perDegree * event->angleDelta().y() / notch);
}

void HueStrip::keyPressEvent(QKeyEvent* event) {
  const double step = event->modifiers().testFlag(Qt::ShiftModifier) ? largeStep * perDegree : perDegree;
  if (event->key() == Qt::Key_Up) return model_.setHue(model_.hue.value() + step);
  if (event->key() == Qt::Key_Down) return model_.setHue(model_.hue.value() - step);
  event->ignore();
}

void HueStrip::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  QLinearGradient hues(track().bottomLeft(), track().topLeft());
  constexpr int corners = 6;
  for (int corner = 0; corner <= corners; ++corner) {
    const float part = static_cast<float>(corner) / corners;
    hues.setColorAt(double{part}, QColor::fromHsvF(corner == corners ? 0.0F : part, 1.0F, 1.0F));
  }
  painter.fillRect(track(), hues);
  InsetBorder::ofWells(*this).paint(painter, track());
  if (hasFocus()) picker::paintFocusRing(painter, track());

  painter.setRenderHint(QPainter::Antialiasing);
  const QPointF tip(track().right() + 2, track().top() + (1.0 - model_.hue.value()) * height_);
  painter.setPen(Qt::NoPen);
  painter.setBrush(look::color::symbol);
  painter.drawPolygon(QPolygonF{tip, tip + QPointF(triSize, -triSize), tip + QPointF(triSize, triSize)});
}

}  // namespace orvanel
