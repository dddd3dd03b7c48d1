// What a frame flattens, draws and presents.
#include "canvas/CanvasRenderer.h"

#include <gtest/gtest.h>

#include "CanvasSupport.h"
#include "model/DocumentCompositor.h"
#include "raster/MemoryBudget.h"

namespace orvanel {
namespace {

using test::makeDocument;
using test::PlainView;
using test::put;

constexpr std::uint32_t surround = 0xFF94949CU;
constexpr std::uint32_t white = 0xFFFFFFFFU;
constexpr std::uint32_t red = 0xFFFF0000U;

class CanvasRendererTest : public testing::Test {
 protected:
  CanvasRendererTest() { renderer.document = document; }

  [[nodiscard]] std::shared_ptr<Layer> background() const {
    return document->rootNodes.value().front().layer();
  }
  /// How often the document has been flattened.
  [[nodiscard]] std::size_t composited() const { return changes.count<change::Composited>(); }

  double now = 100.0;
  DocumentPtr document = makeDocument(40, 30);
  test::ChangeRecorder changes{*document};
  PlainView view{100, 80};
  CanvasRenderer renderer{MetalContext::shared(), [this] { return now; }};
};

TEST_F(CanvasRendererTest, DrawsTheDocumentCentredInTheSurround) {
  ASSERT_EQ(renderer.drawInMTKView(view), FrameResult::drawn);
  EXPECT_EQ(view.presented, 1);
  EXPECT_EQ(view.at(29, 40), surround);
  EXPECT_EQ(view.at(30, 25), white);
  EXPECT_EQ(view.at(69, 54), white);
  EXPECT_EQ(view.at(70, 40), surround);
  EXPECT_EQ(view.at(50, 24), surround);
  EXPECT_EQ(view.at(50, 55), surround);
}

TEST_F(CanvasRendererTest, ShowsTheCheckerboardThroughAnEmptyTree) {
  put(document->rootNodes, LayerNodeList{});
  renderer.drawInMTKView(view);
  EXPECT_EQ(view.at(30, 25), 0xFFF7F7F7U);
  EXPECT_EQ(view.at(38, 25), 0xFFE3E3E3U);
  EXPECT_EQ(view.at(10, 10), surround);
}

TEST_F(CanvasRendererTest, HasTheFivePassesInOrder) {
  std::vector<std::string> names;
  for (const auto& pass : renderer.layers()) names.push_back(pass->name());
  EXPECT_EQ(names, (std::vector<std::string>{"Background", "Checkerboard", "Document", "Pixel Grid",
                                             "Selection Overlay"}));
  EXPECT_TRUE(renderer.toolOverlayLayers.empty());
}

TEST_F(CanvasRendererTest, WritesNoPixelsWhileNothingChanges) {
  renderer.drawInMTKView(view);
  std::fill(view.pixels.begin(), view.pixels.end(), 0x12345678U);
  now += 1.0;
  EXPECT_EQ(renderer.drawInMTKView(view), FrameResult::unchanged);
  EXPECT_EQ(view.presented, 1);
  EXPECT_EQ(composited(), 1U);
  EXPECT_EQ(view.at(50, 40), 0x12345678U);
}

TEST_F(CanvasRendererTest, CompositingThatChangesNoTileDrawsNothing) {
  renderer.drawInMTKView(view);
  put(document->needsCompositing, true);
  EXPECT_EQ(renderer.drawInMTKView(view), FrameResult::unchanged);
  EXPECT_EQ(composited(), 2U);
}

TEST_F(CanvasRendererTest, DrawsAfterEveryChangeOfTheView) {
  const auto expectDrawn = [&](const char* what) {
    EXPECT_EQ(renderer.drawInMTKView(view), FrameResult::drawn) << what;
    EXPECT_EQ(renderer.drawInMTKView(view), FrameResult::unchanged) << what;
  };
  expectDrawn("first");
  document->setViewportOffset(QPointF(3, 4));
  expectDrawn("offset");
  test::zoomToIndex(*document, 16);
  expectDrawn("table zoom");
  test::zoomTo(*document, 2.5);
  expectDrawn("custom zoom");
  document->setChannelVisibility(ChannelVisibility{1, 1, 0});
  expectDrawn("channels");
  view.scale = 2.0;
  expectDrawn("scale");
  EXPECT_EQ(composited(), 1U);
}

TEST_F(CanvasRendererTest, DrawsAnEdit) {
  renderer.drawInMTKView(view);
  document->fillSelection({1.0F, 0.0F, 0.0F, 1.0F});
  EXPECT_EQ(renderer.drawInMTKView(view), FrameResult::drawn);
  EXPECT_FALSE(document->needsCompositing.value());
  EXPECT_EQ(composited(), 2U);
  EXPECT_EQ(view.at(50, 40), red);
}

TEST_F(CanvasRendererTest, FlattensAfterAPropertyThatSetsNoFlag) {
  renderer.drawInMTKView(view);
  document->setOpacity(background()->id, 0.5F);
  EXPECT_FALSE(document->needsCompositing.value());
  EXPECT_EQ(renderer.drawInMTKView(view), FrameResult::drawn);
  document->setVisible(background()->id, false);
  EXPECT_FALSE(document->needsCompositing.value());
  EXPECT_EQ(renderer.drawInMTKView(view), FrameResult::drawn);
  EXPECT_EQ(view.at(30, 25), 0xFFF7F7F7U);
}

TEST_F(CanvasRendererTest, InvisiblePropertiesFlattenNothing) {
  renderer.drawInMTKView(view);
  document->rename(background()->id, QStringLiteral("Sky"));
  document->setLocked(background()->id, true);
  EXPECT_EQ(renderer.drawInMTKView(view), FrameResult::unchanged);
  put(background()->opacity, 0.0F);
  renderer.drawInMTKView(view);
  EXPECT_EQ(composited(), 2U);
  put(background()->opacity, -0.0F);
  EXPECT_EQ(renderer.drawInMTKView(view), FrameResult::unchanged);
  EXPECT_EQ(composited(), 2U);
}

TEST_F(CanvasRendererTest, FlattensAfterAMaskIsSwitchedOffOrOn) {
  test::addMask(*background());
  renderer.drawInMTKView(view);
  EXPECT_EQ(view.at(30, 25), 0xFFF7F7F7U);
  document->setMaskEnabled(background()->id, false);
  EXPECT_FALSE(document->needsCompositing.value());
  EXPECT_EQ(renderer.drawInMTKView(view), FrameResult::drawn);
  EXPECT_EQ(view.at(30, 25), white);
  document->setMaskEnabled(background()->id, true);
  EXPECT_FALSE(document->needsCompositing.value());
  EXPECT_EQ(renderer.drawInMTKView(view), FrameResult::drawn);
  EXPECT_EQ(view.at(30, 25), 0xFFF7F7F7U);
}

TEST_F(CanvasRendererTest, AFrameLeavesTheCompositeCurrent) {
  EXPECT_FALSE(document->isCompositeCurrent());
  renderer.drawInMTKView(view);
  EXPECT_TRUE(document->isCompositeCurrent());
  EXPECT_EQ(document->compositor().lastCompositingHash(), DocumentCompositor::compositingHash(*document));
  document->setBlendMode(background()->id, BlendMode::multiply);
  EXPECT_FALSE(document->isCompositeCurrent());
  renderer.drawInMTKView(view);
  EXPECT_EQ(document->compositor().lastCompositingHash(), DocumentCompositor::compositingHash(*document));
}

/// A document whose image isn't flattened within a frame.
constexpr int largeSide = 128 * 20;

TEST_F(CanvasRendererTest, AFrameShowsALargeImageBeforeItIsFlattened) {
  document = makeDocument(largeSide, largeSide);
  renderer.document = document;
  EXPECT_EQ(renderer.drawInMTKView(view), FrameResult::unfinished);
  EXPECT_FALSE(document->isCompositeCurrent());
  EXPECT_EQ(view.presented, 1);
  for (const QPoint corner : {QPoint(0, 0), QPoint(99, 0), QPoint(0, 79), QPoint(99, 79)}) {
    EXPECT_EQ(view.at(corner.x(), corner.y()), white);
  }
  const std::vector<std::uint32_t> sampled = view.pixels;
  while (!renderer.catchUp()) continue;
  EXPECT_TRUE(document->isCompositeCurrent());
  renderer.drawInMTKView(view);
  EXPECT_EQ(view.pixels, sampled);
}

TEST_F(CanvasRendererTest, FlatteningIsSpreadOverTurnsAndAnEditRestartsIt) {
  document = makeDocument(largeSide, largeSide);
  renderer.document = document;
  renderer.workPerTurn = std::chrono::milliseconds(0);
  EXPECT_FALSE(renderer.catchUp());
  document->fillSelection({1.0F, 0.0F, 0.0F, 1.0F});
  EXPECT_FALSE(renderer.catchUp());
  EXPECT_EQ(renderer.drawInMTKView(view), FrameResult::unfinished);
  EXPECT_EQ(view.at(50, 40), red);
  while (!renderer.catchUp()) continue;
  EXPECT_EQ(renderer.drawInMTKView(view), FrameResult::drawn);
  for (const QPoint corner : {QPoint(0, 0), QPoint(99, 0), QPoint(0, 79), QPoint(99, 79)}) {
    EXPECT_EQ(view.at(corner.x(), corner.y()), red);
  }
}

TEST_F(CanvasRendererTest, IsReadyOnceNothingIsLeftToDoForThePictureShown) {
  document = makeDocument(largeSide, largeSide);
  renderer.document = document;
  renderer.drawInMTKView(view);
  EXPECT_FALSE(renderer.isReady());
  while (!renderer.catchUp()) continue;
  EXPECT_TRUE(renderer.isReady());
  document->zoomIn();
  renderer.drawInMTKView(view);
  EXPECT_FALSE(renderer.isReady());
  while (!renderer.catchUp()) continue;
  EXPECT_TRUE(renderer.isReady());
  renderer.forgetFrames();
  EXPECT_FALSE(renderer.isReady());
}

TEST_F(CanvasRendererTest, LetsGoOfWhatItKeepsBeforeAnEditIsRefused) {
  document = makeDocument(largeSide, largeSide);
  renderer.document = document;
  view = PlainView{600, 600};
  document->zoomFitOnScreen(600.0, 600.0);
  renderer.drawInMTKView(view);
  while (!renderer.catchUp()) continue;
  ASSERT_TRUE(renderer.isReady());
  const ScopedMemoryLimit nothing(0);
  const test::ChangeRecorder refusals(*document);
  EXPECT_TRUE(document->admitsEdit(std::uint64_t{64} << 10U)) << "the image at the view's samples went";
  EXPECT_FALSE(renderer.isReady());
  EXPECT_FALSE(document->admitsEdit(std::uint64_t{512} << 20U));
  EXPECT_EQ(refusals.count<change::EditRefused>(), 1U);
}

TEST_F(CanvasRendererTest, StopsWithoutADocumentACompositeOrADrawable) {
  view.isHidden = true;
  EXPECT_EQ(renderer.drawInMTKView(view), FrameResult::stopped);
  EXPECT_TRUE(document->needsCompositing.value());
  EXPECT_EQ(renderer.lastFrameTime(), 0.0);
  view.isHidden = false;
  const ConstTexture composite = document->compositedTexture.value();
  put(document->compositedTexture, nullptr);
  EXPECT_EQ(renderer.drawInMTKView(view), FrameResult::stopped);
  EXPECT_TRUE(document->needsCompositing.value());
  put(document->compositedTexture, composite);
  EXPECT_EQ(renderer.drawInMTKView(view), FrameResult::drawn);
  document.reset();
  EXPECT_EQ(renderer.drawInMTKView(view), FrameResult::stopped);
  EXPECT_EQ(view.presented, 1);
}

TEST_F(CanvasRendererTest, ShowsAnotherDocumentAfterASwitch) {
  renderer.drawInMTKView(view);
  const DocumentPtr other = makeDocument(40, 30);
  other->fillSelection({0.0F, 1.0F, 0.0F, 1.0F});
  renderer.document = other;
  EXPECT_EQ(renderer.drawInMTKView(view), FrameResult::drawn);
  EXPECT_EQ(view.at(50, 40), 0xFF00FF00U);
}

TEST_F(CanvasRendererTest, TheOutlineMovesTwentyUnitsASecond) {
  renderer.drawInMTKView(view);
  EXPECT_EQ(renderer.selectionAnimationOffset(), 0.0F);
  EXPECT_EQ(renderer.lastFrameTime(), 100.0);
  now += 0.5;
  renderer.drawInMTKView(view);
  EXPECT_FLOAT_EQ(renderer.selectionAnimationOffset(), 10.0F);
}

TEST_F(CanvasRendererTest, TheOutlineCatchesUpAfterBeingHidden) {
  renderer.drawInMTKView(view);
  view.isHidden = true;
  now += 2.0;
  renderer.drawInMTKView(view);
  EXPECT_EQ(renderer.lastFrameTime(), 100.0);
  view.isHidden = false;
  now += 1.0;
  renderer.drawInMTKView(view);
  EXPECT_FLOAT_EQ(renderer.selectionAnimationOffset(), 60.0F);
}

TEST_F(CanvasRendererTest, TheOutlinesPhaseWrapsBeyondEightThousand) {
  renderer.drawInMTKView(view);
  now += 400.0;
  renderer.drawInMTKView(view);
  EXPECT_FLOAT_EQ(renderer.selectionAnimationOffset(), 8000.0F);
  now += 0.25;
  renderer.drawInMTKView(view);
  EXPECT_FLOAT_EQ(renderer.selectionAnimationOffset(), 5.0F);
}

TEST_F(CanvasRendererTest, KnowsTheDrawablesSizeAndScale) {
  EXPECT_EQ(renderer.scaleFactor(), 1.0);
  renderer.drawableSizeWillChange({7, 9});
  EXPECT_EQ(renderer.viewportSize(), QSizeF(7, 9));
  view.scale = 1.25;
  renderer.drawInMTKView(view);
  EXPECT_EQ(renderer.viewportSize(), QSizeF(100, 80));
  EXPECT_EQ(renderer.scaleFactor(), 1.25);
  view.scale = std::nullopt;
  renderer.drawInMTKView(view);
  EXPECT_EQ(renderer.scaleFactor(), 1.0);
}

TEST_F(CanvasRendererTest, DrawsToolOverlaysOnTop) {
  class Overlay : public CanvasViewLayer {
   public:
    [[nodiscard]] std::string name() const override { return "Overlay"; }
    [[nodiscard]] bool shouldRender(const CanvasViewContext&, const Document*) const override {
      return isShown;
    }
    void render(RenderEncoder& encoder, const CanvasViewContext&, const Document*) const override {
      encoder.draw({"", fillBlue, false}, {});
    }
    static void fillBlue(const FragmentInvocation&, const FragmentBand& band) {
      for (int row = 0; row < band.rows; ++row) {
        std::fill_n(band.pixels + static_cast<std::size_t>(row) * band.pixelsPerRow, band.width, 0xFF0000FFU);
      }
    }
    bool isShown = false;
  };
  const auto overlay = std::make_shared<Overlay>();
  renderer.toolOverlayLayers = {overlay};
  renderer.drawInMTKView(view);
  EXPECT_EQ(view.at(50, 40), white);
  overlay->isShown = true;
  EXPECT_EQ(renderer.drawInMTKView(view), FrameResult::drawn);
  EXPECT_EQ(view.at(50, 40), 0xFF0000FFU);
}

TEST_F(CanvasRendererTest, ShowsTheGridAtHighZoom) {
  test::zoomTo(*document, 40.0);
  renderer.drawInMTKView(view);
  EXPECT_EQ(view.at(20, 20), white);
  EXPECT_NE(view.at(40, 20), white);
  test::zoomTo(*document, 39.9);
  renderer.drawInMTKView(view);
  EXPECT_EQ(view.at(40, 20), white);
}

using CanvasRendererDeathTest = CanvasRendererTest;

TEST_F(CanvasRendererDeathTest, AZoomBeyondTheTableIsFatal) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  put(document->zoomLevelIndex, 29);
  EXPECT_DEATH((void)renderer.drawInMTKView(view), "Zoom level index out of range");
}

}  // namespace
}  // namespace orvanel
