// Which changes make the canvas draw a frame. Each draws exactly one; an idle canvas draws none.
#include <gtest/gtest.h>

#include "CanvasSupport.h"
#include "canvas/CanvasPaneView.h"

namespace orvanel {
namespace {

/// An overlay that draws nothing and counts frames.
class FrameCounter : public CanvasViewLayer {
 public:
  [[nodiscard]] std::string name() const override { return "Frame Counter"; }
  [[nodiscard]] bool shouldRender(const CanvasViewContext&, const Document*) const override {
    ++frames;
    return false;
  }
  void render(RenderEncoder&, const CanvasViewContext&, const Document*) const override {}

  mutable int frames = 0;
};

class FrameRequestsTest : public testing::Test {
 protected:
  FrameRequestsTest() {
    document->addFolder(QStringLiteral("Outer"));
    document->addFolder(QStringLiteral("Inner"));
    document->moveNode(test::idOf(*document, "Inner"), test::idOf(*document, "Outer"));
    document->addLayer(QStringLiteral("Deep"));
    document->moveNode(test::idOf(*document, "Deep"), test::idOf(*document, "Inner"));
    pane.resize(400, 300);
    pane.setDocument(document);
    pane.canvasView().renderer().toolOverlayLayers = {counter};
    pane.show();
    settle();
  }

  /// Runs the event loop long enough for several frames.
  static void settle() { test::runEventLoop(100); }
  /// The number of frames that `action` causes.
  template <typename Action>
  int framesAfter(const Action& action) {
    const int before = counter->frames;
    action();
    settle();
    return counter->frames - before;
  }

