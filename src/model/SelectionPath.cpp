#include "model/SelectionPath.h"

namespace orvanel {
namespace {

/// Control arm length for a quarter of a unit circle: 4/3 (sqrt(2) - 1).
constexpr double circleArm = 0.5522847498;

BezierPoint corner(double x, double y) {
  const QPointF position(x, y);
  return {position, position, position};
}

}  // namespace

SelectionPath SelectionPath::rect(double x, double y, double width, double height) {
  return {
      .points = {corner(x, y), corner(x + width, y), corner(x + width, y + height), corner(x, y + height)},
      .shapeHint = Rect{.origin = {x, y}, .size = {width, height}},
      .isClosed = true};
}

SelectionPath SelectionPath::ellipse(double cx, double cy, double rx, double ry) {
  const double armX = circleArm * rx;
  const double armY = circleArm * ry;
  return {.points = {{{cx, cy - ry}, {cx - armX, cy - ry}, {cx + armX, cy - ry}},
                     {{cx + rx, cy}, {cx + rx, cy - armY}, {cx + rx, cy + armY}},
                     {{cx, cy + ry}, {cx + armX, cy + ry}, {cx - armX, cy + ry}},
                     {{cx - rx, cy}, {cx - rx, cy + armY}, {cx - rx, cy - armY}}},
          .shapeHint = Ellipse{.center = {cx, cy}, .radii = {rx, ry}},
          .isClosed = true};
}

}  // namespace orvanel
