// What dragging a handle makes of a box, in the move tool and in the free transform.
#include "tools/transform/HandleDrag.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <numbers>

#include "tools/EventRecord.h"

namespace orvanel {
namespace {

using handleDrag::Proportions;
using handleDrag::scaledBox;

/// Corners at (100, 200) and (140, 220).
const QRectF box(100.0, 200.0, 40.0, 20.0);

QRectF kept(BoxHandle handle, QPointF pointer) {
  return scaledBox(box, handle, pointer, Proportions::kept).value();
}
QRectF freed(BoxHandle handle, QPointF pointer) {
  return scaledBox(box, handle, pointer, Proportions::free).value();
}

TEST(ProportionsTest, ShiftFreesThem) {
  EXPECT_EQ(handleDrag::proportionsUnder(0), Proportions::kept);
  EXPECT_EQ(handleDrag::proportionsUnder(modifier::option), Proportions::kept);
  EXPECT_EQ(handleDrag::proportionsUnder(modifier::shift | modifier::option), Proportions::free);
}

TEST(ScaledBoxTest, ACornerKeepsTheProportionsOfTheSmallerFactor) {
  EXPECT_EQ(kept(BoxHandle::bottomRight, {180.0, 230.0}), QRectF(100.0, 200.0, 60.0, 30.0));
  EXPECT_EQ(kept(BoxHandle::topLeft, {60.0, 210.0}), QRectF(120.0, 210.0, 20.0, 10.0));
  EXPECT_EQ(kept(BoxHandle::topRight, {180.0, 180.0}), QRectF(100.0, 180.0, 80.0, 40.0));
  EXPECT_EQ(kept(BoxHandle::bottomLeft, {60.0, 240.0}), QRectF(60.0, 200.0, 80.0, 40.0));
}

TEST(ScaledBoxTest, ACornerWithShiftFollowsThePointer) {
  EXPECT_EQ(freed(BoxHandle::bottomRight, {180.0, 230.0}), QRectF(100.0, 200.0, 80.0, 30.0));
  EXPECT_EQ(freed(BoxHandle::topLeft, {60.0, 210.0}), QRectF(60.0, 210.0, 80.0, 10.0));
}

TEST(ScaledBoxTest, ACornerPastItsAnchorContinuesOnThePointersSide) {
  EXPECT_EQ(freed(BoxHandle::bottomRight, {80.0, 190.0}), QRectF(80.0, 190.0, 20.0, 10.0));
  EXPECT_EQ(freed(BoxHandle::topLeft, {160.0, 230.0}), QRectF(140.0, 220.0, 20.0, 10.0));
  EXPECT_EQ(kept(BoxHandle::bottomRight, {80.0, 190.0}), QRectF(80.0, 190.0, 20.0, 10.0));
}

TEST(ScaledBoxTest, ASideWithoutShiftScalesAboutItsCentreLine) {
  EXPECT_EQ(kept(BoxHandle::middleRight, {180.0, 0.0}), QRectF(100.0, 190.0, 80.0, 40.0));
  EXPECT_EQ(kept(BoxHandle::middleLeft, {120.0, 0.0}), QRectF(120.0, 205.0, 20.0, 10.0));
  EXPECT_EQ(kept(BoxHandle::bottomCenter, {0.0, 240.0}), QRectF(80.0, 200.0, 80.0, 40.0));
  EXPECT_EQ(kept(BoxHandle::topCenter, {0.0, 210.0}), QRectF(110.0, 210.0, 20.0, 10.0));
}

TEST(ScaledBoxTest, ASideWithShiftKeepsTheOtherAxis) {
  EXPECT_EQ(freed(BoxHandle::middleRight, {180.0, 0.0}), QRectF(100.0, 200.0, 80.0, 20.0));
  EXPECT_EQ(freed(BoxHandle::middleLeft, {120.0, 0.0}), QRectF(120.0, 200.0, 20.0, 20.0));
  EXPECT_EQ(freed(BoxHandle::bottomCenter, {0.0, 240.0}), QRectF(100.0, 200.0, 40.0, 40.0));
  EXPECT_EQ(freed(BoxHandle::topCenter, {0.0, 210.0}), QRectF(100.0, 210.0, 40.0, 10.0));
}

TEST(ScaledBoxTest, ASideStopsOnePixelBeforeTheOther) {
  EXPECT_EQ(freed(BoxHandle::middleLeft, {900.0, 0.0}), QRectF(139.0, 200.0, 1.0, 20.0));
  EXPECT_EQ(freed(BoxHandle::middleRight, {0.0, 0.0}), QRectF(100.0, 200.0, 1.0, 20.0));
  EXPECT_EQ(freed(BoxHandle::topCenter, {0.0, 900.0}), QRectF(100.0, 219.0, 40.0, 1.0));
  EXPECT_EQ(freed(BoxHandle::bottomCenter, {0.0, 0.0}), QRectF(100.0, 200.0, 40.0, 1.0));
}

TEST(ScaledBoxTest, NoSideIsEverBelowOnePixel) {
  for (int i = 0; i < 8; ++i) {
    const auto handle = static_cast<BoxHandle>(i);
    for (const Proportions proportions : {Proportions::kept, Proportions::free}) {
      const QRectF scaled = scaledBox(box, handle, boxHandle::anchorOf(box, handle), proportions).value();
      EXPECT_GE(scaled.width(), 1.0);
      EXPECT_GE(scaled.height(), 1.0);
    }
  }
}

TEST(ScaledBoxTest, ABoxWithoutASideIsNotScaled) {
  EXPECT_EQ(scaledBox({0.0, 0.0, 0.5, 9.0}, BoxHandle::topLeft, {5.0, 5.0}, Proportions::free), std::nullopt);
  EXPECT_EQ(scaledBox({0.0, 0.0, 9.0, 0.0}, BoxHandle::middleLeft, {5.0, 5.0}, Proportions::free),
            std::nullopt);
}

/// The box as the free transform shows it while a handle is dragged.
QRectF shown(const QTransform& base, BoxHandle handle, QPointF pointer, Proportions proportions) {
  return (base * handleDrag::scaling(box, base, handle, pointer, proportions)).mapRect(box);
}

void expectNear(const QRectF& actual, const QRectF& expected) {
  EXPECT_NEAR(actual.x(), expected.x(), 1e-9);
  EXPECT_NEAR(actual.y(), expected.y(), 1e-9);
  EXPECT_NEAR(actual.width(), expected.width(), 1e-9);
  EXPECT_NEAR(actual.height(), expected.height(), 1e-9);
}

TEST(ScalingTest, ACornerWithShiftFollowsThePointer) {
  expectNear(shown({}, BoxHandle::bottomRight, {180.0, 230.0}, Proportions::free), {100, 200, 80, 30});
  expectNear(shown({}, BoxHandle::topLeft, {120.0, 180.0}, Proportions::free), {120, 180, 20, 40});
}

TEST(ScalingTest, ACornerWithoutShiftTakesTheMeanOfBothFactors) {
  // Twice the width and one and a half times the height.
  expectNear(shown({}, BoxHandle::bottomRight, {180.0, 230.0}, Proportions::kept), {100, 200, 70, 35});
}

TEST(ScalingTest, ACornerThroughItsAnchorMirrorsByTheSignsOfItsFactors) {
  const QTransform freely =
      handleDrag::scaling(box, {}, BoxHandle::bottomRight, {80.0, 230.0}, Proportions::free);
  EXPECT_DOUBLE_EQ(freely.m11(), -0.5);
  EXPECT_DOUBLE_EQ(freely.m22(), 1.5);
  const QTransform kept =
      handleDrag::scaling(box, {}, BoxHandle::bottomRight, {80.0, 230.0}, Proportions::kept);
  EXPECT_DOUBLE_EQ(kept.m11(), -1.0);
  EXPECT_DOUBLE_EQ(kept.m22(), 1.0);
}

TEST(ScalingTest, ASideScalesItsAxisAndWithoutShiftTheOtherAsWell) {
  expectNear(shown({}, BoxHandle::middleRight, {180.0, 0.0}, Proportions::free), {100, 200, 80, 20});
  expectNear(shown({}, BoxHandle::middleRight, {180.0, 0.0}, Proportions::kept), {100, 190, 80, 40});
  expectNear(shown({}, BoxHandle::topCenter, {0.0, 210.0}, Proportions::free), {100, 210, 40, 10});
  expectNear(shown({}, BoxHandle::topCenter, {0.0, 210.0}, Proportions::kept), {110, 210, 20, 10});
}

TEST(ScalingTest, ASideThroughTheOtherMirrorsOnlyItsOwnAxis) {
  const QTransform mirrored =
      handleDrag::scaling(box, {}, BoxHandle::middleRight, {60.0, 0.0}, Proportions::kept);
  EXPECT_DOUBLE_EQ(mirrored.m11(), -1.0);
  EXPECT_DOUBLE_EQ(mirrored.m22(), 1.0);
}

TEST(ScalingTest, NoFactorIsNearerToZeroThanAThousandth) {
  const QTransform collapsed =
      handleDrag::scaling(box, {}, BoxHandle::bottomRight, {100.0, 200.0}, Proportions::free);
  EXPECT_DOUBLE_EQ(collapsed.m11(), 0.001);
  EXPECT_DOUBLE_EQ(collapsed.m22(), 0.001);
  const QTransform justPast =
      handleDrag::scaling(box, {}, BoxHandle::bottomRight, {99.99, 220.0}, Proportions::free);
  EXPECT_DOUBLE_EQ(justPast.m11(), -0.001);
}

TEST(ScalingTest, ABoxOfNoWidthIsScaledInHeightAlone) {
  const QRectF line(10.0, 10.0, 0.0005, 20.0);
  const QTransform stretched =
      handleDrag::scaling(line, {}, BoxHandle::bottomRight, {50.0, 50.0}, Proportions::free);
  EXPECT_DOUBLE_EQ(stretched.m11(), 1.0);
  EXPECT_DOUBLE_EQ(stretched.m22(), 2.0);
}

TEST(ScalingTest, ATurnedBoxIsScaledAlongItsOwnAxes) {
  // A quarter turn about the origin: the box's x axis points down.
  const QTransform quarter = handleDrag::rotation({0.0, 0.0}, std::numbers::pi / 2.0);
  const QPointF right = quarter.map(boxHandle::pointOf(box, BoxHandle::middleRight));
  const QTransform dragged = handleDrag::scaling(box, quarter, BoxHandle::middleRight,
                                                 right + QPointF(0.0, 40.0), Proportions::free);
  expectNear((quarter * dragged).mapRect(box), quarter.mapRect(QRectF(100.0, 200.0, 80.0, 20.0)));
}

TEST(ScalingTest, TheAnchorStaysWhereItWas) {
  const QTransform base = handleDrag::rotation({30.0, -20.0}, 0.7) * QTransform::fromScale(2.0, 0.5);
  for (int i = 0; i < 8; ++i) {
    const auto handle = static_cast<BoxHandle>(i);
    const QPointF anchor = base.map(boxHandle::anchorOf(box, handle));
    const QTransform dragged = handleDrag::scaling(box, base, handle, {12.0, 345.0}, Proportions::free);
    EXPECT_NEAR(dragged.map(anchor).x(), anchor.x(), 1e-9);
    EXPECT_NEAR(dragged.map(anchor).y(), anchor.y(), 1e-9);
  }
}

TEST(ScalingTest, TwoStrongReductionsCanBeScaledAgain) {
  const QTransform tiny = QTransform::fromScale(1e-6, 1e-6);
  const QPointF corner = tiny.map(box.bottomRight());
  const QPointF anchor = tiny.map(box.topLeft());
  const QTransform doubled = handleDrag::scaling(box, tiny, BoxHandle::bottomRight,
                                                 anchor + 2.0 * (corner - anchor), Proportions::free);
  EXPECT_NEAR((tiny * doubled).m11(), 2e-6, 1e-15);
}

TEST(RotationTest, PositiveIsClockwiseOnTheScreen) {
  const QPointF turned = handleDrag::rotation({10.0, 10.0}, std::numbers::pi / 2.0).map(QPointF(20.0, 10.0));
  EXPECT_NEAR(turned.x(), 10.0, 1e-12);
  EXPECT_NEAR(turned.y(), 20.0, 1e-12);
  EXPECT_NEAR(handleDrag::angleOf({10.0, 10.0}, {10.0, 20.0}), std::numbers::pi / 2.0, 1e-12);
}

TEST(RotationTest, SnapsToFifteenDegreesWithHalvesAwayFromZero) {
  constexpr double degree = std::numbers::pi / 180.0;
  EXPECT_DOUBLE_EQ(handleDrag::snappedAngle(22.4 * degree), 15.0 * degree);
  EXPECT_DOUBLE_EQ(handleDrag::snappedAngle(22.6 * degree), 30.0 * degree);
  EXPECT_DOUBLE_EQ(handleDrag::snappedAngle(-22.6 * degree), -30.0 * degree);
  EXPECT_DOUBLE_EQ(handleDrag::snappedAngle(0.2617993877991494 * 0.5), 0.2617993877991494);
  EXPECT_DOUBLE_EQ(handleDrag::snappedAngle(-0.2617993877991494 * 0.5), -0.2617993877991494);
  constexpr auto step = std::bit_cast<float>(0x3E860A91U);
  EXPECT_EQ(handleDrag::snappedAngle(0.3F), step);
  EXPECT_EQ(handleDrag::snappedAngle(-0.5F), -2.0F * step);
}

}  // namespace
}  // namespace orvanel
