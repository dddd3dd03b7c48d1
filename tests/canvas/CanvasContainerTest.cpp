// The scroll indicators over the canvas: geometry, state and dragging.
#include <gtest/gtest.h>

#include <QAccessible>

#include "CanvasSupport.h"
#include "canvas/CanvasView.h"

namespace orvanel {
namespace {

class CanvasContainerTest : public testing::Test {
 protected:
  CanvasContainerTest() {
    test::keepInitialZoom(*document);
    container().resize(400, 300);
    canvas.update(document);
    container().show();
  }
  CanvasContainerView& container() { return canvas.container(); }
  OverlayScrollIndicator& horizontal() { return container().horizontalIndicator(); }
  OverlayScrollIndicator& vertical() { return container().verticalIndicator(); }

  DocumentPtr document = test::makeDocument(1000, 900);
  ToolState tools;
  CanvasView canvas{MetalContext::shared(), tools, nullptr};
};

TEST_F(CanvasContainerTest, LaysOutTheViewAndItsIndicators) {
  EXPECT_EQ(container().mtkView().geometry(), QRect(0, 0, 400, 300));
  EXPECT_EQ(horizontal().geometry(), QRect(3, 287, 381, 10));
  EXPECT_EQ(vertical().geometry(), QRect(387, 3, 10, 281));
  container().resize(500, 200);
  EXPECT_EQ(container().mtkView().geometry(), QRect(0, 0, 500, 200));
  EXPECT_EQ(horizontal().geometry(), QRect(3, 187, 481, 10));
  EXPECT_EQ(vertical().geometry(), QRect(487, 3, 10, 181));
}

TEST_F(CanvasContainerTest, IsAnAccessibleGroupNamedCanvas) {
  EXPECT_EQ(container().objectName(), QStringLiteral("canvas"));
  EXPECT_EQ(container().accessibleName(), QStringLiteral("canvas"));
  QAccessibleInterface* accessible = QAccessible::queryAccessibleInterface(&container());
  ASSERT_NE(accessible, nullptr);
  EXPECT_EQ(accessible->role(), QAccessible::Grouping);
  EXPECT_EQ(accessible->text(QAccessible::Name), QStringLiteral("canvas"));
}

TEST_F(CanvasContainerTest, HidesTheIndicatorOfAnAxisOnWhichTheCanvasFits) {
  EXPECT_FALSE(horizontal().isHidden());
  EXPECT_FALSE(vertical().isHidden());
  test::zoomTo(*document, 0.4);
  EXPECT_TRUE(horizontal().isHidden());
  EXPECT_FALSE(vertical().isHidden());
  test::zoomTo(*document, 0.3);
  EXPECT_TRUE(vertical().isHidden());
  canvas.update(nullptr);
  EXPECT_TRUE(horizontal().isHidden());
}

TEST_F(CanvasContainerTest, FollowsScrollingAndZooming) {
  EXPECT_DOUBLE_EQ(horizontal().doubleValue(), 0.2);
  EXPECT_DOUBLE_EQ(horizontal().knobProportion(), 400.0 / 1400.0);
  document->setViewportOffset(QPointF(300, 750));
  EXPECT_DOUBLE_EQ(horizontal().doubleValue(), 0.5);
  EXPECT_DOUBLE_EQ(vertical().doubleValue(), 1.0);
  test::zoomToIndex(*document, 15);
  EXPECT_DOUBLE_EQ(horizontal().knobProportion(), 200.0 / 1200.0);
}

TEST_F(CanvasContainerTest, DraggingAKnobScrolls) {
  const double slack = horizontal().trackLength() - horizontal().knobLength();
  const double start = horizontal().doubleValue();
  test::sendMouse(horizontal(), QEvent::MouseButtonPress, {80, 5});
  EXPECT_TRUE(horizontal().isDragging());
  test::sendMouse(horizontal(), QEvent::MouseMove, {80 + slack / 4, 5}, Qt::NoButton, Qt::LeftButton);
  EXPECT_NEAR(horizontal().doubleValue(), start + 0.25, 1e-9);
  EXPECT_NEAR(document->viewportOffset.value().x(), 250.0, 1e-9);
  EXPECT_EQ(document->viewportOffset.value().y(), 0.0);
  test::sendMouse(horizontal(), QEvent::MouseMove, {5000, 5}, Qt::NoButton, Qt::LeftButton);
  EXPECT_EQ(horizontal().doubleValue(), 1.0);
  EXPECT_NEAR(document->viewportOffset.value().x(), 800.0, 1e-9);
  test::sendMouse(horizontal(), QEvent::MouseMove, {-5000, 5}, Qt::NoButton, Qt::LeftButton);
  EXPECT_EQ(horizontal().doubleValue(), 0.0);
  EXPECT_NEAR(document->viewportOffset.value().x(), -200.0, 1e-9);
  test::sendMouse(horizontal(), QEvent::MouseButtonRelease, {0, 5}, Qt::LeftButton, Qt::NoButton);
  EXPECT_FALSE(horizontal().isDragging());
}

TEST_F(CanvasContainerTest, DraggingTheVerticalKnobDownScrollsDown) {
  const double before = vertical().knobPosition();
  test::sendMouse(vertical(), QEvent::MouseButtonPress, {5, 50});
  test::sendMouse(vertical(), QEvent::MouseMove, {5, 90}, Qt::NoButton, Qt::LeftButton);
  EXPECT_NEAR(vertical().knobPosition(), before + 40, 1e-9);
  EXPECT_GT(document->viewportOffset.value().y(), 0.0);
}

TEST_F(CanvasContainerTest, TheWheelOverAnIndicatorScrollsTheCanvas) {
  document->setViewportOffset(QPointF(100, 100));
  test::sendWheel(vertical(), {5, 50}, {}, {0, -120});
  EXPECT_EQ(document->viewportOffset.value(), QPointF(100, 140));
}

TEST(OverlayScrollIndicator, TheKnobIsProportionalButAtLeastTwentyFourPointsLong) {
  OverlayScrollIndicator indicator(Qt::Horizontal, nullptr);
  indicator.resize(200, 10);
  EXPECT_EQ(indicator.knobProportion(), 0.5);
  EXPECT_EQ(indicator.doubleValue(), 0.5);
  EXPECT_EQ(indicator.knobLength(), 100.0);
  EXPECT_EQ(indicator.knobPosition(), 50.0);
  indicator.show(0.01, 0.25);
  EXPECT_EQ(indicator.knobLength(), 24.0);
  EXPECT_EQ(indicator.knobPosition(), 44.0);
  indicator.show(0.4, 1.0);
  EXPECT_EQ(indicator.knobPosition(), 120.0);
}

}  // namespace
}  // namespace orvanel
