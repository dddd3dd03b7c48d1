// The free transform: how it opens and ends, and how its drags compose.
#include <gtest/gtest.h>

#include <numbers>

#include "model/PixelSupport.h"
#include "tools/FakeCanvas.h"
#include "tools/transform/FreeTransformToolHandler.h"
#include "tools/transform/HandleDrag.h"

namespace orvanel {
namespace {

using namespace test;

class FreeTransformToolTest : public testing::Test {
 protected:
  FreeTransformToolTest() {
    document->addLayer(QStringLiteral("Box"));
    selectRect(*document, box);
    document->fillSelection({0.2F, 0.5F, 0.8F, 1.0F});
    writableSelection(*document).clear(document->context());
    layer = document->activeLayer();
    before = *layer->texture.value();
    records = recordCount(*document);
    tools.selectTool(Tool::move);
    tools.pushTool(Tool::freeTransform);
  }
  void open() { handler.toolActivated(canvas.context()); }
  void drag(QPointF from, QPointF to) {
    handler.mouseDown({}, canvas.context(), from);
    handler.mouseDragged({}, canvas.context(), to);
    handler.mouseUp({}, canvas.context(), to);
  }
  bool key(int code) { return handler.keyDown({.key = code, .characters = {}}, canvas.context()); }
  [[nodiscard]] const FreeTransformOverlayLayer& overlay() const {
    return dynamic_cast<const FreeTransformOverlayLayer&>(*handler.overlayLayer());
  }
  void expectCorners(const boxHandle::Quad& expected) const {
    ASSERT_TRUE(overlay().corners.has_value());
    for (std::size_t i = 0; i < expected.size(); ++i) {
      EXPECT_NEAR(overlay().corners->at(i).x(), expected.at(i).x(), 1e-6);
      EXPECT_NEAR(overlay().corners->at(i).y(), expected.at(i).y(), 1e-6);
    }
  }
  [[nodiscard]] std::optional<PixelRect> content() const {
    return document->context().layerContentBounds(*layer->texture.value(), document->colorMode.value(),
                                                  false);
  }
  [[nodiscard]] std::int64_t newRecords() const { return recordCount(*document) - records; }

