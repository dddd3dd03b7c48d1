// The handles of a box: where they are and which of them a pointer hits.
#include "tools/transform/BoxHandle.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QTransform>
#include <cstddef>

namespace orvanel {
namespace {

using boxHandle::contains;
using boxHandle::hitHandle;
using testing::ElementsAre;

const QRectF box(10.0, 20.0, 101.0, 50.0);

TEST(BoxHandleTest, HandlesGoRowByRowWithMiddlesInFractions) {
  EXPECT_THAT(boxHandle::pointsOf(box),
              ElementsAre(QPointF(10, 20), QPointF(60.5, 20), QPointF(111, 20), QPointF(10, 45),
                          QPointF(111, 45), QPointF(10, 70), QPointF(60.5, 70), QPointF(111, 70)));
}

TEST(BoxHandleTest, TheAnchorIsTheHandleOnTheOtherSide) {
  const boxHandle::Points points = boxHandle::pointsOf(box);
  for (std::size_t i = 0; i < points.size(); ++i) {
    const auto handle = static_cast<BoxHandle>(i);
    EXPECT_EQ(boxHandle::pointOf(box, handle), points[i]);
    EXPECT_EQ(boxHandle::anchorOf(box, handle), points[points.size() - 1 - i]);
  }
}

TEST(BoxHandleTest, AHandleIsHitWithinSixPoints) {
  const boxHandle::Points points = boxHandle::pointsOf(box);
  for (std::size_t i = 0; i < points.size(); ++i) {
    EXPECT_EQ(hitHandle(points, points[i] + QPointF(0.0, 6.0)), static_cast<BoxHandle>(i));
    EXPECT_EQ(hitHandle(points, points[i] + QPointF(3.6, 4.8)), static_cast<BoxHandle>(i));
  }
}

TEST(BoxHandleTest, TheRotateZoneIsARingAroundEveryHandle) {
  const boxHandle::Points points = boxHandle::pointsOf(box);
  for (const QPointF point : points) {
    EXPECT_EQ(hitHandle(points, point + QPointF(0.0, 6.01)), BoxHandle::rotate);
    EXPECT_EQ(hitHandle(points, point + QPointF(0.0, -6.01)), BoxHandle::rotate);
  }
  EXPECT_EQ(hitHandle(points, QPointF(10.0 - 15.0, 20.0)), BoxHandle::rotate);
  EXPECT_EQ(hitHandle(points, QPointF(10.0 - 15.01, 20.0)), std::nullopt);
  // Beside the box, but far from every handle.
  EXPECT_EQ(hitHandle(points, QPointF(35.0, 16.0)), std::nullopt);
}

TEST(BoxHandleTest, TheFirstOfOverlappingHandlesIsHitAndHandlesGoBeforeRings) {
  const boxHandle::Points tiny = boxHandle::pointsOf(QRectF(0.0, 0.0, 4.0, 4.0));
  EXPECT_EQ(hitHandle(tiny, QPointF(2.0, 2.0)), BoxHandle::topLeft);
  EXPECT_EQ(hitHandle(tiny, QPointF(9.0, 4.0)), BoxHandle::middleRight);
  EXPECT_EQ(hitHandle(tiny, QPointF(4.0, 10.0)), BoxHandle::bottomRight);
}

TEST(BoxHandleTest, ABoxContainsItsFirstPixelsAndNotTheOnesBeyond) {
  EXPECT_TRUE(contains(box, {10.0, 20.0}));
  EXPECT_TRUE(contains(box, {110.99, 69.99}));
  EXPECT_FALSE(contains(box, {111.0, 30.0}));
  EXPECT_FALSE(contains(box, {30.0, 70.0}));
  EXPECT_FALSE(contains(box, {9.99, 30.0}));
}

TEST(BoxHandleTest, AQuadContainsWhatLiesWithinItsFourSides) {
  boxHandle::Quad diamond = boxHandle::quadOf(QRectF(-5.0, -5.0, 10.0, 10.0));
  for (QPointF& corner : diamond) corner = QTransform().rotate(45.0).map(corner);
  EXPECT_TRUE(contains(diamond, {0.0, 0.0}));
  EXPECT_TRUE(contains(diamond, {0.0, 6.9}));
  EXPECT_TRUE(contains(diamond, {-6.9, 0.0}));
  EXPECT_FALSE(contains(diamond, {4.5, 4.5}));
  EXPECT_FALSE(contains(diamond, {7.2, 0.0}));
}

TEST(BoxHandleTest, AMirroredQuadContainsTheSamePoints) {
  boxHandle::Quad mirrored = boxHandle::quadOf(QRectF(0.0, 0.0, 10.0, 10.0));
  for (QPointF& corner : mirrored) corner.setX(-corner.x());
  EXPECT_TRUE(contains(mirrored, {-5.0, 5.0}));
  EXPECT_FALSE(contains(mirrored, {5.0, 5.0}));
}

}  // namespace
}  // namespace orvanel
