// The zoom tool: clicks, rectangles and scrubbing.
#include <gtest/gtest.h>

#include <cmath>

#include "model/ModelSupport.h"
#include "tools/FakeCanvas.h"
#include "tools/navigation/ZoomToolHandler.h"

namespace orvanel {
namespace {

using namespace test;

class ZoomToolTest : public testing::Test {
 protected:
  ZoomToolTest() { document->setViewportOffset({500.0, 400.0}); }
  void press(QPointF at) { zoom.mouseDown({}, canvas.context(), at); }
  void drag(QPointF to) { zoom.mouseDragged({}, canvas.context(), to); }
  void release(QPointF at, std::uint32_t modifiers = 0) {
    zoom.mouseUp({.modifiers = modifiers, .characters = {}}, canvas.context(), at);
  }
  void dragOnce(QPointF from, QPointF to) {
    press(from);
    drag(to);
    release(to);
  }
  [[nodiscard]] QPointF under(QPointF viewPoint) const { return canvas.viewToDocument(viewPoint).value(); }
  [[nodiscard]] std::optional<SelectionPath> drawn() const {
    return dynamic_cast<const DragPathOverlayLayer&>(*zoom.overlayLayer()).dragPath;
  }

  DocumentPtr document = makeDocument(2000, 1500);
  ToolState tools;
  FakeCanvas canvas{document};
  ZoomToolHandler zoom{MetalContext::shared(), tools};
};

TEST_F(ZoomToolTest, AClickZoomsOneStepAboutThePointer) {
  const QPointF pointer(130.0, 90.0);
  const QPointF fixed = under(pointer);
  press(pointer);
  release(pointer);
  EXPECT_EQ(document->zoom(), 2.0);
  EXPECT_EQ(under(pointer), fixed);
  press(pointer);
  release(pointer, modifier::option);
  EXPECT_EQ(document->zoom(), 1.0);
  EXPECT_EQ(document->viewportOffset.value(), QPointF(500.0, 400.0));
}

TEST_F(ZoomToolTest, ADragBelowThreePointsIsAClick) {
  press({100.0, 100.0});
  drag({102.9, 100.0});
  EXPECT_EQ(drawn(), std::nullopt);
  release({102.9, 100.0});
  EXPECT_EQ(document->zoom(), 2.0);
}

TEST_F(ZoomToolTest, ADragOfThreePointsDrawsARectangleWhateverItsDirection) {
  press({100.0, 100.0});
  drag({97.0, 100.0});
  EXPECT_TRUE(drawn().has_value());
  drag({60.0, 80.0});
  EXPECT_EQ(drawn(), SelectionPath::rect(560.0, 480.0, 40.0, 20.0));
  // Once it is a drag it stays one, however near the pointer returns.
  drag({99.0, 99.0});
  EXPECT_EQ(drawn(), SelectionPath::rect(599.0, 499.0, 1.0, 1.0));
}

TEST_F(ZoomToolTest, ARectangleOfLessThanThreePointsIsAClick) {
  press({100.0, 100.0});
  drag({160.0, 140.0});
  release({102.9, 97.1});
  EXPECT_EQ(document->zoom(), 2.0);
  EXPECT_EQ(drawn(), std::nullopt);
}

TEST_F(ZoomToolTest, ARectangleFillsTheViewAboutItsCentre) {
  dragOnce({100.0, 100.0}, {200.0, 150.0});
  // 400 / 100 is less than 300 / 50.
  EXPECT_EQ(document->customZoomLevel.value(), 4.0);
  EXPECT_EQ(under({200.0, 150.0}), QPointF(650.0, 525.0));
  EXPECT_EQ(drawn(), std::nullopt);
}

TEST_F(ZoomToolTest, ARectangleWithoutHeightDoesNothing) {
  dragOnce({100.0, 100.0}, {200.0, 100.0});
  EXPECT_EQ(document->zoom(), 1.0);
  EXPECT_EQ(document->viewportOffset.value(), QPointF(500.0, 400.0));
}

TEST_F(ZoomToolTest, AVerySmallRectangleStopsAtTheLargestZoom) {
  document->setZoom(300.0);
  dragOnce({100.0, 100.0}, {103.0, 103.0});
  EXPECT_EQ(document->zoom(), 400.0);
}

TEST_F(ZoomToolTest, AHugeRectangleStopsAtTheSmallestZoom) {
  document->setZoom(0.01);
  dragOnce({-1000.0, -1000.0}, {1000.0, 1000.0});
  EXPECT_EQ(document->zoom(), 0.01);
}

TEST_F(ZoomToolTest, ScrubbingMultipliesTheZoomPerPoint) {
  tools.zoomSettings = ZoomSettings{.scrubbyZoom = true};
  const QPointF origin(200.0, 150.0);
  const QPointF fixed = under(origin);
  press(origin);
  drag(origin + QPointF(2.9, 0.0));
  EXPECT_EQ(document->zoom(), 1.0);
  drag(origin + QPointF(40.0, 70.0));
  drag(origin + QPointF(100.0, -20.0));
  EXPECT_NEAR(document->zoom(), std::pow(1.005, 100.0), 1e-12);
  EXPECT_NEAR(document->zoom(), 1.647, 0.001);
  EXPECT_NEAR(under(origin).x(), fixed.x(), 1e-9);
  EXPECT_NEAR(under(origin).y(), fixed.y(), 1e-9);
  EXPECT_EQ(drawn(), std::nullopt);
  release(origin + QPointF(100.0, -20.0));
  EXPECT_NEAR(document->zoom(), 1.647, 0.001);
}

TEST_F(ZoomToolTest, ScrubbingStopsAtTheLimits) {
  tools.zoomSettings = ZoomSettings{.scrubbyZoom = true};
  press({0.0, 0.0});
  drag({5000.0, 0.0});
  EXPECT_EQ(document->zoom(), 400.0);
  drag({-9000.0, 0.0});
  EXPECT_EQ(document->zoom(), 0.01);
}

TEST_F(ZoomToolTest, AClickWithScrubbyZoomStepsAsWell) {
  tools.zoomSettings = ZoomSettings{.scrubbyZoom = true};
  press({10.0, 10.0});
  release({10.0, 10.0}, modifier::option);
  EXPECT_EQ(document->zoomLevelIndex.value(), 13);
}

TEST_F(ZoomToolTest, ThePointerShowsTheDirection) {
  EXPECT_EQ(zoom.cursor(0, canvas.context()), CursorShape::zoomIn);
  EXPECT_EQ(zoom.cursor(modifier::shift, canvas.context()), CursorShape::zoomIn);
  EXPECT_EQ(zoom.cursor(modifier::option, canvas.context()), CursorShape::zoomOut);
}

TEST_F(ZoomToolTest, EscapeAndAChangeOfToolGiveUpTheRectangle) {
  const auto giveUp = [&](const std::function<void()>& how) {
    press({100.0, 100.0});
    drag({150.0, 150.0});
    how();
    EXPECT_EQ(drawn(), std::nullopt);
    release({150.0, 150.0});
    EXPECT_EQ(document->zoom(), 1.0);
  };
  const EventRecord escape{.key = keyCode::escape, .characters = {}};
  giveUp([&] { EXPECT_TRUE(zoom.keyDown(escape, canvas.context())); });
  giveUp([&] { zoom.toolDeactivated(canvas.context()); });
  EXPECT_FALSE(zoom.keyDown(escape, canvas.context()));
}

TEST_F(ZoomToolTest, AnotherDocumentUnderTheDragIsLeftAlone) {
  press({100.0, 100.0});
  const DocumentPtr other = makeDocument(2000, 1500);
  canvas.document = other;
  drag({200.0, 200.0});
  release({200.0, 200.0});
  EXPECT_EQ(other->zoom(), 1.0);
  canvas.document.reset();
  dragOnce({100.0, 100.0}, {200.0, 200.0});
}

}  // namespace
}  // namespace orvanel