  static constexpr PixelRect box{100, 80, 60, 40};
  static constexpr QPointF middle{130.0, 100.0};
  DocumentPtr document = makeDocument(300, 200);
  std::shared_ptr<Layer> layer;
  std::optional<Surface> before;
  std::int64_t records = 0;
  ToolState tools;
  FakeCanvas canvas{document};
  FreeTransformToolHandler handler{MetalContext::shared(), tools};
};

TEST_F(FreeTransformToolTest, OpensWithTheBoxOfTheContent) {
  open();
  EXPECT_TRUE(handler.isOpen());
  expectCorners({QPointF(100, 80), QPointF(160, 80), QPointF(160, 120), QPointF(100, 120)});
  ASSERT_EQ(overlay().handles->size(), 8U);
  EXPECT_EQ(overlay().handles->at(1), QPointF(130, 80));
  EXPECT_TRUE(layer->texture.value()->equals(*before));
}

TEST_F(FreeTransformToolTest, LockedLayersFoldersAndEmptyLayersOpenNone) {
  const auto expectNone = [&] {
    open();
    EXPECT_FALSE(handler.isOpen());
    EXPECT_EQ(overlay().corners, std::nullopt);
    EXPECT_FALSE(key(keyCode::returnKey));
    EXPECT_FALSE(key(keyCode::escape));
  };
  document->setLocked(layer->id, true);
  expectNone();
  document->addLayer(QStringLiteral("Empty"));
  expectNone();
  document->addFolder(QStringLiteral("Folder"));
  expectNone();
  EXPECT_EQ(tools.currentTool(), Tool::freeTransform);
}

TEST_F(FreeTransformToolTest, ReturnWithoutADragLeavesARecordThatChangesNothing) {
  open();
  EXPECT_TRUE(key(keyCode::returnKey));
  EXPECT_EQ(newRecords(), 1);
  EXPECT_EQ(document->undoStack.undoActionName(), "Free Transform");
  EXPECT_TRUE(layer->texture.value()->equals(*before));
  EXPECT_FALSE(handler.isOpen());
  EXPECT_EQ(overlay().corners, std::nullopt);
  EXPECT_EQ(overlay().handles, std::nullopt);
  EXPECT_EQ(tools.currentTool(), Tool::move);
}

TEST_F(FreeTransformToolTest, TheKeypadsEnterAppliesToo) {
  open();
  drag(middle, middle + QPointF(20.0, 10.0));
  EXPECT_EQ(newRecords(), 0);
  EXPECT_TRUE(key(keyCode::enter));
  EXPECT_EQ(newRecords(), 1);
  EXPECT_EQ(content(), (PixelRect{120, 90, 60, 40}));
}

TEST_F(FreeTransformToolTest, EscapeAfterSeveralDragsRestoresAndLeavesNoRecord) {
  open();
  drag(middle, middle + QPointF(20.0, 10.0));
  drag({180.0, 130.0}, {210.0, 150.0});
  EXPECT_TRUE(key(keyCode::escape));
  EXPECT_EQ(newRecords(), 0);
  EXPECT_TRUE(layer->texture.value()->equals(*before));
  EXPECT_EQ(tools.currentTool(), Tool::move);
}

TEST_F(FreeTransformToolTest, OtherKeysAndKeysWithoutATransformAreLeftToOthers) {
  EXPECT_FALSE(key(keyCode::returnKey));
  open();
  for (const int code : {keyCode::space, keyCode::backspace, keyCode::tab, keyCode::none}) {
    EXPECT_FALSE(key(code));
  }
  EXPECT_TRUE(handler.isOpen());
}

TEST_F(FreeTransformToolTest, AChangeOfToolAppliesTheTransform) {
  open();
  drag(middle, middle + QPointF(20.0, 10.0));
  handler.toolDeactivated(canvas.context());
  EXPECT_EQ(newRecords(), 1);
  EXPECT_EQ(content(), (PixelRect{120, 90, 60, 40}));
}

TEST_F(FreeTransformToolTest, MovementsAreNotRoundedToPixels) {
  open();
  drag(middle, middle + QPointF(0.25, 0.5));
  expectCorners(
      {QPointF(100.25, 80.5), QPointF(160.25, 80.5), QPointF(160.25, 120.5), QPointF(100.25, 120.5)});
}

TEST_F(FreeTransformToolTest, ManyDragsSampleTheOriginalOnce) {
  open();
  drag(middle, middle + QPointF(33.3, 11.7));
  drag(middle + QPointF(33.3, 11.7), middle + QPointF(0.0, 0.0));
  drag({160.0, 120.0}, {220.0, 160.0});
  drag({220.0, 160.0}, {160.0, 120.0});
  EXPECT_TRUE(key(keyCode::returnKey));
  EXPECT_EQ(content(), box);
  EXPECT_TRUE(layer->texture.value()->equals(*before));
}

TEST_F(FreeTransformToolTest, ACornerThroughItsAnchorMirrorsThePicture) {
  selectRect(*document, {100, 80, 30, 40});
  document->fillSelection({1.0F, 0.0F, 0.0F, 1.0F});
  writableSelection(*document).clear(document->context());
  open();
  canvas.modifiers = modifier::shift;
  drag({160.0, 120.0}, {40.0, 120.0});
  EXPECT_TRUE(key(keyCode::returnKey));
  EXPECT_EQ(content(), (PixelRect{40, 80, 60, 40}));
  EXPECT_EQ(layer->texture.value()->pixelAt(90, 100) & 0xFFFFFFU, 0x0000FFU);
  EXPECT_NE(layer->texture.value()->pixelAt(50, 100) & 0xFFFFFFU, 0x0000FFU);
}

TEST_F(FreeTransformToolTest, ATurnedBoxIsScaledAlongItsOwnAxes) {
  open();
  canvas.modifiers = modifier::shift;
  // A quarter turn clockwise: the box's right side is below.
  drag({160.0, 69.0}, {161.0, 130.0});
  expectCorners({QPointF(150, 70), QPointF(150, 130), QPointF(110, 130), QPointF(110, 70)});
  drag({130.0, 130.0}, {130.0, 160.0});
  expectCorners({QPointF(150, 70), QPointF(150, 160), QPointF(110, 160), QPointF(110, 70)});
}

TEST_F(FreeTransformToolTest, ShiftTurnsInStepsOfFifteenDegrees) {
  open();
  canvas.modifiers = modifier::shift;
  drag({160.0, 69.0}, {175.0, 80.0});
  const QPointF side = overlay().corners->at(1) - overlay().corners->at(0);
  const double degrees = std::atan2(side.y(), side.x()) * 180.0 / std::numbers::pi;
  EXPECT_NEAR(std::remainder(degrees, 15.0), 0.0, 1e-9);
  EXPECT_GT(degrees, 1.0);
}

TEST_F(FreeTransformToolTest, ShiftActsAtOnceDuringADrag) {
  open();
  handler.mouseDown({}, canvas.context(), {160.0, 120.0});
  handler.mouseDragged({}, canvas.context(), {220.0, 140.0});
  expectCorners({QPointF(100, 80), QPointF(205, 80), QPointF(205, 150), QPointF(100, 150)});
  canvas.modifiers = modifier::shift;
  handler.flagsChanged({.modifiers = modifier::shift, .characters = {}}, canvas.context());
  expectCorners({QPointF(100, 80), QPointF(220, 80), QPointF(220, 140), QPointF(100, 140)});
}

TEST_F(FreeTransformToolTest, ThePointerShowsWhatADragWouldDo) {
  open();
  const std::vector<std::pair<QPointF, CursorShape>> places{{{100.0, 86.0}, CursorShape::arrow},
                                                            {{100.0, 65.0}, CursorShape::rotate},
                                                            {{100.0, 64.9}, CursorShape::arrow},
                                                            {middle, CursorShape::move}};
  for (const auto& [place, shape] : places) {
    handler.mouseMoved({}, canvas.context(), place);
    EXPECT_EQ(canvas.cursors.back(), shape);
  }
  const std::size_t shown = canvas.cursors.size();
  EXPECT_TRUE(key(keyCode::escape));
  handler.mouseMoved({}, canvas.context(), middle);
  EXPECT_EQ(canvas.cursors.size(), shown);
}

TEST_F(FreeTransformToolTest, AMissBeginsNoDrag) {
  open();
  drag({20.0, 20.0}, {90.0, 90.0});
  expectCorners({QPointF(100, 80), QPointF(160, 80), QPointF(160, 120), QPointF(100, 120)});
}

TEST_F(FreeTransformToolTest, UndoTakesTheTransformBackAndLeavesTheTool) {
  open();
  drag(middle, middle + QPointF(20.0, 10.0));
  document->undo();
  EXPECT_TRUE(layer->texture.value()->equals(*before));
  EXPECT_FALSE(handler.isOpen());
  EXPECT_EQ(overlay().corners, std::nullopt);
  EXPECT_EQ(tools.currentTool(), Tool::move);
  drag(middle, middle + QPointF(20.0, 10.0));
  EXPECT_TRUE(layer->texture.value()->equals(*before));
}

TEST_F(FreeTransformToolTest, EndedWithoutADragItGivesUpItsTool) {
  open();
  document->endOpenEdits();
  EXPECT_FALSE(handler.isOpen());
  EXPECT_EQ(overlay().corners, std::nullopt);
  EXPECT_EQ(tools.currentTool(), Tool::move);
  EXPECT_EQ(newRecords(), 0);
}

TEST_F(FreeTransformToolTest, TheEndOfTheDocumentEndsTheTransform) {
  open();
  document = nullptr;
  layer = nullptr;
  canvas.document.reset();
  EXPECT_FALSE(handler.isOpen());
  handler.cancel(canvas.context());
  EXPECT_EQ(overlay().corners, std::nullopt);
}

TEST_F(FreeTransformToolTest, TheMaskIsTransformedIfItIsSelected) {
  const std::shared_ptr<LayerMask> mask = addMask(*layer);
  document->context().fillRectMask(writable(mask->maskTexture->texture), {20, 20, 40, 40}, 0.0F);
  document->setMaskSelected(layer->id, true);
  open();
  drag({40.0, 40.0}, {45.0, 41.0});
  EXPECT_TRUE(key(keyCode::returnKey));
  EXPECT_EQ(document->context().selectionBounds(*layer->mask.value()->maskTexture->texture),
            (PixelRect{25, 21, 40, 40}));
  EXPECT_TRUE(layer->texture.value()->equals(*before));
}

}  // namespace
}  // namespace orvanel
