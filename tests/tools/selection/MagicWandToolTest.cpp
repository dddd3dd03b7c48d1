// Pressing and scrubbing with the wand.
#include <gmock/gmock.h>

#include "tools/selection/MagicWandToolHandler.h"
#include "tools/selection/SelectionToolFixture.h"

namespace orvanel {
namespace {

using namespace test;
using testing::ElementsAre;

/// A grey ramp: every four columns are ten 8-bit steps brighter than those to their left.
class MagicWandTool : public SelectionToolFixture {
 protected:
  MagicWandTool() { showRamp(ColorMode::rgb8); }

  void showRamp(ColorMode mode) {
    document = makeDocument(40, 30, mode);
    canvas.document = document;
    document->ensureSelection();
    for (int step = 0; step < 10; ++step) {
      const float grey = static_cast<float>(10 * step) / 255.0F;
      writableSelection(*document).setRect({4 * step, 0, 4, 30}, 0.0F, document->context());
      document->fillSelection({grey, grey, grey, 1.0F});
    }
    writableSelection(*document).clear(document->context());
    recordsBefore = records();
  }
  void setTolerance(float tolerance) {
    tools.magicWandSettings = MagicWandSettings{.tolerance = tolerance, .antialiased = false};
  }
  [[nodiscard]] float tolerance() const { return tools.magicWandSettings.value().tolerance; }

