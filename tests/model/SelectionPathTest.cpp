#include "model/SelectionPath.h"

#include <gtest/gtest.h>

#include <cmath>

namespace orvanel {
namespace {

TEST(SelectionPathTest, IsInitiallyOpenEmptyAndWithoutAShape) {
  const SelectionPath path;
  EXPECT_TRUE(path.points.empty());
  EXPECT_FALSE(path.isClosed);
  EXPECT_TRUE(std::holds_alternative<SelectionPath::Polygon>(path.shapeHint));
}

TEST(SelectionPathTest, RectangleStartsAtItsOriginAndHasNoCurves) {
  const SelectionPath path = SelectionPath::rect(3.5, -2.0, 10.0, 4.25);
  ASSERT_EQ(path.points.size(), 4U);
  EXPECT_EQ(path.points[0].position, QPointF(3.5, -2.0));
  EXPECT_EQ(path.points[1].position, QPointF(13.5, -2.0));
  EXPECT_EQ(path.points[2].position, QPointF(13.5, 2.25));
  EXPECT_EQ(path.points[3].position, QPointF(3.5, 2.25));
  for (const BezierPoint& point : path.points) {
    EXPECT_EQ(point.controlIn, point.position);
    EXPECT_EQ(point.controlOut, point.position);
  }
  EXPECT_TRUE(path.isClosed);
  EXPECT_EQ(path.shapeHint, SelectionPath::ShapeHint(SelectionPath::Rect{{3.5, -2.0}, {10.0, 4.25}}));
}

TEST(SelectionPathTest, EllipseStartsAtItsTop) {
  constexpr double k = 0.5522847498;
  const SelectionPath path = SelectionPath::ellipse(10.0, 20.0, 4.0, 3.0);
  const std::vector<BezierPoint> expected{
      {{10.0, 17.0}, {10.0 - k * 4.0, 17.0}, {10.0 + k * 4.0, 17.0}},
      {{14.0, 20.0}, {14.0, 20.0 - k * 3.0}, {14.0, 20.0 + k * 3.0}},
      {{10.0, 23.0}, {10.0 + k * 4.0, 23.0}, {10.0 - k * 4.0, 23.0}},
      {{6.0, 20.0}, {6.0, 20.0 + k * 3.0}, {6.0, 20.0 - k * 3.0}},
  };
  EXPECT_EQ(path.points, expected);
  EXPECT_TRUE(path.isClosed);
  EXPECT_EQ(path.shapeHint, SelectionPath::ShapeHint(SelectionPath::Ellipse{{10.0, 20.0}, {4.0, 3.0}}));
}

TEST(SelectionPathTest, EllipseIsAccurateToThreeHundredthsOfAPercent) {
  const SelectionPath path = SelectionPath::ellipse(0.0, 0.0, 1.0, 1.0);
  for (std::size_t i = 0; i < 4; ++i) {
    const BezierPoint& from = path.points[i];
    const BezierPoint& to = path.points[(i + 1) % 4];
    for (int step = 0; step <= 100; ++step) {
      const double t = step / 100.0;
      const double u = 1.0 - t;
      const QPointF point = u * u * u * from.position + 3.0 * u * u * t * from.controlOut +
                            3.0 * u * t * t * to.controlIn + t * t * t * to.position;
      ASSERT_NEAR(std::hypot(point.x(), point.y()), 1.0, 3e-4);
    }
  }
}

}  // namespace
}  // namespace orvanel
