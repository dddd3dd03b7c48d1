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
constexpr float pointScale = 255.0F;
constexpr double barOpacity = 0.7;
/// Where the lines stand at the least from the sides.
constexpr double edge = 1.5;

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

void HistogramView::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.fillRect(rect(), look::color::field);
  const std::vector<double> heights = barHeights(model_.histogram.value());
  const double barWidth = static_cast<double>(width()) / static_cast<double>(heights.size());
  QPainterPath bars(QPointF(0.0, height()));
  double left = 0.0;
  for (const double part : heights) {
    const double top = height() * (1.0 - part);
    bars.lineTo(left, top);
    left += barWidth;
    bars.lineTo(left, top);
  }
  bars.lineTo(width(), height());
  bars.closeSubpath();
  painter.fillPath(bars, QColor::fromRgbF(0.0F, 0.0F, 0.0F, static_cast<float>(barOpacity)));

  const auto drawPoint = [&](float point, const QColor& color) {
    // A line at the very edge would vanish under the frame.
    const double x = std::clamp(static_cast<double>(point / pointScale) * width(), edge, width() - edge);
    painter.setPen(QPen(color, 1.0));
    painter.drawLine(QPointF(x, 0.0), QPointF(x, height()));
  };
  drawPoint(model_.blackPoint.value(), Qt::blue);
  drawPoint(model_.whitePoint.value(), Qt::red);

  InsetBorder::ofWells(*this).paint(painter, rect());
}

}  // namespace orvanel
