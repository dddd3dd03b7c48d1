// The move tool: what it hits, what each handle does, and which records it leaves.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QCoreApplication>
#include <numbers>

#include "model/PixelSupport.h"
#include "tools/FakeCanvas.h"
#include "tools/transform/MoveToolHandler.h"

namespace orvanel {
namespace {

using namespace test;

class MoveToolTest : public testing::Test {
 protected:
  MoveToolTest() {
    document->addLayer(QStringLiteral("Box"));
    fill(box, *document);
    layer = document->activeLayer();
    before = *layer->texture.value();
    records = recordCount(*document);
    move.toolActivated(canvas.context());
  }
  static void fill(const PixelRect& rect, Document& document) {
    selectRect(document, rect);
    document.fillSelection({0.2F, 0.5F, 0.8F, 1.0F});
    writableSelection(document).clear(document.context());
  }
  [[nodiscard]] std::optional<PixelRect> content() const {
    return document->context().layerContentBounds(*layer->texture.value(), document->colorMode.value(),
                                                  false);
  }
  [[nodiscard]] static MoveToolOverlayLayer::Box floats(const PixelRect& rect) {
    return {static_cast<float>(rect.x), static_cast<float>(rect.y), static_cast<float>(rect.width),
            static_cast<float>(rect.height)};
  }
  [[nodiscard]] const MoveToolOverlayLayer& overlay() const {
    return dynamic_cast<const MoveToolOverlayLayer&>(*move.overlayLayer());
  }
  void press(QPointF at) { move.mouseDown({}, canvas.context(), at); }
  void drag(QPointF to) { move.mouseDragged({}, canvas.context(), to); }
  void release() { move.mouseUp({}, canvas.context(), {}); }
  void dragOnce(QPointF from, QPointF to) {
    press(from);
    drag(to);
    release();
  }
  bool key(int code, std::uint32_t modifiers = 0) {
    return move.keyDown({.modifiers = modifiers, .key = code, .characters = {}}, canvas.context());
  }
  [[nodiscard]] std::int64_t newRecords() const { return recordCount(*document) - records; }

