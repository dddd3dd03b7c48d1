// Drawing freehand outlines and polygons.
#include <gmock/gmock.h>

#include "tools/selection/LassoSelectToolHandler.h"
#include "tools/selection/PolyLassoSelectToolHandler.h"
#include "tools/selection/SelectionToolFixture.h"

namespace orvanel {
namespace {

using namespace test;
using testing::ElementsAre;
using testing::Optional;

class LassoSelectTool : public SelectionToolFixture {
 protected:
  LassoSelectToolHandler handler{state};
  ToolInHand hand{handler, canvas};
};

TEST_F(LassoSelectTool, SelectsWhatThePointerDrawsAround) {
  hand.press({4, 4});
  for (const QPointF point : {QPointF(14, 4), {14, 12}, {4, 12}}) hand.drag(point);
  hand.release({4, 12});
  EXPECT_EQ(bounds(), (PixelRect{4, 4, 10, 8}));
  EXPECT_EQ(valueAt(9, 8), 1.0F);
  EXPECT_EQ(undoName(), "Lasso Select");
  expectIdle();
}

TEST_F(LassoSelectTool, NeedsEveryPositionOfThePointer) {
  EXPECT_TRUE(handler.needsEveryPosition());
}

TEST_F(LassoSelectTool, KeepsPointsTwoDocumentPixelsApart) {
  hand.press({4, 4});
  hand.drag({6.9, 4});
  EXPECT_EQ(handler.lassoPoints().size(), 1U) << "below the threshold";
  hand.drag({7, 4});
  hand.drag({8.99, 4});
  hand.drag({9, 4});
  hand.drag({9, 5.9});
  hand.drag({10, 5.8});
  EXPECT_THAT(handler.lassoPoints(),
              ElementsAre(QPointF(4, 4), QPointF(7, 4), QPointF(9, 4), QPointF(10, 5.8)));
}

TEST_F(LassoSelectTool, ThinsOutInDocumentPixelsAtEveryZoom) {
  canvas.zoom = 10.0;
  hand.press({40, 40});
  hand.drag({59, 40});
  EXPECT_EQ(handler.lassoPoints().size(), 1U);
  hand.drag({60, 40});
  EXPECT_EQ(handler.lassoPoints().size(), 2U);
}

TEST_F(LassoSelectTool, TwoPointsAreAClick) {
  selectRect({20, 20, 5, 5});
  hand.dragFromTo({4, 4}, {10, 10});
  EXPECT_EQ(bounds(), std::nullopt);
  EXPECT_EQ(records(), 2U);
}

TEST_F(LassoSelectTool, AnOutlineThatCoversNoPixelLeavesTheSelectionAndNoRecord) {
  selectRect({20, 20, 5, 5});
  for (const std::uint32_t modifiers : {0U, modifier::shift, modifier::option}) {
    canvas.modifiers = modifiers;
    hand.press({-10, 4});
    for (const QPointF point : {QPointF(-30, 14), {-20, 24}, {-10, 28}}) hand.drag(point);
    hand.release({-10, 28});
    EXPECT_EQ(bounds(), (PixelRect{20, 20, 5, 5}));
    EXPECT_EQ(records(), 1U);
    expectIdle();
  }
}

TEST_F(LassoSelectTool, PointsStayWithinTheCanvas) {
  hand.press({30, 20});
  for (const QPointF point : {QPointF(90, 20), {90, 90}, {30, 90}}) hand.drag(point);
  hand.release({30, 90});
  EXPECT_EQ(bounds(), (PixelRect{30, 20, 10, 10}));
}

TEST_F(LassoSelectTool, ShowsItsOutline) {
  canvas.zoom = 2.0;
  canvas.imageOrigin = {10, 20};
  hand.press({14, 24});
  hand.drag({34, 24});
  EXPECT_THAT(overlay().lassoPoints, ElementsAre(QPointF(2, 2), QPointF(12, 2)));
  hand.release({34, 24});
  expectIdle();
}

TEST_F(LassoSelectTool, TheSpaceBarMovesTheOutline) {
  hand.press({4, 4});
  hand.drag({14, 4});
  hand.drag({14, 12});
  EXPECT_TRUE(hand.keyDown(keyCode::space));
  hand.drag({17, 14});
  EXPECT_THAT(handler.lassoPoints(), ElementsAre(QPointF(7, 6), QPointF(17, 6), QPointF(17, 14)));
}

TEST_F(LassoSelectTool, CombinesWithTheSelection) {
  selectRect({0, 0, 20, 20});
  canvas.modifiers = modifier::option;
  hand.press({0, 0});
  for (const QPointF point : {QPointF(20, 0), {20, 10}, {0, 10}}) hand.drag(point);
  hand.release({0, 10});
  EXPECT_EQ(bounds(), (PixelRect{0, 10, 20, 10}));
}

TEST_F(LassoSelectTool, EscapeDropsTheOutline) {
  selectRect({20, 20, 5, 5});
  hand.press({4, 4});
  for (const QPointF point : {QPointF(14, 4), {14, 12}, {4, 12}}) hand.drag(point);
  EXPECT_TRUE(hand.keyDown(keyCode::escape));
  expectIdle();
  hand.release({4, 12});
  EXPECT_EQ(bounds(), (PixelRect{20, 20, 5, 5}));
  EXPECT_EQ(records(), 1U);
}

TEST_F(LassoSelectTool, AChangeOfToolDropsTheOutline) {
  hand.press({4, 4});
  for (const QPointF point : {QPointF(14, 4), {14, 12}, {4, 12}}) hand.drag(point);
  hand.changeTool();
  expectIdle();
  hand.release({4, 12});
  EXPECT_EQ(records(), 0U);
}

class PolyLassoSelectTool : public SelectionToolFixture {
 protected:
  void clickAll(std::initializer_list<QPointF> points) {
    for (const QPointF point : points) hand.click(point);
  }

