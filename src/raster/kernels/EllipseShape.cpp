#include <algorithm>
#include <cmath>
#include <numbers>

#include "raster/kernels/Shapes.h"

namespace orvanel::kernels {
namespace {

/// Area under the upper half of the unit circle from -1 to x.
double areaUnderArc(double x) {
  return (x * std::sqrt(std::max(1.0 - x * x, 0.0)) + std::asin(x)) / 2.0 + std::numbers::pi / 4.0;
}

/// Area of the unit circle to the left of x and below y.
double circleAreaBefore(double x, double y) {
  x = std::clamp(x, -1.0, 1.0);
  y = std::clamp(y, -1.0, 1.0);
  const double chord = std::sqrt(1.0 - y * y);
  const double end = std::min(x, chord);
  // What lies between the chord at y and the arc that it cuts off.
  const double beyond =
      end > -chord ? areaUnderArc(end) - areaUnderArc(-chord) - std::abs(y) * (end + chord) : 0.0;
  return y < 0.0 ? beyond : 2.0 * areaUnderArc(x) - beyond;
}

}  // namespace

EllipseShape::EllipseShape(double centerX, double centerY, double radiusX, double radiusY, int canvasWidth)
    : centerX_(centerX), centerY_(centerY), radiusX_(radiusX), radiusY_(radiusY), canvasWidth_(canvasWidth) {
  const bool isSound = std::isfinite(centerX) && std::isfinite(centerY) && std::isfinite(radiusX) &&
                       std::isfinite(radiusY) && radiusX > 0.0 && radiusY > 0.0;
  if (!isSound) radiusX_ = radiusY_ = 0.0;
}

double EllipseShape::halfWidthAt(double y) const {
  const double v = (y - centerY_) / radiusY_;
  return radiusX_ * std::sqrt(std::max(1.0 - v * v, 0.0));
}

double EllipseShape::areaBefore(double x, double y) const {
  return radiusX_ * radiusY_ * circleAreaBefore((x - centerX_) / radiusX_, (y - centerY_) / radiusY_);
}

void EllipseShape::coverEdge(int y, int begin, int end, RowCoverage& row) const {
  if (begin >= end) return;
  double before = areaBefore(begin, y + 1.0) - areaBefore(begin, y);
  for (int x = begin; x < end; ++x) {
    const double after = areaBefore(x + 1.0, y + 1.0) - areaBefore(x + 1.0, y);
    row.push_back({x, x + 1, static_cast<float>(std::clamp(after - before, 0.0, 1.0))});
    before = after;
  }
}

void EllipseShape::cover(int y, RowCoverage& row) const {
  const double top = y;
  const double bottom = y + 1.0;
  if (radiusX_ <= 0.0 || bottom <= centerY_ - radiusY_ || top >= centerY_ + radiusY_) return;
  const double atTop = halfWidthAt(top);
  const double atBottom = halfWidthAt(bottom);
  const bool holdsCenter = top <= centerY_ && centerY_ <= bottom;
  const double widest = holdsCenter ? radiusX_ : std::max(atTop, atBottom);
  const bool isWithin = top >= centerY_ - radiusY_ && bottom <= centerY_ + radiusY_;
  const double narrowest = isWithin ? std::min(atTop, atBottom) : 0.0;
  // The canvas clips in floating point, where any size of ellipse fits.
  const auto column = [this](double x) { return static_cast<int>(std::clamp(x, 0.0, 1.0 * canvasWidth_)); };
  const int outerBegin = column(std::floor(centerX_ - widest));
  const int outerEnd = column(std::ceil(centerX_ + widest));
  const int innerBegin = column(std::ceil(centerX_ - narrowest));
  const int innerEnd = column(std::floor(centerX_ + narrowest));
  if (innerBegin >= innerEnd) return coverEdge(y, outerBegin, outerEnd, row);
  coverEdge(y, outerBegin, innerBegin, row);
  row.push_back({innerBegin, innerEnd, 1.0F});
  coverEdge(y, innerEnd, outerEnd, row);
}

}  // namespace orvanel::kernels