  MagicWandToolHandler handler{state, tools};
  ToolInHand hand{handler, canvas};
  std::size_t recordsBefore = 0;
};

TEST_F(MagicWandTool, SelectsAtThePress) {
  setTolerance(12.0F);
  hand.press({17, 10});
  EXPECT_EQ(bounds(), (PixelRect{12, 0, 12, 30}));
  EXPECT_EQ(records(), recordsBefore);
  hand.release({17, 10});
  EXPECT_EQ(undoName(), "Magic Wand");
  EXPECT_EQ(records(), recordsBefore + 1);
}

TEST_F(MagicWandTool, DraggingChangesTheToleranceByOneForEachViewUnit) {
  setTolerance(0.0F);
  hand.press({17, 10});
  EXPECT_EQ(bounds(), (PixelRect{16, 0, 4, 30}));
  hand.drag({17 + 7, 10 + 4});
  EXPECT_EQ(tolerance(), 11.0F);
  EXPECT_EQ(bounds(), (PixelRect{12, 0, 12, 30}));
  hand.drag({17 + 20, 10});
  EXPECT_EQ(bounds(), (PixelRect{8, 0, 20, 30}));
  hand.drag({17 + 5, 10});
  EXPECT_EQ(bounds(), (PixelRect{16, 0, 4, 30}));
  hand.release({22, 10});
  EXPECT_EQ(tolerance(), 0.0F) << "the scrub lasts as long as the gesture";
  EXPECT_EQ(records(), recordsBefore + 1);
}

TEST_F(MagicWandTool, EqualStepsRightAndUpCancelOut) {
  setTolerance(12.0F);
  hand.press({17, 15});
  hand.drag({27, 5});
  EXPECT_EQ(tolerance(), 12.0F);
  EXPECT_EQ(bounds(), (PixelRect{12, 0, 12, 30}));
}

TEST_F(MagicWandTool, TheToleranceStaysWithinItsLimits) {
  setTolerance(30.0F);
  hand.press({17, 15});
  hand.drag({17 + 2000, 15});
  EXPECT_EQ(tolerance(), 255.0F);
  hand.drag({17 - 31, 15});
  EXPECT_EQ(tolerance(), 0.0F);
  hand.drag({17 - 29, 15});
  EXPECT_EQ(tolerance(), 1.0F) << "the drag is measured from the press";
  hand.release({17 - 29, 15});
  EXPECT_EQ(tolerance(), 30.0F);
}

TEST_F(MagicWandTool, TheOptionsFollowTheScrub) {
  setTolerance(30.0F);
  std::vector<float> told;
  const auto observer = tools.magicWandSettings.onValueChanged(
      [&] { told.push_back(tools.magicWandSettings.value().tolerance); });
  hand.press({17, 15});
  hand.drag({18, 15});
  hand.drag({18, 15});
  hand.release({18, 15});
  EXPECT_THAT(told, ElementsAre(31.0F, 30.0F));
}

TEST_F(MagicWandTool, OtherSettingsChangedDuringTheScrubStay) {
  setTolerance(30.0F);
  hand.press({17, 15});
  MagicWandSettings changed = tools.magicWandSettings.value();
  changed.contiguous = false;
  tools.magicWandSettings = changed;
  hand.drag({20, 15});
  hand.release({20, 15});
  EXPECT_FALSE(tools.magicWandSettings.value().contiguous);
  EXPECT_EQ(tolerance(), 30.0F);
}

TEST_F(MagicWandTool, WithShiftEveryStepAddsToTheSelectionAtThePress) {
  selectRect({0, 0, 4, 4});
  setTolerance(0.0F);
  canvas.modifiers = modifier::shift;
  hand.press({17, 10});
  hand.drag({17 + 11, 10});
  hand.drag({17, 10});
  canvas.modifiers = 0;
  hand.drag({17, 10.5});
  hand.release({17, 10.5});
  EXPECT_EQ(bounds(), (PixelRect{0, 0, 20, 30}));
  EXPECT_EQ(valueAt(13, 10), 0.0F) << "the wider step left nothing behind";
  EXPECT_EQ(valueAt(2, 2), 1.0F);
  EXPECT_EQ(valueAt(17, 10), 1.0F);
}

TEST_F(MagicWandTool, APressInsideTheSelectionMovesIt) {
  selectRect({10, 10, 5, 5});
  hand.dragFromTo({12, 12}, {15, 12});
  EXPECT_EQ(bounds(), (PixelRect{13, 10, 5, 5}));
  EXPECT_EQ(undoName(), "Move Selection");
  EXPECT_EQ(tolerance(), 32.0F);
}

TEST_F(MagicWandTool, OutsideTheCanvasThereIsNoGesture) {
  for (const QPointF point : {QPointF(-0.5, 5), {40, 5}, {5, 30}, {5, -1}}) {
    hand.press(point);
    hand.drag(point + QPointF(10, 10));
    EXPECT_EQ(tolerance(), 32.0F);
    hand.release(point);
  }
  EXPECT_EQ(records(), recordsBefore);
  hand.click({39.9, 29.9});
  EXPECT_EQ(records(), recordsBefore + 1);
}

TEST_F(MagicWandTool, AFolderGivesNothingToSample) {
  document->addFolder(QStringLiteral("Folder"));
  recordsBefore = records();
  hand.dragFromTo({17, 10}, {27, 10});
  EXPECT_EQ(records(), recordsBefore);
  EXPECT_EQ(tolerance(), 32.0F);
}

TEST_F(MagicWandTool, ReadsTheSeedOfSixteenBitImages) {
  for (const ColorMode mode : {ColorMode::rgb16, ColorMode::grayscale16}) {
    showRamp(mode);
    setTolerance(0.0F);
    hand.click({17, 10});
    EXPECT_EQ(bounds(), (PixelRect{16, 0, 4, 30}));
    hand.click({0, 0});
    EXPECT_EQ(bounds(), (PixelRect{0, 0, 4, 30}));
  }
}

TEST_F(MagicWandTool, TheSpaceBarDuringAScrubIsConsumed) {
  EXPECT_FALSE(hand.keyDown(keyCode::space));
  hand.press({17, 10});
  EXPECT_TRUE(hand.keyDown(keyCode::space));
  EXPECT_TRUE(hand.keyUp(keyCode::space));
  EXPECT_TRUE(hand.keyDown(keyCode::space));
  hand.release({17, 10});
  EXPECT_FALSE(hand.keyUp(keyCode::space));
}

TEST_F(MagicWandTool, EscapeDuringAScrubTakesItBack) {
  selectRect({0, 0, 4, 4});
  setTolerance(0.0F);
  hand.press({17, 10});
  hand.drag({17 + 11, 10});
  EXPECT_TRUE(hand.keyDown(keyCode::escape));
  EXPECT_EQ(tolerance(), 0.0F);
  EXPECT_EQ(bounds(), (PixelRect{0, 0, 4, 4}));
  hand.drag({17 + 50, 10});
  hand.release({17 + 50, 10});
  EXPECT_EQ(bounds(), (PixelRect{0, 0, 4, 4}));
  EXPECT_EQ(records(), recordsBefore + 1);
  EXPECT_FALSE(hand.keyDown(keyCode::escape));
}

TEST_F(MagicWandTool, EscapeTakesBackAMoveAsWell) {
  selectRect({0, 0, 4, 4});
  hand.press({1, 1});
  hand.drag({9, 9});
  EXPECT_TRUE(hand.keyDown(keyCode::escape));
  EXPECT_EQ(bounds(), (PixelRect{0, 0, 4, 4}));
  EXPECT_EQ(records(), recordsBefore + 1);
}

TEST_F(MagicWandTool, AChangeOfToolKeepsTheSelectionAndRestoresTheTolerance) {
  setTolerance(0.0F);
  hand.press({17, 10});
  hand.drag({17 + 11, 10});
  hand.changeTool();
  EXPECT_EQ(tolerance(), 0.0F);
  EXPECT_EQ(bounds(), (PixelRect{12, 0, 12, 30}));
  EXPECT_EQ(undoName(), "Magic Wand");
  hand.drag({17 + 50, 10});
  hand.release({17 + 50, 10});
  EXPECT_EQ(tolerance(), 0.0F);
  EXPECT_EQ(records(), recordsBefore + 1);
}

TEST_F(MagicWandTool, UndoDuringAScrubEndsIt) {
  setTolerance(0.0F);
  hand.press({17, 10});
  hand.drag({17 + 11, 10});
  document->undo();
  EXPECT_EQ(bounds(), std::nullopt);
  hand.drag({17 + 50, 10});
  EXPECT_EQ(bounds(), std::nullopt);
  EXPECT_EQ(tolerance(), 0.0F);
  hand.release({17 + 50, 10});
  EXPECT_EQ(bounds(), std::nullopt);
}

TEST_F(MagicWandTool, AnotherDocumentEndsTheScrub) {
  setTolerance(0.0F);
  hand.press({17, 10});
  const DocumentPtr other = makeDocument();
  canvas.document = other;
  hand.drag({17 + 11, 10});
  EXPECT_EQ(tolerance(), 0.0F);
  EXPECT_EQ(other->selection.value(), nullptr);
  EXPECT_EQ(bounds(), (PixelRect{16, 0, 4, 30}));
}

}  // namespace
}  // namespace orvanel
