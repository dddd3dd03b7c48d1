#include "panels/levels/HistogramView.h"

#include <QPainter>
#include <QPainterPath>
#include <algorithm>
#include <cmath>

#include "look/Look.h"
#include "panels/controls/InsetBorder.h"

namespace orvanel {
namespace {

constexpr int viewHeight = 100;
constexpr double pointScale = 255.0;
constexpr double lineWidth = 1.0;

}  // namespace

HistogramView::HistogramView(LevelsModel& model, QWidget* parent) : QWidget(parent), model_(model) {
  setAccessibleName(tr("Histogram"));
  setFixedHeight(viewHeight);
  const auto redraw = [this] { update(); };
  notifiers_.push_back(model.histogram.addNotifier(redraw));
  notifiers_.push_back(model.blackPoint.addNotifier(redraw));
  notifiers_.push_back(model.whitePoint.addNotifier(redraw));
}

std::vector<double> HistogramView::barHeights(const LevelsHistogram& histogram) {
  std::vector<double> heights;
  heights.reserve(histogram.size());
  for (const std::int64_t count : histogram) {
    heights.push_back(count > 0 ? std::log(static_cast<double>(count)) : 0.0);
  }
  const double tallest = *std::ranges::max_element(heights);
  if (tallest > 0.0) {
    for (double& height : heights) height /= tallest;
  }
  return heights;
}

QRectF HistogramView::area() const {
  // Within the frame, and so that the lines are whole at both ends.
  const double frame = InsetBorder::ofWells(*this).width;
  const double side = frame + lineWidth / 2;
  return QRectF(rect()).adjusted(side, frame, -side, -frame);
}

void HistogramView::paintBars(QPainter& painter) const {
  const QRectF box = area();
  const std::vector<double> heights = barHeights(model_.histogram.value());
  const double barWidth = box.width() / static_cast<double>(heights.size());
  QPainterPath bars(box.bottomLeft());
  double left = box.left();
  for (const double part : heights) {
    const double top = box.bottom() - part * box.height();
    bars.lineTo(left, top);
    left += barWidth;
    bars.lineTo(left, top);
  }
  bars.lineTo(box.bottomRight());
  bars.closeSubpath();
  painter.fillPath(bars, look::color::histogramBars);
}

void HistogramView::paintPoint(QPainter& painter, float point, const QColor& color) const {
  const QRectF box = area();
  const double x = box.left() + box.width() * static_cast<double>(point) / pointScale;
  painter.fillRect(QRectF(x - lineWidth / 2, box.top(), lineWidth, box.height()), color);
}

void HistogramView::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.fillRect(rect(), look::color::field);
  paintBars(painter);
  paintPoint(painter, model_.blackPoint.value(), look::color::blackPoint);
  paintPoint(painter, model_.whitePoint.value(), look::color::whitePoint);
  InsetBorder::ofWells(*this).paint(painter, rect());
}

}  // namespace orvanel
