// Transforms for whose result there isn't the memory: the handles stay with what is shown, and the drag goes
// on.
#include <gtest/gtest.h>

#include "model/PixelSupport.h"
#include "raster/MemoryBudget.h"
#include "tools/FakeCanvas.h"
#include "tools/transform/FreeTransformToolHandler.h"
#include "tools/transform/MoveToolHandler.h"

namespace orvanel {
namespace {

using namespace test;

class RefusedTransforms : public testing::Test {
 protected:
  void SetUp() override {
    document->addLayer(QStringLiteral("Box"));
    selectRect(*document, box);
    document->fillSelection({0.2F, 0.5F, 0.8F, 1.0F});
    writableSelection(*document).clear(document->context());
    static_cast<void>(document->composite());
    records = recordCount(*document);
  }

  /// Enough to move and turn the box, not to enlarge it to most of the canvas.
  static constexpr std::uint64_t someTiles = 20 * std::uint64_t{tilePixels} * 4;
  static constexpr PixelRect box{20, 20, 60, 40};
  static constexpr QPointF corner{80.0, 60.0};
  static constexpr QPointF farAway{1200.0, 1200.0};
  static constexpr QPointF nearby{110.0, 80.0};
  DocumentPtr document = makeDocument(1280, 1280);
  ChangeRecorder changes{*document};
  FakeCanvas canvas{document};
  std::int64_t records = 0;
};

TEST_F(RefusedTransforms, TheBoxOfTheMoveToolStaysWithWhatIsShown) {
  MoveToolHandler move{MetalContext::shared()};
  const auto& overlay = dynamic_cast<const MoveToolOverlayLayer&>(*move.overlayLayer());
  move.toolActivated(canvas.context());
  const ScopedMemoryLimit limit(someTiles);
  move.mouseDown({}, canvas.context(), corner);
  move.mouseDragged({}, canvas.context(), nearby);
  const auto shown = overlay.moveToolRect;
  ASSERT_TRUE(shown.has_value());
  EXPECT_EQ(shown->width, 90.0F);
  move.mouseDragged({}, canvas.context(), farAway);
  EXPECT_EQ(overlay.moveToolRect, shown);
  EXPECT_EQ(changes.count<change::EditRefused>(), 1U);
  move.mouseUp({}, canvas.context(), farAway);
  EXPECT_EQ(recordCount(*document), records + 1);
  EXPECT_EQ(overlay.moveToolRect->width, 90.0F);
}

TEST_F(RefusedTransforms, ADragOfTheMoveToolThatShowedNothingLeavesNoRecord) {
  MoveToolHandler move{MetalContext::shared()};
  move.toolActivated(canvas.context());
  const ScopedMemoryLimit limit(someTiles);
  move.mouseDown({}, canvas.context(), corner);
  move.mouseDragged({}, canvas.context(), farAway);
  move.mouseUp({}, canvas.context(), farAway);
  EXPECT_EQ(recordCount(*document), records);
  EXPECT_EQ(changes.count<change::EditRefused>(), 1U);
}

TEST_F(RefusedTransforms, TheCornersOfAFreeTransformStayWithWhatIsShown) {
  ToolState tools;
  tools.pushTool(Tool::freeTransform);
  FreeTransformToolHandler handler{MetalContext::shared(), tools};
  const auto& overlay = dynamic_cast<const FreeTransformOverlayLayer&>(*handler.overlayLayer());
  const ScopedMemoryLimit limit(someTiles);
  handler.toolActivated(canvas.context());
  ASSERT_TRUE(handler.isOpen());
  handler.mouseDown({}, canvas.context(), corner);
  handler.mouseDragged({}, canvas.context(), nearby);
  const auto shown = overlay.corners;
  handler.mouseDragged({}, canvas.context(), farAway);
  EXPECT_EQ(overlay.corners, shown);
  handler.mouseUp({}, canvas.context(), farAway);
  EXPECT_EQ(overlay.corners, shown);
  EXPECT_TRUE(handler.isOpen()) << "what was shown before isn't lost";
  EXPECT_EQ(changes.count<change::EditRefused>(), 1U);
}

}  // namespace
}  // namespace orvanel
