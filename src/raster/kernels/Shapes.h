// The shapes that selections are made of, as rows of coverage: the share of each pixel's area that lies
// inside. Immutable once made; safe on any thread.
#pragma once

#include <span>
#include <vector>

#include "raster/kernels/Coverage.h"

namespace orvanel::kernels {

struct ShapePoint {
  double x = 0.0;
  double y = 0.0;
};

class EllipseShape {
 public:
  /// Empty unless all values are finite and both radii are positive.
  EllipseShape(double centerX, double centerY, double radiusX, double radiusY, int canvasWidth);

  void cover(int y, RowCoverage& row) const;

 private:
  [[nodiscard]] double halfWidthAt(double y) const;
  /// Area of the ellipse to the left of x and above y.
  [[nodiscard]] double areaBefore(double x, double y) const;
  void coverEdge(int y, int begin, int end, RowCoverage& row) const;

  double centerX_;
  double centerY_;
  double radiusX_;
  double radiusY_;
  int canvasWidth_;
};

/// A closed polygon filled by the even-odd rule. Edges are split where they intersect, so coverage is exact,
/// except in rows so dense that they are sampled (see DensePolygon.h).
class PolygonShape {
 public:
  /// From its upper end to its lower one; never horizontal.
  struct Edge {
    Edge(const ShapePoint& a, const ShapePoint& b);
    [[nodiscard]] double xAt(double y) const {
      return y >= lower.y ? lower.x : upper.x + slope * (y - upper.y);
    }
    ShapePoint upper;
    ShapePoint lower;
    double slope;
  };

  /// Points that aren't finite are left out.
  PolygonShape(std::span<const ShapePoint> points, int canvasWidth, int canvasHeight);

  void cover(MaskBand& band) const;

 private:
  int canvasWidth_;
  std::vector<Edge> edges_;  ///< by the height of their upper ends
  std::vector<std::vector<int>> edgesOfBand_;
};

}  // namespace orvanel::kernels
