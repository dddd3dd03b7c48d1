// The outline moves without the frame being drawn again, and looks as if it had been.
#include "canvas/MarchingAnts.h"

#include <gtest/gtest.h>

#include <random>

#include "CanvasSupport.h"
#include "canvas/CanvasRenderer.h"
#include "tools/overlays/DragPathOverlayLayer.h"
#include "tools/overlays/MoveToolOverlayLayer.h"

namespace orvanel {
namespace {

constexpr int viewWidth = 300;
constexpr int viewHeight = 170;

class MarchingAntsTest : public testing::Test {
 protected:
  MarchingAntsTest() {
    renderer.document = document;
    document->ensureSelection();
    selection().setEllipse(130.0F, 70.0F, 100.0F, 50.0F, 0.0F, MetalContext::shared());
  }

  [[nodiscard]] Selection& selection() const { return test::writableSelection(*document); }
  /// What a frame drawn from nothing shows now.
  [[nodiscard]] std::vector<std::uint32_t> wholeFrame() {
    test::PlainView other(viewWidth, viewHeight);
    other.scale = view.scale;
    EXPECT_EQ(renderer.drawInMTKView(other), FrameResult::drawn);
    // The next frame in the first view would be whole as well.
    static_cast<void>(renderer.drawInMTKView(view));
    return other.pixels;
  }
  void expectMovedAsWhole() {
    static_cast<void>(renderer.drawInMTKView(view));
    for (int step = 0; step < 4; ++step) {
      now += 0.05;
      ASSERT_EQ(renderer.drawInMTKView(view), FrameResult::drawn);
      now += 0.07;
      view.presentedParts.clear();
      ASSERT_EQ(renderer.drawInMTKView(view), FrameResult::drawn);
      EXPECT_FALSE(view.presentedParts.empty());
      const std::vector<std::uint32_t> moved = view.pixels;
      EXPECT_EQ(moved, wholeFrame());
    }
  }

  double now = 100.0;
  DocumentPtr document = test::makeDocument(260, 140);
  test::PlainView view{viewWidth, viewHeight};
  CanvasRenderer renderer{MetalContext::shared(), [this] { return now; }};
};

TEST_F(MarchingAntsTest, MoveBitForBitAsIfTheFrameWereDrawnAgain) {
  for (const double scale : {1.0, 1.25, 2.0}) {
    for (const double zoom : {0.3, 1.0, 5.0}) {
      SCOPED_TRACE(testing::Message() << "scale " << scale << " zoom " << zoom);
      view.scale = scale;
      test::zoomTo(*document, zoom);
      document->setViewportOffset(zoom > 1.0 ? QPointF(20.0, 40.0) : QPointF(0.0, 0.0));
      expectMovedAsWhole();
    }
  }
}

TEST_F(MarchingAntsTest, MoveBeneathWhatToolsDraw) {
  const auto box = std::make_shared<MoveToolOverlayLayer>(MetalContext::shared());
  box->moveToolRect = {60, 30, 150, 80};
  box->moveToolRotation = 0.3F;
  const auto path = std::make_shared<DragPathOverlayLayer>(MetalContext::shared());
  path->dragPath = SelectionPath::ellipse(130.0, 70.0, 99.0, 52.0);
  renderer.toolOverlayLayers = {box, path};
  expectMovedAsWhole();
}

TEST_F(MarchingAntsTest, OnlyThePartsWithAnOutlineAreShownAgain) {
  selection().setRect({0, 0, 20, 10}, 0.0F, MetalContext::shared());
  static_cast<void>(renderer.drawInMTKView(view));
  now += 0.1;
  ASSERT_EQ(renderer.drawInMTKView(view), FrameResult::drawn);
  ASSERT_EQ(view.presentedParts.size(), 1U);
  const PixelRect part = view.presentedParts.front();
  EXPECT_LE(part.width, 64);
  EXPECT_LE(part.height, 32);
  EXPECT_EQ(part.intersected({20, 15, 20, 10}), (PixelRect{20, 15, 20, 10}));
}

TEST_F(MarchingAntsTest, TouchNothingButTheOutline) {
  static_cast<void>(renderer.drawInMTKView(view));
  std::vector<std::uint32_t>& pixels = view.pixels;
  std::ranges::fill(pixels, 0x12345678U);
  now += 0.1;
  static_cast<void>(renderer.drawInMTKView(view));
  EXPECT_GT(std::ranges::count(pixels, 0x12345678U), viewWidth * viewHeight - 1000);
}

TEST_F(MarchingAntsTest, AFrameAtTheSameTimeChangesNothing) {
  static_cast<void>(renderer.drawInMTKView(view));
  EXPECT_EQ(renderer.drawInMTKView(view), FrameResult::unchanged);
}

TEST_F(MarchingAntsTest, FollowAnEditOfTheSelection) {
  static_cast<void>(renderer.drawInMTKView(view));
  now += 0.1;
  static_cast<void>(renderer.drawInMTKView(view));
  selection().setRect({30, 30, 100, 60}, 0.0F, MetalContext::shared());
  expectMovedAsWhole();
}

TEST_F(MarchingAntsTest, AreWantedOnlyWhileAnOutlineIsInSight) {
  static_cast<void>(renderer.drawInMTKView(view));
  EXPECT_TRUE(renderer.isAnimating());
  document->deselect();
  static_cast<void>(renderer.drawInMTKView(view));
  EXPECT_FALSE(renderer.isAnimating());
  document->ensureSelection();
  static_cast<void>(renderer.drawInMTKView(view));
  EXPECT_FALSE(renderer.isAnimating());
  document->selectAll();
  test::zoomTo(*document, 40.0);
  document->setViewportOffset(QPointF(100.0, 60.0));
  static_cast<void>(renderer.drawInMTKView(view));
  now += 0.1;
  EXPECT_EQ(renderer.drawInMTKView(view), FrameResult::unchanged);
  EXPECT_FALSE(renderer.isAnimating());
}

}  // namespace
}  // namespace orvanel