  DocumentPtr document = test::makeDocument(200, 100);
  std::shared_ptr<FrameCounter> counter = std::make_shared<FrameCounter>();
  ToolState tools;
  CanvasPaneView pane{MetalContext::shared(), tools};
};

TEST_F(FrameRequestsTest, AnIdleCanvasDrawsNothing) {
  EXPECT_GT(counter->frames, 0);
  EXPECT_EQ(framesAfter([] { test::runEventLoop(400); }), 0);
}

TEST_F(FrameRequestsTest, APropertyDeepInTheTreeDrawsOneFrame) {
  const QUuid deep = test::idOf(*document, "Deep");
  EXPECT_EQ(framesAfter([&] { document->setOpacity(deep, 0.5F); }), 1);
  EXPECT_EQ(framesAfter([&] { document->setVisible(deep, false); }), 1);
  EXPECT_EQ(framesAfter([&] { document->setBlendMode(deep, BlendMode::multiply); }), 1);
}

TEST_F(FrameRequestsTest, AnEqualValueDrawsNoFrame) {
  const QUuid deep = test::idOf(*document, "Deep");
  EXPECT_EQ(framesAfter([&] { document->setOpacity(deep, 1.0F); }), 0);
  EXPECT_EQ(framesAfter([&] { document->setViewportOffset(document->viewportOffset.value()); }), 0);
}

TEST_F(FrameRequestsTest, AnEditOfPixelsDrawsOneFrame) {
  test::activate(*document, QStringLiteral("Deep"));
  settle();
  EXPECT_EQ(framesAfter([&] { document->fillSelection({1.0F, 0.0F, 0.0F, 1.0F}); }), 1);
  EXPECT_EQ(framesAfter([&] { document->invertActive(); }), 1);
}

TEST_F(FrameRequestsTest, UndoAndRedoDrawOneFrameEach) {
  document->fillSelection({1.0F, 0.0F, 0.0F, 1.0F});
  settle();
  EXPECT_EQ(framesAfter([&] { document->undo(); }), 1);
  EXPECT_EQ(framesAfter([&] { document->redo(); }), 1);
}

TEST_F(FrameRequestsTest, ASelectionDrawsFramesWhileItIsShown) {
  const int before = counter->frames;
  document->selectAll();
  EXPECT_TRUE(test::runUntil([&] { return counter->frames >= before + 4; }));
  document->deselect();
  settle();
  EXPECT_EQ(framesAfter([] { test::runEventLoop(300); }), 0);
}

TEST_F(FrameRequestsTest, ASelectionInAHiddenCanvasDrawsNoFrame) {
  document->selectAll();
  settle();
  pane.hide();
  settle();
  EXPECT_EQ(framesAfter([] { test::runEventLoop(300); }), 0);
  const int before = counter->frames;
  pane.show();
  EXPECT_TRUE(test::runUntil([&] { return counter->frames >= before + 4; }));
}

TEST_F(FrameRequestsTest, ASelectionInAMinimisedWindowDrawsNoFrame) {
  document->selectAll();
  settle();
  pane.setWindowState(Qt::WindowMinimized);
  settle();
  EXPECT_EQ(framesAfter([] { test::runEventLoop(300); }), 0);
  const int before = counter->frames;
  pane.setWindowState(Qt::WindowNoState);
  EXPECT_TRUE(test::runUntil([&] { return counter->frames >= before + 4; }));
}

TEST_F(FrameRequestsTest, ASelectionWhoseOutlineIsOutOfSightDrawsNoFrames) {
  document->selectAll();
  test::zoomTo(*document, 100.0);
  document->setViewportOffset(QPointF(100.0, 50.0));
  settle();
  EXPECT_EQ(framesAfter([] { test::runEventLoop(300); }), 0);
}

TEST_F(FrameRequestsTest, AChangeOfTheViewDrawsOneFrame) {
  EXPECT_EQ(framesAfter([&] { document->zoomIn(); }), 1);
  EXPECT_EQ(framesAfter([&] { document->setChannelVisibility({1, 0, 1}); }), 1);
}

TEST_F(FrameRequestsTest, EditsBetweenTwoFramesShareTheNextFrame) {
  EXPECT_EQ(framesAfter([&] {
              for (int i = 0; i < 5; ++i) document->invertActive();
              document->zoomIn();
            }),
            1);
}

TEST_F(FrameRequestsTest, ACompositeMadeOutsideAFrameDrawsOneFrame) {
  test::put(document->needsCompositing, true);
  EXPECT_EQ(framesAfter([&] { static_cast<void>(document->composite()); }), 1);
}

TEST_F(FrameRequestsTest, ALargeImageIsFlattenedAfterItsFrameWithoutAnother) {
  const DocumentPtr large = test::makeDocument(128 * 20, 128 * 20);
  pane.canvasView().renderer().workPerTurn = std::chrono::milliseconds(0);
  pane.setDocument(large);
  settle();
  const int frames = counter->frames;
  EXPECT_TRUE(test::runUntil([&] { return large->isCompositeCurrent(); }));
  settle();
  EXPECT_EQ(counter->frames, frames);
}

TEST_F(FrameRequestsTest, AViewAtRestGetsReadyForTheNextChangeWithoutAnotherFrame) {
  const DocumentPtr large = test::makeDocument(128 * 20, 128 * 20);
  const CanvasRenderer& renderer = pane.canvasView().renderer();
  pane.setDocument(large);
  EXPECT_TRUE(test::runUntil([&] { return large->isCompositeCurrent() && renderer.isReady(); }));
  settle();
  large->zoomIn();
  settle();
  const int frames = counter->frames;
  EXPECT_TRUE(test::runUntil([&] { return renderer.isReady(); }));
  settle();
  EXPECT_EQ(counter->frames, frames);
}

TEST_F(FrameRequestsTest, ADocumentThatIsNoLongerShownDrawsNoFrame) {
  const DocumentPtr other = test::makeDocument(20, 20);
  pane.setDocument(other);
  settle();
  EXPECT_EQ(framesAfter([&] { document->invertActive(); }), 0);
  EXPECT_EQ(framesAfter([&] { other->invertActive(); }), 1);
}

TEST_F(FrameRequestsTest, AHiddenCanvasDrawsNoFrame) {
  pane.hide();
  settle();
  EXPECT_EQ(framesAfter([&] { document->invertActive(); }), 0);
}

}  // namespace
}  // namespace orvanel
