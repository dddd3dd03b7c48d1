// The hand, apart from any view.
#include <gtest/gtest.h>

#include <algorithm>

#include "model/ModelSupport.h"
#include "tools/FakeCanvas.h"
#include "tools/navigation/HandToolHandler.h"

namespace orvanel {
namespace {

using namespace test;

TEST(HandToolHandlerTest, ScrollsAgainstThePointerInDocumentPixels) {
  const DocumentPtr document = makeDocument(2000, 1500);
  document->setViewportOffset({100.0, 50.0});
  document->setZoom(2.0);
  FakeCanvas canvas(document);
  HandToolHandler hand;
  hand.mouseDown({}, canvas.context(), {10.0, 10.0});
  EXPECT_EQ(canvas.cursors.back(), CursorShape::closedHand);
  EXPECT_EQ(hand.cursor(0, canvas.context()), CursorShape::closedHand);
  hand.mouseDragged({}, canvas.context(), {30.0, 4.0});
  hand.mouseDragged({}, canvas.context(), {40.0, 0.0});
  EXPECT_EQ(canvas.scrolls, (std::vector{QPointF(90.0, 53.0), QPointF(85.0, 55.0)}));
  hand.mouseUp({}, canvas.context(), {40.0, 0.0});
  EXPECT_EQ(canvas.cursors.back(), CursorShape::openHand);
  hand.mouseDragged({}, canvas.context(), {90.0, 90.0});
  EXPECT_EQ(canvas.scrolls.size(), 2U);
}

TEST(HandToolHandlerTest, GoesOnFromWhereTheWheelTookTheView) {
  const DocumentPtr document = makeDocument(2000, 1500);
  document->setViewportOffset({100.0, 50.0});
  FakeCanvas canvas(document);
  HandToolHandler hand;
  hand.mouseDown({}, canvas.context(), {10.0, 10.0});
  hand.mouseDragged({}, canvas.context(), {50.0, 30.0});
  EXPECT_EQ(document->viewportOffset.value(), QPointF(60.0, 30.0));
  document->setZoom(4.0);
  document->setViewportOffset({97.5, 52.5});
  hand.mouseDragged({}, canvas.context(), {54.0, 30.0});
  EXPECT_EQ(document->viewportOffset.value(), QPointF(96.5, 52.5));
  document->setViewportOffset({96.5, 40.0});
  hand.mouseDragged({}, canvas.context(), {54.0, 34.0});
  EXPECT_EQ(document->viewportOffset.value(), QPointF(96.5, 39.0));
}

TEST(HandToolHandlerTest, ADragBeyondTheBoundsIsTravelledBack) {
  const DocumentPtr document = makeDocument(2000, 1500);
  class BoundedCanvas : public FakeCanvas {
   public:
    using FakeCanvas::FakeCanvas;
    void scrollTo(QPointF wanted) override { FakeCanvas::scrollTo({std::max(wanted.x(), 0.0), wanted.y()}); }
  };
  BoundedCanvas canvas(document);
  HandToolHandler hand;
  hand.mouseDown({}, canvas.context(), {10.0, 10.0});
  hand.mouseDragged({}, canvas.context(), {110.0, 10.0});
  hand.mouseDragged({}, canvas.context(), {60.0, 10.0});
  EXPECT_EQ(document->viewportOffset.value(), QPointF(0.0, 0.0));
  hand.mouseDragged({}, canvas.context(), {5.0, 10.0});
  EXPECT_EQ(document->viewportOffset.value(), QPointF(5.0, 0.0));
}

TEST(HandToolHandlerTest, WithoutADocumentItDoesNothing) {
  HandToolHandler hand;
  const ToolContext nothing;
  hand.mouseDown({}, nothing, {1, 1});
  hand.mouseDragged({}, nothing, {9, 9});
  hand.mouseUp({}, nothing, {9, 9});
  EXPECT_EQ(hand.cursor(0, nothing), CursorShape::openHand);
}

}  // namespace
}  // namespace orvanel
