// What every selection tool does: hovering, and dragging the selection itself.
#include "tools/selection/SelectionToolState.h"

#include <gmock/gmock.h>

#include "tools/selection/MagicWandToolHandler.h"
#include "tools/selection/RectSelectToolHandler.h"
#include "tools/selection/SelectionToolFixture.h"

namespace orvanel {
namespace {

using namespace test;
using testing::ElementsAre;

class SelectionTools : public SelectionToolFixture {
 protected:
  RectSelectToolHandler handler{state, tools};
  ToolInHand hand{handler, canvas};
};

TEST_F(SelectionTools, TheCursorNamesTheMode) {
  const auto cursors = [this] {
    std::vector<CursorShape> shapes;
    for (const std::uint32_t modifiers :
         {0U, modifier::shift, modifier::option, modifier::shift | modifier::option}) {
      canvas.modifiers = modifiers;
      shapes.push_back(hand.cursor());
    }
    return shapes;
  };
  constexpr CursorShape crosshair = CursorShape::crosshair;
  EXPECT_THAT(cursors(), ElementsAre(crosshair, crosshair, crosshair, crosshair)) << "nothing selected";
  selectRect({0, 0, 5, 5});
  EXPECT_THAT(cursors(),
              ElementsAre(crosshair, CursorShape::add, CursorShape::subtract, CursorShape::intersect));
}

TEST_F(SelectionTools, HoveringShowsWhereADragMovesTheSelection) {
  hand.hover({5, 5});
  EXPECT_TRUE(canvas.cursors.empty()) << "nothing is selected";
  selectRect({10, 10, 5, 5});
  hand.hover({12.5, 12.5});
  hand.hover({15.0, 12.5});
  hand.hover({-3.0, 2.0});
  EXPECT_THAT(canvas.cursors, ElementsAre(CursorShape::move, CursorShape::crosshair, CursorShape::crosshair));
  canvas.cursors.clear();
  canvas.modifiers = modifier::shift;
  hand.hover({12.5, 12.5});
  EXPECT_TRUE(canvas.cursors.empty());
}

TEST_F(SelectionTools, HoveringAsksOncePerPixel) {
  selectRect({10, 10, 5, 5});
  canvas.zoom = 10.0;
  hand.hover({121, 121});
  // A change that nobody was told of goes unnoticed until another pixel is asked for.
  writableSelection(*document).pixels().fill(0);
  hand.hover({129, 129});
  EXPECT_EQ(canvas.cursors.back(), CursorShape::move);
  hand.hover({131, 129});
  EXPECT_EQ(canvas.cursors.back(), CursorShape::crosshair);
  hand.hover({129, 129});
  EXPECT_EQ(canvas.cursors.back(), CursorShape::crosshair);
}

TEST_F(SelectionTools, HoveringNoticesThatTheSelectionHasChanged) {
  selectRect({10, 10, 5, 5});
  hand.hover({12, 12});
  selectRect({20, 20, 5, 5});
  hand.hover({12, 12});
  document->undo();
  hand.hover({12, 12});
  EXPECT_THAT(canvas.cursors, ElementsAre(CursorShape::move, CursorShape::crosshair, CursorShape::move));
}

TEST_F(SelectionTools, HoveringNoticesThatAnotherDocumentIsShown) {
  selectRect({10, 10, 5, 5});
  hand.hover({12, 12});
  document = makeDocument(40, 30);
  canvas.document = document;
  selectRect({20, 20, 5, 5});
  hand.hover({12, 12});
  EXPECT_THAT(canvas.cursors, ElementsAre(CursorShape::move, CursorShape::crosshair));
}

TEST_F(SelectionTools, WithoutModifiersAnyMoreTheCursorShowsAtOnceThatTheSelectionMoves) {
  selectRect({10, 10, 10, 10});
  canvas.modifiers = modifier::shift;
  hand.hover({12, 12});
  EXPECT_EQ(hand.cursor(), CursorShape::add);
  canvas.modifiers = 0;
  EXPECT_EQ(hand.cursor(), CursorShape::move);
  canvas.modifiers = modifier::shift;
  hand.dragFromTo({25, 25}, {12, 12});
  canvas.modifiers = 0;
  EXPECT_EQ(hand.cursor(), CursorShape::move) << "the pointer is where the button was released";
  hand.press({30, 2});
  EXPECT_EQ(hand.cursor(), CursorShape::crosshair);
}

TEST_F(SelectionTools, AToolTakenUpDoesNotKnowWhereThePointerIs) {
  selectRect({10, 10, 5, 5});
  hand.hover({12, 12});
  hand.changeTool();
  writableSelection(*document).setRect({30, 20, 5, 5}, 0.0F, document->context());
  handler.toolActivated(canvas.context());
  EXPECT_EQ(hand.cursor(), CursorShape::crosshair);
  hand.hover({12, 12});
  EXPECT_EQ(canvas.cursors.back(), CursorShape::crosshair);
}

TEST_F(SelectionTools, OnceDeselectedTheSelectionNoLongerShowsThatItMoves) {
  selectRect({10, 10, 5, 5});
  hand.hover({12, 12});
  document->deselect();
  hand.hover({12, 12});
  hand.hover({13, 12});
  EXPECT_THAT(canvas.cursors, ElementsAre(CursorShape::move, CursorShape::crosshair));
  selectRect({0, 0, 40, 30});
  hand.hover({13, 12});
  EXPECT_EQ(canvas.cursors.back(), CursorShape::move);
}

TEST_F(SelectionTools, APressHasTheNextHoverAskAgain) {
  selectRect({10, 10, 5, 5});
  hand.hover({12, 12});
  writableSelection(*document).pixels().fill(0);
  hand.click({30, 20});
  selectRect({20, 20, 5, 5});
  canvas.cursors.clear();
  hand.hover({12, 12});
  EXPECT_THAT(canvas.cursors, ElementsAre(CursorShape::crosshair));
}

TEST_F(SelectionTools, APressInsideTheSelectionMovesIt) {
  selectRect({10, 10, 5, 5});
  hand.press({12, 12});
  EXPECT_TRUE(state->isMoving());
  EXPECT_EQ(hand.cursor(), CursorShape::move);
  hand.drag({15.4, 10.6});
  EXPECT_EQ(bounds(), (PixelRect{13, 9, 5, 5}));
  EXPECT_EQ(records(), 1U) << "the record comes with the release";
  hand.drag({12.6, 12.4});
  EXPECT_EQ(bounds(), (PixelRect{11, 10, 5, 5})) << "offsets are rounded to whole pixels";
  hand.release({12.6, 12.4});
  EXPECT_EQ(undoName(), "Move Selection");
  expectIdle();
  document->undo();
  EXPECT_EQ(bounds(), (PixelRect{10, 10, 5, 5}));
  document->redo();
  EXPECT_EQ(bounds(), (PixelRect{11, 10, 5, 5}));
}

TEST_F(SelectionTools, AMoveIsInDocumentPixelsAtEveryZoom) {
  selectRect({10, 10, 5, 5});
  canvas.zoom = 8.0;
  hand.dragFromTo({96, 96}, {96 + 19, 96 + 21});
  EXPECT_EQ(bounds(), (PixelRect{12, 13, 5, 5}));
}

TEST_F(SelectionTools, AClickInsideTheSelectionLeavesARecord) {
  selectRect({10, 10, 5, 5});
  hand.click({12, 12});
  EXPECT_EQ(undoName(), "Move Selection");
  EXPECT_EQ(records(), 2U);
  EXPECT_EQ(bounds(), (PixelRect{10, 10, 5, 5}));
}

TEST_F(SelectionTools, ASelectionMovedBeyondTheEdgeAndBackIsWhole) {
  selectRect({10, 10, 5, 5});
  const Surface before = mask();
  hand.press({12, 12});
  hand.drag({12 - 13, 12});
  EXPECT_EQ(bounds(), (PixelRect{0, 10, 2, 5}));
  hand.drag({12 - 100, 12});
  EXPECT_EQ(bounds(), std::nullopt) << "nothing is left on the canvas";
  hand.drag({12, 12});
  EXPECT_TRUE(mask().equals(before));
  EXPECT_TRUE(document->selection.value()->hasSelection.value());
  hand.drag({12 - 13, 12});
  hand.release({12 - 13, 12});
  hand.dragFromTo({1, 12}, {14, 12});
  EXPECT_EQ(bounds(), (PixelRect{13, 10, 2, 5})) << "what was outside at the release is lost";
}

TEST_F(SelectionTools, AMovedFullSelectionIsFullNoMore) {
  document->selectAll();
  hand.press({12, 12});
  hand.drag({15, 12});
  EXPECT_EQ(document->selection.value()->flags(), (Selection::Flags{true, false}));
  hand.drag({12, 12});
  EXPECT_EQ(document->selection.value()->flags(), (Selection::Flags{true, true}));
  hand.release({12, 12});
}

TEST_F(SelectionTools, WithAModeAPressInsideTheSelectionDrawsAShape) {
  selectRect({10, 10, 10, 10});
  canvas.modifiers = modifier::shift;
  hand.dragFromTo({12, 12}, {25, 25});
  EXPECT_EQ(bounds(), (PixelRect{10, 10, 15, 15}));
  canvas.modifiers = modifier::option;
  hand.dragFromTo({10, 10}, {25, 22});
  EXPECT_EQ(bounds(), (PixelRect{12, 22, 13, 3}));
}

TEST_F(SelectionTools, WithoutAModeTheCommandModifierStillMoves) {
  selectRect({10, 10, 10, 10});
  canvas.modifiers = modifier::command;
  hand.press({12, 12});
  EXPECT_TRUE(state->isMoving());
  hand.release({12, 12});
}

TEST_F(SelectionTools, TheSpaceBarDuringAMoveIsConsumed) {
  selectRect({10, 10, 10, 10});
  hand.press({12, 12});
  EXPECT_TRUE(hand.keyDown(keyCode::space));
  hand.drag({13, 12});
  EXPECT_EQ(bounds(), (PixelRect{11, 10, 10, 10}));
  hand.release({13, 12});
  EXPECT_FALSE(hand.keyUp(keyCode::space));
}

TEST_F(SelectionTools, EscapeInMidMoveTakesItBack) {
  selectRect({10, 10, 5, 5});
  hand.press({12, 12});
  hand.drag({14, 12});
  EXPECT_TRUE(hand.keyDown(keyCode::backspace)) << "nothing is deleted in mid-move";
  EXPECT_EQ(bounds(), (PixelRect{12, 10, 5, 5}));
  EXPECT_TRUE(hand.keyDown(keyCode::escape));
  EXPECT_EQ(bounds(), (PixelRect{10, 10, 5, 5}));
  expectIdle();
  hand.drag({20, 12});
  hand.release({20, 12});
  EXPECT_EQ(bounds(), (PixelRect{10, 10, 5, 5}));
  EXPECT_EQ(undoName(), "Before");
  EXPECT_EQ(records(), 1U);
}

TEST_F(SelectionTools, AChangeOfToolKeepsAMoveThatHasBegun) {
  selectRect({10, 10, 5, 5});
  hand.press({12, 12});
  hand.drag({14, 12});
  hand.changeTool();
  expectIdle();
  EXPECT_EQ(bounds(), (PixelRect{12, 10, 5, 5}));
  EXPECT_EQ(undoName(), "Move Selection");
  hand.drag({20, 12});
  hand.release({20, 12});
  EXPECT_EQ(bounds(), (PixelRect{12, 10, 5, 5}));
  EXPECT_EQ(records(), 2U);
}

TEST_F(SelectionTools, UndoInMidMoveTakesItBack) {
  selectRect({10, 10, 5, 5});
  hand.press({12, 12});
  hand.drag({14, 12});
  document->undo();
  EXPECT_EQ(bounds(), (PixelRect{10, 10, 5, 5}));
  expectIdle();
  hand.drag({20, 12});
  hand.release({20, 12});
  EXPECT_EQ(bounds(), (PixelRect{10, 10, 5, 5}));
  EXPECT_EQ(document->undoStack.redoActionName(), QStringLiteral("Move Selection"));
}

TEST_F(SelectionTools, AnotherDocumentEndsAMove) {
  selectRect({10, 10, 5, 5});
  hand.press({12, 12});
  hand.drag({14, 12});
  canvas.document = makeDocument();
  hand.drag({20, 12});
  expectIdle();
  EXPECT_EQ(bounds(), (PixelRect{12, 10, 5, 5}));
}

TEST_F(SelectionTools, APressWithoutTheReleaseBeforeItStartsAfresh) {
  hand.press({2, 2});
  hand.drag({9, 9});
  hand.dragFromTo({20, 20}, {25, 25});
  EXPECT_EQ(bounds(), (PixelRect{20, 20, 5, 5}));
  EXPECT_EQ(records(), 1U);
}

TEST_F(SelectionTools, ToolsThatGoAwayInMidMoveKeepIt) {
  selectRect({10, 10, 5, 5});
  {
    const auto passing = std::make_shared<SelectionToolState>(MetalContext::shared());
    RectSelectToolHandler tool(passing, tools);
    ToolInHand other(tool, canvas);
    other.press({12, 12});
    other.drag({14, 12});
    canvas.redraws = 0;
  }
  EXPECT_EQ(bounds(), (PixelRect{12, 10, 5, 5}));
  EXPECT_EQ(undoName(), "Move Selection");
  EXPECT_EQ(canvas.redraws, 0) << "the canvas is no longer asked for frames";
}

TEST_F(SelectionTools, ToolsThatGoAwayInMidShapeDropIt) {
  {
    const auto passing = std::make_shared<SelectionToolState>(MetalContext::shared());
    RectSelectToolHandler tool(passing, tools);
    ToolInHand other(tool, canvas);
    other.press({12, 12});
    other.drag({20, 20});
    canvas.redraws = 0;
  }
  EXPECT_EQ(document->activeSelection(), nullptr);
  EXPECT_EQ(document->dragSize.value(), std::nullopt);
  EXPECT_EQ(records(), 0U);
  EXPECT_EQ(canvas.redraws, 0);
}

TEST_F(SelectionTools, TheToolsShareOneOverlay) {
  const MagicWandToolHandler wand(state, tools);
  EXPECT_EQ(handler.overlayLayer(), wand.overlayLayer());
  EXPECT_EQ(handler.overlayLayer(), state->dragPathLayer);
}

}  // namespace
}  // namespace orvanel
