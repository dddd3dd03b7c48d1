// The outline of a shape while it is being drawn; it doesn't define what is selected. A plain value in
// document coordinates.
#pragma once

#include <QPointF>
#include <QSizeF>
#include <variant>
#include <vector>

namespace orvanel {

/// An anchor with the control points of its incoming and outgoing cubic segments.
struct BezierPoint {
  QPointF position;
  QPointF controlIn;
  QPointF controlOut;
  friend bool operator==(const BezierPoint&, const BezierPoint&) = default;
};

struct SelectionPath {
  struct Rect {
    QPointF origin;
    QSizeF size;
    friend bool operator==(const Rect&, const Rect&) = default;
  };
  struct Ellipse {
    QPointF center;
    QSizeF radii;
    friend bool operator==(const Ellipse&, const Ellipse&) = default;
  };
  struct Polygon {
    friend bool operator==(const Polygon&, const Polygon&) = default;
  };
  /// The shape that the path was made from, so that it can be drawn exactly, without flattening curves.
  using ShapeHint = std::variant<Rect, Ellipse, Polygon>;

  /// In drawing order.
  std::vector<BezierPoint> points;
  ShapeHint shapeHint = Polygon{};
  bool isClosed = false;

  [[nodiscard]] static SelectionPath rect(double x, double y, double width, double height);
  /// Four cubic segments clockwise from the top; the largest error is 0.027 % of the radius.
  [[nodiscard]] static SelectionPath ellipse(double cx, double cy, double rx, double ry);

  friend bool operator==(const SelectionPath&, const SelectionPath&) = default;
};

}  // namespace orvanel
