// Dragging with the hand tool, through the view that forwards the events.
#include <gtest/gtest.h>

#include "CanvasSupport.h"
#include "canvas/CanvasPaneView.h"
#include "canvas/CursorImages.h"

namespace orvanel {
namespace {

class HandToolTest : public testing::Test {
 protected:
  HandToolTest() {
    test::keepInitialZoom(*document);
    pane.resize(400, 300);
    pane.setDocument(document);
    pane.show();
  }
  ScrollableMTKView& view() { return pane.canvasView().container().mtkView(); }

  DocumentPtr document = test::makeDocument(2000, 1500);
  ToolState tools;
  CanvasPaneView pane{MetalContext::shared(), tools};
};

TEST_F(HandToolTest, MovesTheDocumentWithThePointer) {
  document->setViewportOffset(QPointF(300, 200));
  test::dragMouse(view(), {100, 100}, {130, 80});
  EXPECT_EQ(document->viewportOffset.value(), QPointF(270, 220));
  test::zoomToIndex(*document, 15);
  test::dragMouse(view(), {100, 100}, {130, 80});
  EXPECT_EQ(document->viewportOffset.value(), QPointF(255, 230));
}

TEST_F(HandToolTest, StopsAtTheBounds) {
  test::dragMouse(view(), {10, 10}, {399, 299});
  EXPECT_EQ(document->viewportOffset.value(), QPointF(-200, -150));
}

TEST_F(HandToolTest, ShowsAClosedHandWhileDragging) {
  test::sendMouse(view(), QEvent::MouseButtonPress, {100, 100});
  EXPECT_EQ(view().cursor(), cursorImage(CursorShape::closedHand, 1.0));
  test::sendMouse(view(), QEvent::MouseButtonRelease, {100, 100}, Qt::LeftButton, Qt::NoButton);
  EXPECT_EQ(view().cursor(), cursorImage(CursorShape::openHand, 1.0));
}

TEST_F(HandToolTest, IgnoresOtherButtons) {
  test::sendMouse(view(), QEvent::MouseButtonPress, {100, 100}, Qt::RightButton, Qt::RightButton);
  test::sendMouse(view(), QEvent::MouseMove, {150, 150}, Qt::NoButton, Qt::RightButton);
  EXPECT_EQ(document->viewportOffset.value(), QPointF(0, 0));
}

TEST_F(HandToolTest, AToolWithoutAHandlerIgnoresDrags) {
  tools.selectTool(Tool::brush);
  EXPECT_EQ(view().cursor().shape(), Qt::ArrowCursor);
  test::dragMouse(view(), {100, 100}, {130, 80});
  EXPECT_EQ(document->viewportOffset.value(), QPointF(0, 0));
  EXPECT_TRUE(document->undoStack.operations().empty());
}

TEST_F(HandToolTest, ChangingTheToolEndsTheGesture) {
  test::sendMouse(view(), QEvent::MouseButtonPress, {100, 100});
  tools.selectTool(Tool::brush);
  test::sendMouse(view(), QEvent::MouseMove, {50, 50}, Qt::NoButton, Qt::LeftButton);
  test::sendMouse(view(), QEvent::MouseButtonRelease, {50, 50}, Qt::LeftButton, Qt::NoButton);
  EXPECT_EQ(document->viewportOffset.value(), QPointF(0, 0));
  tools.selectTool(Tool::hand);
  EXPECT_EQ(view().cursor(), cursorImage(CursorShape::openHand, 1.0));
  test::sendMouse(view(), QEvent::MouseMove, {20, 20}, Qt::NoButton, Qt::LeftButton);
  EXPECT_EQ(document->viewportOffset.value(), QPointF(0, 0));
}

}  // namespace
}  // namespace orvanel
