// Drawing rectangles and ellipses.
#include "tools/selection/EllipseSelectToolHandler.h"
#include "tools/selection/RectSelectToolHandler.h"
#include "tools/selection/SelectionToolFixture.h"

namespace orvanel {
namespace {

using namespace test;

class RectSelectTool : public SelectionToolFixture {
 protected:
  [[nodiscard]] SelectionPath::Rect drawnRect() const {
    return std::get<SelectionPath::Rect>(overlay().dragPath.value().shapeHint);
  }

  RectSelectToolHandler handler{state, tools};
  ToolInHand hand{handler, canvas};
};

TEST_F(RectSelectTool, SelectsTheWholePixelsThatTheDragTouches) {
  hand.dragFromTo({1.2, 1.2}, {4.9, 3.1});
  EXPECT_EQ(bounds(), (PixelRect{1, 1, 4, 3}));
  EXPECT_EQ(valueAt(1, 1), 1.0F);
  EXPECT_EQ(undoName(), "Rectangle Select");
  EXPECT_EQ(records(), 1U);
  expectIdle();
}

TEST_F(RectSelectTool, ExpandsToPixelEdgesAtAnyZoom) {
  canvas.zoom = 10.0;
  hand.dragFromTo({12.0, 12.0}, {31.0, 31.0});
  EXPECT_EQ(bounds(), (PixelRect{1, 1, 3, 3}));
}

TEST_F(RectSelectTool, ACornerOnAPixelEdgeAddsNoPixel) {
  canvas.zoom = 10.0;
  hand.dragFromTo({1.0, 2.0}, {30.0, 40.0});
  EXPECT_EQ(bounds(), (PixelRect{0, 0, 3, 4}));
}

TEST_F(RectSelectTool, ADragBelowThreeViewUnitsIsAClick) {
  selectRect({20, 20, 5, 5});
  hand.dragFromTo({5.0, 5.0}, {7.9, 5.0});
  EXPECT_EQ(bounds(), std::nullopt);
  EXPECT_EQ(records(), 2U);
  expectIdle();
}

TEST_F(RectSelectTool, ADragOfThreeViewUnitsDrawsAtEveryZoom) {
  for (const double zoom : {0.5, 1.0, 4.0}) {
    canvas.zoom = zoom;
    hand.dragFromTo({8.0, 8.0}, {11.0, 8.0 + zoom});
    EXPECT_TRUE(bounds().has_value()) << zoom;
    hand.click({0.0, 0.0});
    EXPECT_FALSE(bounds().has_value()) << zoom;
  }
}

TEST_F(RectSelectTool, OnceDrawnTheShapeMayShrinkBelowTheThreshold) {
  hand.press({5.0, 5.0});
  hand.drag({15.0, 15.0});
  hand.drag({6.0, 6.0});
  hand.release({6.0, 6.0});
  EXPECT_EQ(bounds(), (PixelRect{5, 5, 1, 1}));
}

TEST_F(RectSelectTool, AClickWithNothingSelectedLeavesNoRecord) {
  hand.click({5.0, 5.0});
  EXPECT_EQ(records(), 0U);
  EXPECT_EQ(document->activeSelection(), nullptr);
}

TEST_F(RectSelectTool, ARectangleWithoutAreaLeavesTheSelectionAndNoRecord) {
  selectRect({5, 5, 5, 5});
  for (const auto& [from, to] : {std::pair{QPointF(60, 5), QPointF(90, 25)}, {{12, 12}, {30, 12}}}) {
    hand.dragFromTo(from, to);
    EXPECT_EQ(bounds(), (PixelRect{5, 5, 5, 5}));
    EXPECT_EQ(records(), 1U);
    expectIdle();
  }
}

TEST_F(RectSelectTool, StaysWithinTheCanvas) {
  hand.dragFromTo({30.0, 25.0}, {300.0, 200.0});
  EXPECT_EQ(bounds(), (PixelRect{30, 25, 10, 5}));
  hand.dragFromTo({-10.0, -20.0}, {300.0, 200.0});
  EXPECT_TRUE(document->selection.value()->isFullSelection.value());
}

TEST_F(RectSelectTool, ModifiersAtTheReleaseChooseTheMode) {
  selectRect({0, 0, 10, 10});
  canvas.modifiers = modifier::shift;
  hand.dragFromTo({5, 0}, {15, 10});
  EXPECT_EQ(bounds(), (PixelRect{0, 0, 15, 10}));
  canvas.modifiers = modifier::option;
  hand.dragFromTo({10, 0}, {20, 20});
  EXPECT_EQ(bounds(), (PixelRect{0, 0, 10, 10}));
  canvas.modifiers = modifier::shift | modifier::option;
  hand.dragFromTo({4, 4}, {20, 8});
  EXPECT_EQ(bounds(), (PixelRect{4, 4, 6, 4}));
  canvas.modifiers = modifier::shift;
  hand.press({20, 20});
  hand.drag({25, 25});
  canvas.modifiers = 0;
  hand.release({25, 25});
  EXPECT_EQ(bounds(), (PixelRect{20, 20, 5, 5}));
  EXPECT_EQ(records(), 5U);
}

TEST_F(RectSelectTool, WithNothingSelectedEveryModeReplaces) {
  canvas.modifiers = modifier::option;
  hand.dragFromTo({4, 4}, {14, 14});
  EXPECT_EQ(bounds(), (PixelRect{4, 4, 10, 10}));
}

TEST_F(RectSelectTool, CommandGivesASquareOfTheLargerExtent) {
  canvas.modifiers = modifier::command;
  hand.dragFromTo({10, 10}, {14, 18});
  EXPECT_EQ(bounds(), (PixelRect{10, 10, 8, 8}));
  hand.dragFromTo({30, 25}, {24, 22});
  EXPECT_EQ(bounds(), (PixelRect{24, 19, 6, 6})) << "up and to the left";
  hand.dragFromTo({2, 2}, {2, 6});
  EXPECT_EQ(bounds(), (PixelRect{2, 2, 4, 4})) << "no difference counts as positive";
}

TEST_F(RectSelectTool, CommandPressedInMidDragActsAtOnce) {
  hand.press({10, 10});
  hand.drag({14, 18});
  EXPECT_EQ(drawnRect().size, QSizeF(4, 8));
  hand.holdModifiers(modifier::command);
  EXPECT_EQ(drawnRect().size, QSizeF(8, 8));
  hand.holdModifiers(0);
  EXPECT_EQ(drawnRect().size, QSizeF(4, 8));
}

TEST_F(RectSelectTool, ShowsItsOutlineAndSizeWhileDrawn) {
  hand.press({1.5, 2.0});
  hand.drag({3.0, 3.0});
  EXPECT_TRUE(isOverlayEmpty()) << "not yet a drag";
  EXPECT_EQ(document->dragSize.value(), std::nullopt);
  const int redraws = canvas.redraws;
  hand.drag({11.0, 7.5});
  EXPECT_EQ(drawnRect(), (SelectionPath::Rect{{1.5, 2.0}, {9.5, 5.5}}));
  EXPECT_EQ(document->dragSize.value(), (Document::DragSize{10, 6}));
  EXPECT_GT(canvas.redraws, redraws);
  hand.release({11.0, 7.5});
  expectIdle();
}

TEST_F(RectSelectTool, TheSpaceBarMovesTheShape) {
  hand.press({10, 10});
  EXPECT_TRUE(hand.keyDown(keyCode::space));
  hand.drag({10, 12});
  EXPECT_TRUE(isOverlayEmpty()) << "the threshold comes first";
  EXPECT_TRUE(hand.keyUp(keyCode::space));
  hand.drag({16, 14});
  EXPECT_TRUE(hand.keyDown(keyCode::space));
  hand.drag({18, 17});
  EXPECT_EQ(drawnRect(), (SelectionPath::Rect{{12, 13}, {6, 4}}));
  EXPECT_TRUE(hand.keyUp(keyCode::space));
  hand.drag({20, 20});
  hand.release({20, 20});
  EXPECT_EQ(bounds(), (PixelRect{12, 13, 8, 7}));
}

TEST_F(RectSelectTool, AShapeMovedBeyondTheEdgeIsClippedWhenItIsSelected) {
  hand.press({10, 10});
  hand.drag({20, 20});
  static_cast<void>(hand.keyDown(keyCode::space));
  hand.drag({45, 0});
  EXPECT_EQ(drawnRect(), (SelectionPath::Rect{{35, -10}, {10, 10}}));
  hand.drag({43, 5});
  hand.release({43, 5});
  EXPECT_EQ(bounds(), (PixelRect{33, 0, 7, 5}));
}

TEST_F(RectSelectTool, TheSpaceBarIsItsOnlyDuringAGesture) {
  EXPECT_FALSE(hand.keyDown(keyCode::space));
  EXPECT_FALSE(hand.keyUp(keyCode::space));
  hand.press({10, 10});
  EXPECT_TRUE(hand.keyDown(keyCode::space));
  hand.drag({20, 20});
  hand.release({20, 20});
  EXPECT_FALSE(hand.keyUp(keyCode::space)) << "released after the gesture";
  hand.press({25, 25});
  hand.drag({30, 29});
  hand.release({30, 29});
  EXPECT_EQ(bounds(), (PixelRect{25, 25, 5, 4})) << "the next shape doesn't move";
}

TEST_F(RectSelectTool, EscapeInMidDragDropsTheShape) {
  selectRect({0, 0, 5, 5});
  EXPECT_FALSE(hand.keyDown(keyCode::escape)) << "nothing to drop";
  hand.press({10, 10});
  hand.drag({20, 20});
  EXPECT_TRUE(hand.keyDown(keyCode::escape));
  expectIdle();
  EXPECT_FALSE(hand.keyDown(keyCode::escape)) << "nothing to drop any more";
  hand.drag({25, 25});
  hand.release({25, 25});
  expectIdle();
  EXPECT_EQ(bounds(), (PixelRect{0, 0, 5, 5}));
  EXPECT_EQ(records(), 1U);
}

TEST_F(RectSelectTool, TheKeysThatDeleteDoNothingInMidDrag) {
  EXPECT_FALSE(hand.keyDown(keyCode::backspace));
  EXPECT_FALSE(hand.keyDown(keyCode::forwardDelete));
  hand.press({10, 10});
  hand.drag({20, 20});
  EXPECT_TRUE(hand.keyDown(keyCode::backspace));
  EXPECT_TRUE(hand.keyDown(keyCode::forwardDelete));
  EXPECT_FALSE(hand.keyDown(keyCode::tab));
  hand.release({20, 20});
  EXPECT_EQ(bounds(), (PixelRect{10, 10, 10, 10}));
}

TEST_F(RectSelectTool, AChangeOfToolDropsTheShape) {
  selectRect({0, 0, 5, 5});
  hand.press({10, 10});
  hand.drag({20, 20});
  hand.changeTool();
  expectIdle();
  EXPECT_EQ(bounds(), (PixelRect{0, 0, 5, 5}));
  EXPECT_EQ(records(), 1U);
  hand.drag({25, 25});
  hand.release({25, 25});
  EXPECT_EQ(records(), 1U);
  expectIdle();
}

TEST_F(RectSelectTool, UndoInMidDragEndsTheGesture) {
  selectRect({0, 0, 5, 5});
  hand.press({10, 10});
  hand.drag({20, 20});
  document->undo();
  expectIdle();
  EXPECT_EQ(document->activeSelection(), nullptr);
  hand.drag({25, 25});
  hand.release({25, 25});
  expectIdle();
  EXPECT_EQ(document->activeSelection(), nullptr);
  EXPECT_EQ(document->undoStack.redoActionName(), QStringLiteral("Before"));
}

TEST_F(RectSelectTool, AnotherDocumentEndsTheGesture) {
  const DocumentPtr other = makeDocument();
  hand.press({10, 10});
  hand.drag({20, 20});
  EXPECT_FALSE(overlay().shouldRender({}, other.get())) << "the outline belongs to its document";
  EXPECT_TRUE(overlay().shouldRender({}, document.get()));
  canvas.document = other;
  hand.drag({25, 25});
  expectIdle();
  hand.release({25, 25});
  EXPECT_EQ(records(), 0U);
  EXPECT_EQ(other->selection.value(), nullptr);
}

TEST_F(RectSelectTool, ADocumentClosedInMidDragEndsTheGesture) {
  hand.press({10, 10});
  hand.drag({20, 20});
  document.reset();
  hand.drag({25, 25});
  static_cast<void>(hand.keyDown(keyCode::space));
  hand.holdModifiers(modifier::command);
  hand.release({25, 25});
  EXPECT_TRUE(isOverlayEmpty());
}

TEST_F(RectSelectTool, WithoutAViewOrDocumentItDoesNothing) {
  const ToolContext nothing;
  handler.mouseDown({}, nothing, {1, 1});
  handler.mouseDragged({}, nothing, {9, 9});
  handler.mouseUp({}, nothing, {9, 9});
  handler.mouseMoved({}, nothing, {9, 9});
  EXPECT_EQ(handler.cursor(0, nothing), CursorShape::crosshair);
  handler.mouseDown({}, {nullptr, document}, {1, 1});
  EXPECT_EQ(document->selection.value(), nullptr);
}

TEST_F(RectSelectTool, FeathersItsEdges) {
  tools.selectionSettings = SelectionSettings{.featherRadius = 4.0F};
  hand.dragFromTo({10, 10}, {30, 20});
  EXPECT_NEAR(valueAt(10, 15), 0.5F, 0.15F);
  EXPECT_GT(valueAt(8, 15), 0.0F);
}

class EllipseSelectTool : public SelectionToolFixture {
 protected:
  /// The mask that this ellipse gives on its own.
  [[nodiscard]] Surface ellipse(float cx, float cy, float rx, float ry) const {
    Surface expected(maskPixelFormat, 40, 30);
    document->context().fillEllipseMask(expected, cx, cy, rx, ry, 0.0F);
    return expected;
  }

