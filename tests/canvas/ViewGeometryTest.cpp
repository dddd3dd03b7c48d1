// The geometry between view and document.
#include "canvas/ViewGeometry.h"

#include <gtest/gtest.h>

#include "CanvasSupport.h"

namespace orvanel::viewGeometry {
namespace {

TEST(ImageOrigin, CentresAnAxisOnWhichTheCanvasIsSmallerThanTheView) {
  EXPECT_EQ(imageOrigin({{800, 600}, {400, 300}, {}, 1.0}), QPointF(200, 150));
  EXPECT_EQ(imageOrigin({{800, 600}, {400, 1200}, {}, 1.0}), QPointF(200, 0));
  EXPECT_EQ(imageOrigin({{800, 600}, {400, 300}, {}, 2.0}), QPointF(0, 0));
  EXPECT_EQ(imageOrigin({{801, 600}, {400, 300}, {}, 0.5}), QPointF(300.5, 225));
}

TEST(ViewToDocument, SubtractsTheOriginDividesByZoomAndAddsTheOffset) {
  const Placement scrolled{{800, 600}, {4000, 3000}, {100.5, 200}, 2.0};
  EXPECT_EQ(viewToDocument(scrolled, {0, 0}), QPointF(100.5, 200));
  EXPECT_EQ(viewToDocument(scrolled, {10, 5}), QPointF(105.5, 202.5));
  const Placement centred{{800, 600}, {400, 300}, {}, 0.5};
  EXPECT_EQ(viewToDocument(centred, {300, 225}), QPointF(0, 0));
  EXPECT_EQ(viewToDocument(centred, {500, 375}), QPointF(400, 300));
}

TEST(ViewToPixel, FloorsTowardsNegative) {
  const Placement placement{{100, 100}, {1000, 1000}, {0.25, 0.25}, 1.0};
  EXPECT_EQ(viewToPixel(placement, {0.7, 0.75}), QPoint(0, 1));
  EXPECT_EQ(viewToPixel(placement, {-0.5, -1.3}), QPoint(-1, -2));
}

TEST(OffsetBounds, HoldACanvasThatFitsAtZero) {
  EXPECT_EQ(boundedOffset({{800, 600}, {800, 600}, {}, 1.0}, {50, -70}), QPointF(0, 0));
  EXPECT_EQ(boundedOffset({{800, 600}, {400, 1200}, {}, 1.0}, {50, 70}), QPointF(0, 70));
}

TEST(OffsetBounds, AllowHalfAViewOfSurroundOnEachSide) {
  const Placement placement{{800, 600}, {1000, 2000}, {}, 2.0};
  EXPECT_EQ(boundedOffset(placement, {-1e6, -1e6}), QPointF(-200, -150));
  EXPECT_EQ(boundedOffset(placement, {1e6, 1e6}), QPointF(800, 1850));
  EXPECT_EQ(boundedOffset(placement, {-199, 1849}), QPointF(-199, 1849));
}

TEST(ZoomAboutAPoint, KeepsThePointWithinTheScrollBounds) {
  const Placement after{{800, 600}, {4000, 3000}, {}, 2.0};
  const QPointF kept = offsetKeeping(after, {1000, 1000}, {400, 300});
  EXPECT_EQ(kept, QPointF(800, 850));
  EXPECT_EQ(viewToDocument({after.viewSize, after.canvasSize, kept, after.zoom}, {400, 300}),
            QPointF(1000, 1000));
  EXPECT_EQ(offsetKeeping(after, {0, 0}, {800, 600}), QPointF(-200, -150));
  EXPECT_EQ(offsetKeeping({{800, 600}, {400, 300}, {}, 1.0}, {0, 0}, {0, 0}), QPointF(0, 0));
}

TEST(IndicatorState, IsHiddenWhereTheCanvasFits) {
  EXPECT_TRUE(indicatorState(800, 800, 0, 1.0).isHidden);
  EXPECT_FALSE(indicatorState(800, 801, 0, 1.0).isHidden);
  EXPECT_FALSE(indicatorState(800, 800, 0, 1.01).isHidden);
}

TEST(IndicatorState, RunsFromZeroToOneOverTheScrollRange) {
  EXPECT_DOUBLE_EQ(indicatorState(800, 1000, -400, 1.0).doubleValue, 0.0);
  EXPECT_DOUBLE_EQ(indicatorState(800, 1000, 600, 1.0).doubleValue, 1.0);
  EXPECT_DOUBLE_EQ(indicatorState(800, 1000, 100, 1.0).doubleValue, 0.5);
  EXPECT_DOUBLE_EQ(indicatorState(800, 1000, 100, 1.0).knobProportion, 800.0 / 1800.0);
  EXPECT_DOUBLE_EQ(indicatorState(800, 1000, 100, 2.0).knobProportion, 400.0 / 1400.0);
}

TEST(IndicatorState, IsTheInverseOfTheOffsetForAValue) {
  for (const double offset : {-150.0, 0.0, 33.25, 700.0}) {
    const double value = indicatorState(600, 1000, offset, 2.0).doubleValue;
    EXPECT_NEAR(offsetForIndicatorValue(value, 600, 1000, 2.0), offset, 1e-9);
  }
}

}  // namespace
}  // namespace orvanel::viewGeometry