  PolyLassoSelectToolHandler handler{state};
  ToolInHand hand{handler, canvas};
};

TEST_F(PolyLassoSelectTool, AClickNearTheFirstCornerCloses) {
  clickAll({{2, 2}, {32, 2}, {32, 22}, {2, 22}});
  EXPECT_EQ(records(), 0U);
  hand.click({2 + 9.9, 2});
  EXPECT_EQ(bounds(), (PixelRect{2, 2, 30, 20}));
  EXPECT_EQ(undoName(), "Polygonal Lasso Select");
  EXPECT_TRUE(handler.polyPoints().empty());
  expectIdle();
}

TEST_F(PolyLassoSelectTool, TenViewUnitsAwayAddsACorner) {
  clickAll({{2, 2}, {32, 2}, {32, 22}, {12, 2}});
  EXPECT_EQ(handler.polyPoints().size(), 4U);
  EXPECT_EQ(records(), 0U);
}

TEST_F(PolyLassoSelectTool, TheRingAroundTheFirstCornerIsInViewUnits) {
  canvas.zoom = 4.0;
  clickAll({{8, 8}, {80, 8}, {80, 60}});
  hand.click({8, 8 + 10});
  EXPECT_EQ(handler.polyPoints().size(), 4U);
  hand.click({8, 8 + 9.9});
  EXPECT_TRUE(handler.polyPoints().empty());
  EXPECT_TRUE(bounds().has_value());
}

TEST_F(PolyLassoSelectTool, ADoubleClickClosesWithoutItsOwnCorner) {
  clickAll({{2, 2}, {32, 2}, {32, 22}});
  hand.click({2, 22}, 2);
  EXPECT_EQ(bounds(), (PixelRect{2, 2, 30, 20}));
  EXPECT_LT(valueAt(5, 20), 0.5F) << "only the triangle is selected";
}

TEST_F(PolyLassoSelectTool, TwoCornersOrFewerSelectNothing) {
  selectRect({20, 20, 5, 5});
  clickAll({{2, 2}, {12, 2}});
  hand.click({12, 2}, 2);
  EXPECT_EQ(bounds(), (PixelRect{20, 20, 5, 5}));
  EXPECT_EQ(records(), 1U);
  EXPECT_TRUE(handler.polyPoints().empty());
  expectIdle();
}

TEST_F(PolyLassoSelectTool, ACornerMayLieWithinTheSelection) {
  selectRect({10, 10, 10, 10});
  clickAll({{0, 0}, {15, 15}});
  EXPECT_FALSE(state->isMoving());
  EXPECT_EQ(handler.polyPoints().size(), 2U);
}

TEST_F(PolyLassoSelectTool, AFirstPressInsideTheSelectionMovesIt) {
  selectRect({10, 10, 10, 10});
  hand.dragFromTo({15, 15}, {17, 15});
  EXPECT_EQ(bounds(), (PixelRect{12, 10, 10, 10}));
  EXPECT_EQ(undoName(), "Move Selection");
  EXPECT_TRUE(handler.polyPoints().empty());
}

TEST_F(PolyLassoSelectTool, ModifiersAtTheClosingClickChooseTheMode) {
  selectRect({0, 0, 20, 20});
  canvas.modifiers = modifier::shift;
  hand.click({0, 10});
  canvas.modifiers = 0;
  clickAll({{40, 10}, {40, 30}, {0, 30}});
  canvas.modifiers = modifier::option;
  hand.click({0, 10});
  EXPECT_EQ(bounds(), (PixelRect{0, 0, 20, 10}));
}

TEST_F(PolyLassoSelectTool, ARubberBandFollowsThePointer) {
  hand.press({2, 2});
  hand.release({2, 2});
  hand.hover({9, 5});
  EXPECT_THAT(overlay().lassoPoints, ElementsAre(QPointF(2, 2)));
  EXPECT_THAT(overlay().lassoScreenPoints, Optional(ElementsAre(QPointF(9, 5))));
  hand.press({20, 2});
  hand.drag({24, 8});
  EXPECT_THAT(overlay().lassoPoints, ElementsAre(QPointF(2, 2), QPointF(20, 2)));
  EXPECT_THAT(overlay().lassoScreenPoints, Optional(ElementsAre(QPointF(24, 8))));
}

TEST_F(PolyLassoSelectTool, EscapeCancels) {
  selectRect({20, 20, 5, 5});
  clickAll({{2, 2}, {12, 2}, {12, 12}});
  EXPECT_TRUE(hand.keyDown(keyCode::escape));
  EXPECT_TRUE(handler.polyPoints().empty());
  expectIdle();
  EXPECT_EQ(bounds(), (PixelRect{20, 20, 5, 5}));
  EXPECT_EQ(records(), 1U);
  EXPECT_FALSE(hand.keyDown(keyCode::escape)) << "nothing to cancel any more";
}

TEST_F(PolyLassoSelectTool, BackspaceAndDeleteRemoveTheLastCorner) {
  clickAll({{2, 2}, {32, 2}, {32, 22}});
  hand.hover({30, 25});
  EXPECT_TRUE(hand.keyDown(keyCode::backspace));
  EXPECT_THAT(overlay().lassoPoints, ElementsAre(QPointF(2, 2), QPointF(32, 2)));
  EXPECT_THAT(overlay().lassoScreenPoints, Optional(ElementsAre(QPointF(30, 25))));
  EXPECT_TRUE(hand.keyDown(keyCode::forwardDelete));
  EXPECT_EQ(handler.polyPoints().size(), 1U);
  EXPECT_TRUE(hand.keyDown(keyCode::backspace));
  EXPECT_TRUE(handler.polyPoints().empty()) << "without corners it is cancelled";
  expectIdle();
  EXPECT_EQ(records(), 0U);
  EXPECT_FALSE(hand.keyDown(keyCode::backspace));
}

TEST_F(PolyLassoSelectTool, ConsumesTheSpaceBarAndLeavesOtherKeys) {
  EXPECT_FALSE(hand.keyDown(keyCode::space));
  hand.click({2, 2});
  EXPECT_TRUE(hand.keyDown(keyCode::space));
  EXPECT_FALSE(hand.keyDown(keyCode::returnKey));
  EXPECT_FALSE(hand.keyDown(keyCode::tab));
}

TEST_F(PolyLassoSelectTool, AChangeOfToolCancels) {
  clickAll({{2, 2}, {32, 2}, {32, 22}});
  hand.changeTool();
  EXPECT_TRUE(handler.polyPoints().empty());
  expectIdle();
  EXPECT_EQ(records(), 0U);
}

TEST_F(PolyLassoSelectTool, ACommandThatEndsItLeavesNothingOpen) {
  clickAll({{2, 2}, {32, 2}, {32, 22}});
  document->selectAll();
  expectIdle();
  EXPECT_FALSE(hand.keyDown(keyCode::escape));
  document->deselect();
  clickAll({{5, 5}, {25, 5}, {25, 25}});
  EXPECT_EQ(handler.polyPoints().size(), 3U) << "a new polygon";
  hand.click({5, 5});
  EXPECT_EQ(bounds(), (PixelRect{5, 5, 20, 20}));
}

TEST_F(PolyLassoSelectTool, EndedWithoutAChangeItIsNoLongerDrawn) {
  clickAll({{2, 2}, {32, 2}, {32, 22}});
  const int redraws = canvas.redraws;
  document->endOpenEdits();
  expectIdle();
  EXPECT_GT(canvas.redraws, redraws);
  EXPECT_EQ(records(), 0U);
}

TEST_F(PolyLassoSelectTool, AnotherDocumentCancels) {
  clickAll({{2, 2}, {32, 2}, {32, 22}});
  canvas.document = makeDocument();
  hand.hover({5, 5});
  expectIdle();
  EXPECT_FALSE(hand.keyDown(keyCode::escape));
}

}  // namespace
}  // namespace orvanel