  EllipseSelectToolHandler handler{state, tools};
  ToolInHand hand{handler, canvas};
};

TEST_F(EllipseSelectTool, FillsTheWholePixelsOfTheDrag) {
  hand.dragFromTo({4.5, 3.5}, {19.5, 12.2});
  EXPECT_TRUE(mask().equals(ellipse(12.0F, 8.0F, 8.0F, 5.0F)));
  EXPECT_EQ(undoName(), "Ellipse Select");
  EXPECT_EQ(document->selection.value()->flags(), (Selection::Flags{true, false}));
}

TEST_F(EllipseSelectTool, AnEllipseOfWhichOnlyAnEmptyCornerIsOnTheCanvasSelectsNothing) {
  selectRect({0, 0, 5, 5});
  hand.press({10, 10});
  hand.drag({30, 29});
  static_cast<void>(hand.keyDown(keyCode::space));
  hand.drag({30 + 29, 29 + 19});
  hand.release({30 + 29, 29 + 19});
  EXPECT_EQ(bounds(), (PixelRect{0, 0, 5, 5}));
  EXPECT_EQ(records(), 1U);
  expectIdle();
}

TEST_F(EllipseSelectTool, CommandGivesACircle) {
  canvas.modifiers = modifier::command;
  hand.dragFromTo({20, 20}, {10, 16});
  EXPECT_TRUE(mask().equals(ellipse(15.0F, 15.0F, 5.0F, 5.0F)));
}

TEST_F(EllipseSelectTool, ShowsAnEllipseWhileDrawn) {
  hand.press({4, 2});
  hand.drag({14, 8});
  EXPECT_EQ(std::get<SelectionPath::Ellipse>(overlay().dragPath.value().shapeHint),
            (SelectionPath::Ellipse{{9, 5}, {5, 3}}));
}

TEST_F(EllipseSelectTool, MovedBeyondTheEdgeItIsCutOffRatherThanSqueezed) {
  hand.press({10, 10});
  hand.drag({20, 20});
  static_cast<void>(hand.keyDown(keyCode::space));
  hand.drag({45, 20});
  hand.release({45, 20});
  EXPECT_TRUE(mask().equals(ellipse(40.0F, 15.0F, 5.0F, 5.0F)));
}

}  // namespace
}  // namespace orvanel