  static constexpr PixelRect box{100, 80, 60, 40};
  static constexpr QPointF middle{130.0, 100.0};
  DocumentPtr document = makeDocument(300, 200);
  std::shared_ptr<Layer> layer;
  std::optional<Surface> before;
  std::int64_t records = 0;
  FakeCanvas canvas{document};
  MoveToolHandler move{MetalContext::shared()};
};

TEST_F(MoveToolTest, ShowsTheBoxOfTheContentWhileItIsSelected) {
  EXPECT_EQ(overlay().moveToolRect, floats(box));
  move.toolDeactivated(canvas.context());
  EXPECT_EQ(overlay().moveToolRect, std::nullopt);
}

TEST_F(MoveToolTest, PressingChangesNothingUntilThePointerMoves) {
  press(middle);
  EXPECT_TRUE(layer->texture.value()->equals(*before));
  EXPECT_EQ(newRecords(), 0);
}

TEST_F(MoveToolTest, ReleasingWithoutMovingLeavesARecordNamedByTheHandle) {
  const std::vector<std::pair<QPointF, const char*>> places{
      {middle, "Move"}, {{100.0, 80.0}, "Scale"}, {{130.0, 126.0}, "Scale"}, {{160.0, 69.0}, "Rotate"}};
  for (const auto& [place, name] : places) {
    press(place);
    release();
    EXPECT_EQ(document->undoStack.undoActionName(), name);
  }
  EXPECT_EQ(newRecords(), 4);
  EXPECT_TRUE(layer->texture.value()->equals(*before));
  EXPECT_TRUE(document->isDirty.value());
}

TEST_F(MoveToolTest, MovesByWholePixelsRoundedAwayFromZero) {
  press(middle);
  drag(middle + QPointF(7.5, -3.5));
  EXPECT_EQ(move.contentRect(), (PixelRect{108, 76, 60, 40}));
  EXPECT_EQ(overlay().moveToolRect, floats({108, 76, 60, 40}));
  release();
  EXPECT_EQ(content(), (PixelRect{108, 76, 60, 40}));
  EXPECT_EQ(newRecords(), 1);
  document->undo();
  EXPECT_TRUE(layer->texture.value()->equals(*before));
}

TEST_F(MoveToolTest, MovementsBelowOnePixelDoNothing) {
  press(middle);
  const ChangeRecorder changes(*document);
  drag(middle + QPointF(0.4, -0.4));
  EXPECT_EQ(changes.batches, 0);
  drag(middle + QPointF(0.6, 0.0));
  const int batches = changes.batches;
  drag(middle + QPointF(1.4, 0.2));
  EXPECT_EQ(changes.batches, batches);
}

TEST_F(MoveToolTest, DistancesAreMeasuredInTheViewAndMovementsInTheDocument) {
  document->setZoom(2.0);
  canvas.imageOrigin = {10.0, 5.0};
  // The bottom right corner is at (330, 245) in the view.
  const auto hover = [&](QPointF at) {
    move.mouseMoved({}, canvas.context(), at);
    return canvas.cursors.back();
  };
  EXPECT_EQ(hover({330.0, 260.0}), CursorShape::rotate);
  EXPECT_EQ(hover({330.0, 251.0}), CursorShape::arrow);
  EXPECT_EQ(hover({330.0, 260.1}), CursorShape::arrow);
  dragOnce({270.0, 205.0}, {290.0, 205.0});
  EXPECT_EQ(content(), (PixelRect{110, 80, 60, 40}));
}

TEST_F(MoveToolTest, ThePointerShowsWhatADragWouldDo) {
  const std::vector<std::pair<QPointF, CursorShape>> places{
      {{100.0, 80.0}, CursorShape::arrow},  {{106.0, 80.0}, CursorShape::arrow},
      {{100.0, 72.0}, CursorShape::rotate}, {{85.0, 80.0}, CursorShape::rotate},
      {{115.0, 80.0}, CursorShape::rotate}, {middle, CursorShape::move},
      {{10.0, 10.0}, CursorShape::arrow}};
  for (const auto& [place, shape] : places) {
    move.mouseMoved({}, canvas.context(), place);
    EXPECT_EQ(canvas.cursors.back(), shape);
    EXPECT_EQ(move.cursor(0, canvas.context()), shape);
  }
}

TEST_F(MoveToolTest, WithoutABoxThePointerIsLeftAlone) {
  document->addLayer(QStringLiteral("Empty"));
  move.updateBox(canvas.context());
  move.mouseMoved({}, canvas.context(), middle);
  EXPECT_TRUE(canvas.cursors.empty());
}

TEST_F(MoveToolTest, ACornerKeepsTheProportionsAndShiftFreesThem) {
  press({160.0, 120.0});
  drag({220.0, 140.0});
  EXPECT_EQ(move.contentRect(), (PixelRect{100, 80, 90, 60}));
  canvas.modifiers = modifier::shift;
  drag({220.0, 140.0});
  EXPECT_EQ(move.contentRect(), (PixelRect{100, 80, 120, 60}));
  release();
  EXPECT_EQ(content(), (PixelRect{100, 80, 120, 60}));
}

TEST_F(MoveToolTest, ShiftActsAtOnceDuringADrag) {
  press({160.0, 120.0});
  drag({220.0, 140.0});
  canvas.modifiers = modifier::shift;
  move.flagsChanged({.modifiers = modifier::shift, .characters = {}}, canvas.context());
  EXPECT_EQ(move.contentRect(), (PixelRect{100, 80, 120, 60}));
}

TEST_F(MoveToolTest, ACornerPastItsAnchorLeavesThePictureUnmirrored) {
  // The left half of the content is red.
  selectRect(*document, {100, 80, 30, 40});
  document->fillSelection({1.0F, 0.0F, 0.0F, 1.0F});
  writableSelection(*document).clear(document->context());
  canvas.modifiers = modifier::shift;
  dragOnce({160.0, 120.0}, {40.0, 40.0});
  EXPECT_EQ(content(), (PixelRect{40, 40, 60, 40}));
  EXPECT_EQ(layer->texture.value()->pixelAt(50, 60) & 0xFFFFFFU, 0x0000FFU);
  EXPECT_NE(layer->texture.value()->pixelAt(90, 60) & 0xFFFFFFU, 0x0000FFU);
}

TEST_F(MoveToolTest, AScaleNeverGoesBelowOnePixel) {
  dragOnce({160.0, 120.0}, {100.0, 80.0});
  EXPECT_EQ(content(), (PixelRect{99, 79, 1, 1}));
}

TEST_F(MoveToolTest, ASideScalesAboutItsCentreLineAndWithShiftAlone) {
  press({160.0, 100.0});
  drag({220.0, 100.0});
  EXPECT_EQ(move.contentRect(), (PixelRect{100, 60, 120, 80}));
  canvas.modifiers = modifier::shift;
  drag({220.0, 100.0});
  EXPECT_EQ(move.contentRect(), (PixelRect{100, 80, 120, 40}));
}

TEST_F(MoveToolTest, ManyStepsOfADragEqualTheLastOne) {
  dragOnce({160.0, 120.0}, {190.0, 140.0});
  const Surface once = *layer->texture.value();
  document->undo();
  press({160.0, 120.0});
  for (int i = 0; i < 20; ++i) drag({100.0 + i, 200.0 - 7 * i});
  drag({190.0, 140.0});
  release();
  EXPECT_TRUE(layer->texture.value()->equals(once));
}

TEST_F(MoveToolTest, TheBoxTurnsWithTheContentAndIsFoundAgainAfterwards) {
  press({160.0, 69.0});
  // A quarter turn clockwise about (130, 100).
  drag({161.0, 130.0});
  EXPECT_FLOAT_EQ(overlay().moveToolRotation, std::numbers::pi_v<float> / 2.0F);
  EXPECT_EQ(overlay().moveToolRect, floats(box));
  release();
  EXPECT_EQ(overlay().moveToolRotation, 0.0F);
  const PixelRect turned = content().value();
  EXPECT_EQ(overlay().moveToolRect, floats(turned));
  EXPECT_NEAR(turned.width, 40, 2);
  EXPECT_NEAR(turned.height, 60, 2);
  EXPECT_EQ(document->undoStack.undoActionName(), "Rotate");
}

TEST_F(MoveToolTest, ShiftTurnsInStepsOfFifteenDegreesFromTheStart) {
  canvas.modifiers = modifier::shift;
  press({160.0, 69.0});
  for (const QPointF& place : {QPointF(170.0, 90.0), QPointF(160.0, 140.0), QPointF(90.0, 60.0)}) {
    drag(place);
    const float steps = overlay().moveToolRotation / 0.2617994F;
    EXPECT_EQ(steps, std::round(steps));
  }
}

TEST_F(MoveToolTest, AMissDoesNothing) {
  dragOnce({20.0, 20.0}, {60.0, 60.0});
  EXPECT_EQ(newRecords(), 0);
  EXPECT_TRUE(layer->texture.value()->equals(*before));
}

TEST_F(MoveToolTest, AClickOnContentThatIsNewFindsIt) {
  fill({10, 10, 20, 20}, *document);
  dragOnce({40.0, 40.0}, {45.0, 43.0});
  EXPECT_EQ(content(), (PixelRect{15, 13, 150, 110}));
}

TEST_F(MoveToolTest, LockedLayersFoldersAndEmptyLayersAreLeftAlone) {
  document->setLocked(layer->id, true);
  const std::int64_t count = recordCount(*document);
  dragOnce(middle, middle + QPointF(9.0, 9.0));
  EXPECT_EQ(recordCount(*document), count);
  document->addLayer(QStringLiteral("Empty"));
  dragOnce(middle, middle + QPointF(9.0, 9.0));
  EXPECT_EQ(overlay().moveToolRect, std::nullopt);
  document->addFolder(QStringLiteral("Folder"));
  dragOnce(middle, middle + QPointF(9.0, 9.0));
  EXPECT_EQ(recordCount(*document), count + 2);
}

TEST_F(MoveToolTest, TheMaskMovesIfItIsSelected) {
  const std::shared_ptr<LayerMask> mask = addMask(*layer);
  document->context().fillRectMask(writable(mask->maskTexture->texture), {20, 20, 40, 40}, 0.0F);
  document->setMaskSelected(layer->id, true);
  move.updateBox(canvas.context());
  EXPECT_EQ(overlay().moveToolRect, floats({20, 20, 40, 40}));
  dragOnce({40.0, 40.0}, {45.0, 41.0});
  EXPECT_EQ(document->context().selectionBounds(*layer->mask.value()->maskTexture->texture),
            (PixelRect{25, 21, 40, 40}));
  EXPECT_TRUE(layer->texture.value()->equals(*before));
}

TEST_F(MoveToolTest, AnEditEndedByTheDocumentLeavesTheToolIdle) {
  press(middle);
  drag(middle + QPointF(20.0, 0.0));
  document->undo();
  EXPECT_TRUE(layer->texture.value()->equals(*before));
  drag(middle + QPointF(40.0, 0.0));
  release();
  EXPECT_TRUE(layer->texture.value()->equals(*before));
  EXPECT_EQ(newRecords(), 0);
  EXPECT_EQ(overlay().moveToolRect, floats(box));
}

TEST_F(MoveToolTest, ACropUnderADragKeepsItAndLeavesTheToolIdle) {
  press(middle);
  drag(middle + QPointF(20.0, 0.0));
  document->crop({100, 60, 120, 100}, QStringLiteral("Crop"));
  drag(middle);
  release();
  EXPECT_EQ(newRecords(), 2);
  EXPECT_EQ(content(), (PixelRect{20, 20, 60, 40}));
  EXPECT_EQ(overlay().moveToolRect, floats({20, 20, 60, 40}));
}

TEST_F(MoveToolTest, AChangeOfToolEndsTheDragAsReleasingDoes) {
  press(middle);
  drag(middle + QPointF(20.0, 0.0));
  move.toolDeactivated(canvas.context());
  EXPECT_EQ(newRecords(), 1);
  EXPECT_EQ(content(), (PixelRect{120, 80, 60, 40}));
}

TEST_F(MoveToolTest, EscapeTakesARunningDragBack) {
  press(middle);
  drag(middle + QPointF(20.0, 0.0));
  EXPECT_TRUE(key(keyCode::escape));
  release();
  EXPECT_EQ(newRecords(), 0);
  EXPECT_TRUE(layer->texture.value()->equals(*before));
  EXPECT_EQ(overlay().moveToolRect, floats(box));
  EXPECT_FALSE(key(keyCode::escape));
}

TEST_F(MoveToolTest, AnotherDocumentUnderTheDragIsLeftAlone) {
  press(middle);
  canvas.document = makeDocument(300, 200);
  drag(middle + QPointF(20.0, 0.0));
  release();
  EXPECT_TRUE(layer->texture.value()->equals(*before));
  EXPECT_EQ(recordCount(*canvas.document), 0);
}

TEST_F(MoveToolTest, WithoutADocumentNothingHappens) {
  canvas.document.reset();
  dragOnce(middle, middle + QPointF(9.0, 9.0));
  move.updateBox(canvas.context());
  EXPECT_FALSE(key(keyCode::leftArrow));
  EXPECT_EQ(overlay().moveToolRect, std::nullopt);
}

/// Timers need an application object.
class NudgeTest : public MoveToolTest {
 private:
  int argumentCount_ = 0;
  QCoreApplication application_{argumentCount_, nullptr};
};

TEST_F(NudgeTest, ArrowsMoveByOneAndWithShiftByTen) {
  EXPECT_TRUE(key(keyCode::leftArrow));
  EXPECT_EQ(overlay().moveToolRect, floats({99, 80, 60, 40}));
  EXPECT_TRUE(key(keyCode::upArrow));
  EXPECT_TRUE(key(keyCode::rightArrow, modifier::shift));
  EXPECT_TRUE(key(keyCode::downArrow, modifier::shift));
  move.toolDeactivated(canvas.context());
  EXPECT_EQ(content(), (PixelRect{109, 89, 60, 40}));
}

TEST_F(NudgeTest, OtherModifiersAreLeftToOthers) {
  EXPECT_FALSE(key(keyCode::leftArrow, modifier::option));
  EXPECT_FALSE(key(keyCode::leftArrow, modifier::command | modifier::shift));
}

TEST_F(NudgeTest, ARunOfPressesIsOneRecord) {
  for (int i = 0; i < 5; ++i) EXPECT_TRUE(key(keyCode::rightArrow));
  EXPECT_FALSE(key(keyCode::none));
  EXPECT_EQ(newRecords(), 1);
  EXPECT_EQ(document->undoStack.undoActionName(), "Move");
  EXPECT_TRUE(key(keyCode::downArrow));
  press({20.0, 20.0});
  EXPECT_EQ(newRecords(), 2);
  EXPECT_EQ(content(), (PixelRect{105, 81, 60, 40}));
}

TEST_F(NudgeTest, ACommandEndsTheRun) {
  EXPECT_TRUE(key(keyCode::rightArrow));
  document->undo();
  EXPECT_TRUE(layer->texture.value()->equals(*before));
  EXPECT_TRUE(key(keyCode::leftArrow));
  move.toolDeactivated(canvas.context());
  EXPECT_EQ(content(), (PixelRect{99, 80, 60, 40}));
  EXPECT_EQ(newRecords(), 1);
}

TEST_F(NudgeTest, AnotherLayerBeginsAnotherRun) {
  EXPECT_TRUE(key(keyCode::rightArrow));
  activate(*document, QStringLiteral("Background"));
  EXPECT_TRUE(key(keyCode::rightArrow));
  move.toolDeactivated(canvas.context());
  EXPECT_EQ(newRecords(), 2);
  EXPECT_EQ(content(), (PixelRect{101, 80, 60, 40}));
}

TEST_F(NudgeTest, APauseEndsTheRun) {
  MoveToolHandler hasty(MetalContext::shared(), std::chrono::milliseconds(1));
  EXPECT_TRUE(hasty.keyDown({.key = keyCode::rightArrow, .characters = {}}, canvas.context()));
  while (newRecords() == 0) QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
  EXPECT_EQ(hasty.contentRect(), (PixelRect{101, 80, 60, 40}));
}

TEST_F(NudgeTest, ALockedLayerDoesNotMove) {
  document->setLocked(layer->id, true);
  EXPECT_FALSE(key(keyCode::rightArrow));
}

}  // namespace
}  // namespace orvanel
