// Tools on the real view, by real events: which handler gets them, and when.
#include <gtest/gtest.h>

#include "CanvasSupport.h"
#include "canvas/CanvasPaneView.h"
#include "canvas/CursorImages.h"
#include "model/PixelSupport.h"

namespace orvanel {
namespace {

using namespace test;

class CanvasToolsTest : public testing::Test {
 protected:
  CanvasToolsTest() {
    keepInitialZoom(*document);
    document->addLayer(QStringLiteral("Box"));
    selectRect(*document, box);
    document->fillSelection({0.2F, 0.5F, 0.8F, 1.0F});
    writableSelection(*document).clear(document->context());
    layer = document->activeLayer();
    records = recordCount(*document);
    pane.resize(400, 300);
    tools.switchToDocument(document);
    pane.setDocument(document);
    pane.show();
  }
  ScrollableMTKView& view() { return pane.canvasView().container().mtkView(); }
  void press(QPointF at, Qt::MouseButton button = Qt::LeftButton) {
    sendMouse(view(), QEvent::MouseButtonPress, at, button, button);
  }
  void drag(QPointF to, Qt::MouseButton button = Qt::LeftButton,
            Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
    sendMouse(view(), QEvent::MouseMove, to, Qt::NoButton, button, modifiers);
  }
  void release(QPointF at, Qt::MouseButton button = Qt::LeftButton) {
    sendMouse(view(), QEvent::MouseButtonRelease, at, button, Qt::NoButton);
  }
  [[nodiscard]] std::optional<PixelRect> content() const {
    return document->context().layerContentBounds(*layer->texture.value(), document->colorMode.value(),
                                                  false);
  }
  [[nodiscard]] std::int64_t newRecords() const { return recordCount(*document) - records; }
  [[nodiscard]] std::shared_ptr<const MoveToolOverlayLayer> moveOverlay() {
    for (const auto& overlay : pane.canvasView().renderer().toolOverlayLayers) {
      if (auto found = std::dynamic_pointer_cast<const MoveToolOverlayLayer>(overlay)) return found;
    }
    return nullptr;
  }
  static void post(std::string_view name) { NotificationCenter::standard().post(name); }

  static constexpr PixelRect box{100, 80, 60, 40};
  static constexpr QPointF middle{130.0, 100.0};
  DocumentPtr document = makeDocument(1000, 800);
  std::shared_ptr<Layer> layer;
  std::int64_t records = 0;
  ToolState tools;
  CanvasPaneView pane{MetalContext::shared(), tools};
};

TEST_F(CanvasToolsTest, EveryToolsOverlayIsDrawnOnce) {
  std::map<std::string, int> names;
  for (const auto& overlay : pane.canvasView().renderer().toolOverlayLayers) ++names[overlay->name()];
  EXPECT_EQ(names["Move Tool Overlay"], 1);
  EXPECT_EQ(names["Free Transform Overlay"], 1);
  EXPECT_GE(names["Drag Path"], 1);
}

TEST_F(CanvasToolsTest, TheMoveToolMovesTheLayer) {
  tools.selectTool(Tool::move);
  dragMouse(view(), middle, middle + QPointF(30, -20));
  EXPECT_EQ(content(), (PixelRect{130, 60, 60, 40}));
  EXPECT_EQ(newRecords(), 1);
}

TEST_F(CanvasToolsTest, PositionsBetweenTwoFramesAreTakenTogether) {
  tools.selectTool(Tool::move);
  press(middle);
  const ChangeRecorder changes(*document);
  for (int i = 1; i <= 10; ++i) drag(middle + QPointF(i, 0));
  EXPECT_EQ(changes.count<change::PixelsChanged>(), 0U);
  EXPECT_EQ(moveOverlay()->moveToolRect->x, 100.0F);
  // The pointer's own position is current all the same.
  EXPECT_EQ(document->cursorDocumentPosition.value(), middle + QPointF(10, 0));
  ASSERT_TRUE(runUntil([&] { return moveOverlay()->moveToolRect->x != 100.0F; }));
  EXPECT_EQ(moveOverlay()->moveToolRect->x, 110.0F);
  drag(middle + QPointF(20, 0));
  release(middle + QPointF(20, 0));
  EXPECT_EQ(content(), (PixelRect{120, 80, 60, 40}));
}

TEST_F(CanvasToolsTest, WhatIsDraggedStaysUnderThePointerWhenTheImageScrolls) {
  tools.selectTool(Tool::move);
  press(middle);
  drag(middle + QPointF(10, 0));
  ASSERT_TRUE(runUntil([&] { return moveOverlay()->moveToolRect->x == 110.0F; }));
  sendWheel(view(), middle, {-40, -20}, {});
  ASSERT_NE(document->viewportOffset.value(), QPointF(0, 0));
  const QPointF scrolled = document->viewportOffset.value();
  EXPECT_TRUE(runUntil([&] { return moveOverlay()->moveToolRect->x != 110.0F; }));
  release(middle + QPointF(10, 0));
  EXPECT_EQ(content(),
            (PixelRect{110 + static_cast<int>(scrolled.x()), 80 + static_cast<int>(scrolled.y()), 60, 40}));
}

TEST_F(CanvasToolsTest, ARectangleFollowsThePointerWhenTheImageScrolls) {
  tools.selectTool(Tool::rectangleSelect);
  press({300, 200});
  drag({340, 230});
  sendWheel(view(), {340, 230}, {-30, -20}, {});
  const QPointF scrolled = document->viewportOffset.value();
  ASSERT_NE(scrolled, QPointF(0, 0));
  release({340, 230});
  EXPECT_EQ(document->context().selectionBounds(*document->selection.value()->maskTexture->texture),
            (PixelRect{300, 200, 40 + static_cast<int>(scrolled.x()), 30 + static_cast<int>(scrolled.y())}));
}

TEST_F(CanvasToolsTest, AHiddenViewHandsPositionsOnAtOnce) {
  tools.selectTool(Tool::move);
  pane.hide();
  press(middle);
  drag(middle + QPointF(5, 0));
  EXPECT_EQ(moveOverlay()->moveToolRect->x, 105.0F);
  release(middle + QPointF(5, 0));
}

TEST_F(CanvasToolsTest, ModifiersAreThoseOfTheMouseEvent) {
  tools.selectTool(Tool::move);
  press({160, 120});
  drag({220, 140}, Qt::LeftButton, Qt::ShiftModifier);
  EXPECT_EQ(view().currentModifiers(), modifier::shift);
  sendMouse(view(), QEvent::MouseButtonRelease, {220, 140}, Qt::LeftButton, Qt::NoButton, Qt::ShiftModifier);
  EXPECT_EQ(content(), (PixelRect{100, 80, 120, 60}));
}

TEST_F(CanvasToolsTest, ShiftPressedDuringADragActsAtOnce) {
  tools.selectTool(Tool::move);
  press({160, 120});
  drag({220, 140});
  sendKey(view(), QEvent::KeyPress, Qt::Key_Shift);
  EXPECT_EQ(moveOverlay()->moveToolRect->width, 120.0F);
  sendKey(view(), QEvent::KeyRelease, Qt::Key_Shift);
  EXPECT_EQ(moveOverlay()->moveToolRect->width, 90.0F);
  release({220, 140});
}

TEST_F(CanvasToolsTest, ADragIsDeliveredUpToTheChangeOfToolAndNotBeyond) {
  tools.selectTool(Tool::move);
  press(middle);
  drag(middle + QPointF(10, 0));
  tools.selectTool(Tool::zoom);
  EXPECT_EQ(content(), (PixelRect{110, 80, 60, 40}));
  drag(middle + QPointF(90, 50));
  release(middle + QPointF(90, 50));
  EXPECT_EQ(newRecords(), 1);
  EXPECT_EQ(document->zoom(), 1.0);
  tools.selectTool(Tool::move);
  dragMouse(view(), middle, middle + QPointF(1, 0));
  EXPECT_EQ(content(), (PixelRect{111, 80, 60, 40}));
}

TEST_F(CanvasToolsTest, TheSameToolAgainDoesNotInterruptADrag) {
  tools.selectTool(Tool::move);
  press(middle);
  tools.selectTool(Tool::move);
  drag(middle + QPointF(10, 0));
  release(middle + QPointF(10, 0));
  EXPECT_EQ(newRecords(), 1);
}

TEST_F(CanvasToolsTest, ToolsWithoutAHandlerRecordNothing) {
  const Surface before = *layer->texture.value();
  document->setDirty(false);
  for (const Tool tool : {Tool::brush, Tool::eraser}) {
    tools.selectTool(tool);
    dragMouse(view(), middle, middle + QPointF(10, 10));
    EXPECT_EQ(view().cursor().shape(), Qt::ArrowCursor);
  }
  EXPECT_EQ(newRecords(), 0);
  EXPECT_TRUE(layer->texture.value()->equals(before));
  EXPECT_FALSE(document->isDirty.value());
}

TEST_F(CanvasToolsTest, TheSpaceBarBringsNoHandDuringADrag) {
  tools.selectTool(Tool::move);
  press(middle);
  sendKey(view(), QEvent::KeyPress, Qt::Key_Space);
  EXPECT_EQ(tools.currentTool(), Tool::move);
  sendKey(view(), QEvent::KeyRelease, Qt::Key_Space);
  drag(middle + QPointF(10, 0));
  release(middle + QPointF(10, 0));
  EXPECT_EQ(content(), (PixelRect{110, 80, 60, 40}));
  sendKey(view(), QEvent::KeyPress, Qt::Key_Space);
  EXPECT_EQ(tools.currentTool(), Tool::hand);
  dragMouse(view(), middle, middle - QPointF(10, 0));
  sendKey(view(), QEvent::KeyRelease, Qt::Key_Space);
  EXPECT_EQ(tools.currentTool(), Tool::move);
  EXPECT_EQ(document->viewportOffset.value(), QPointF(10, 0));
}

TEST_F(CanvasToolsTest, ReleasingTheSpaceBarEndsOnlyTheHandThatItBrought) {
  tools.selectTool(Tool::move);
  tools.pushTool(Tool::freeTransform);
  sendKey(view(), QEvent::KeyPress, Qt::Key_Space, Qt::ShiftModifier);
  sendKey(view(), QEvent::KeyRelease, Qt::Key_Space, Qt::ShiftModifier);
  EXPECT_EQ(tools.currentTool(), Tool::freeTransform);
}

TEST_F(CanvasToolsTest, ReleasingTheSpaceBarTakesItsHandFromBeneathAToolPushedMeanwhile) {
  tools.selectTool(Tool::move);
  sendKey(view(), QEvent::KeyPress, Qt::Key_Space);
  tools.pushTool(Tool::freeTransform);
  sendKey(view(), QEvent::KeyRelease, Qt::Key_Space);
  EXPECT_EQ(tools.toolStack.value(), (std::vector{Tool::move, Tool::freeTransform}));
  tools.popTool();
  EXPECT_EQ(tools.currentTool(), Tool::move);
}

TEST_F(CanvasToolsTest, ADragWhoseReleaseWasLostEndsWithTheNextMovement) {
  tools.selectTool(Tool::move);
  press(middle);
  drag(middle + QPointF(10, 0));
  moveMouse(view(), {5, 5});
  EXPECT_EQ(content(), (PixelRect{110, 80, 60, 40}));
  EXPECT_EQ(newRecords(), 1);
}

TEST_F(CanvasToolsTest, AfterAToolChangeInMidDragTheImageIsFlattenedAsUsual) {
  tools.selectTool(Tool::zoom);
  sendKey(view(), QEvent::KeyPress, Qt::Key_Space);
  press(middle);
  drag(middle - QPointF(10, 0));
  sendKey(view(), QEvent::KeyRelease, Qt::Key_Space);
  release(middle - QPointF(10, 0));
  document->setOpacity(layer->id, 0.5F);
  EXPECT_TRUE(runUntil([&] { return document->isCompositeCurrent(); }));
}

TEST_F(CanvasToolsTest, ThePointerForgetsModifiersWithTheFocus) {
  tools.selectTool(Tool::zoom);
  const QCursor plain = view().cursor();
  sendKey(view(), QEvent::KeyPress, Qt::Key_Alt);
  EXPECT_NE(view().cursor(), plain);
  QFocusEvent focusOut(QEvent::FocusOut);
  QApplication::sendEvent(&view(), &focusOut);
  EXPECT_EQ(view().cursor(), plain);
}

TEST_F(CanvasToolsTest, TheMiddleButtonPansDuringAnyTool) {
  tools.selectTool(Tool::move);
  press(middle, Qt::MiddleButton);
  EXPECT_EQ(view().cursor(), cursorImage(CursorShape::closedHand, 1.0));
  drag(middle - QPointF(30, 20), Qt::MiddleButton);
  EXPECT_EQ(document->viewportOffset.value(), QPointF(30, 20));
  press(middle);
  EXPECT_EQ(view().cursor(), cursorImage(CursorShape::closedHand, 1.0));
  release(middle - QPointF(30, 20), Qt::MiddleButton);
  EXPECT_NE(view().cursor(), cursorImage(CursorShape::closedHand, 1.0));
  moveMouse(view(), {5, 5});
  EXPECT_EQ(document->viewportOffset.value(), QPointF(30, 20));
  EXPECT_EQ(newRecords(), 0);
  EXPECT_EQ(tools.currentTool(), Tool::move);
}

TEST_F(CanvasToolsTest, TheMiddleButtonWaitsForTheLeftOne) {
  tools.selectTool(Tool::move);
  press(middle);
  press(middle, Qt::MiddleButton);
  drag(middle + QPointF(10, 0));
  release(middle + QPointF(10, 0));
  EXPECT_EQ(document->viewportOffset.value(), QPointF(0, 0));
  EXPECT_EQ(content(), (PixelRect{110, 80, 60, 40}));
}

TEST_F(CanvasToolsTest, APanWhoseReleaseWasLostEndsWithTheNextMovement) {
  tools.selectTool(Tool::move);
  press(middle, Qt::MiddleButton);
  moveMouse(view(), {50, 50});
  EXPECT_NE(view().cursor(), cursorImage(CursorShape::closedHand, 1.0));
  EXPECT_EQ(document->viewportOffset.value(), QPointF(0, 0));
}

TEST_F(CanvasToolsTest, TheMoveBoxFollowsTheContentAndTheActiveLayer) {
  tools.selectTool(Tool::move);
  const auto rect = [&] { return moveOverlay()->moveToolRect; };
  EXPECT_EQ(rect()->x, 100.0F);
  selectRect(*document, {10, 10, 10, 10});
  document->fillSelection(DisplayColor::black());
  EXPECT_EQ(rect()->x, 10.0F);
  document->undo();
  EXPECT_EQ(rect()->x, 100.0F);
  document->setLocked(layer->id, true);
  EXPECT_EQ(rect(), std::nullopt);
  document->setLocked(layer->id, false);
  EXPECT_EQ(rect()->x, 100.0F);
  activate(*document, QStringLiteral("Background"));
  post(notification::activeLayerChanged);
  EXPECT_EQ(rect()->width, 1000.0F);
  document->addFolder(QStringLiteral("Folder"));
  post(notification::activeLayerChanged);
  EXPECT_EQ(rect(), std::nullopt);
}

TEST_F(CanvasToolsTest, TheMoveBoxFollowsACommandThatEndsANudge) {
  tools.selectTool(Tool::move);
  pressKey(view(), Qt::Key_Right);
  EXPECT_EQ(moveOverlay()->moveToolRect->x, 101.0F);
  ASSERT_TRUE(document->trim());
  EXPECT_EQ(moveOverlay()->moveToolRect->x, 0.0F);
  EXPECT_EQ(newRecords(), 2);
}

TEST_F(CanvasToolsTest, WithAnotherToolTheMoveBoxIsLeftAlone) {
  tools.selectTool(Tool::zoom);
  post(notification::undoRedoPerformed);
  post(notification::activeLayerChanged);
  EXPECT_EQ(moveOverlay()->moveToolRect, std::nullopt);
}

TEST_F(CanvasToolsTest, ADragEndsWithTheDocumentItBeganOn) {
  tools.selectTool(Tool::move);
  press(middle);
  drag(middle + QPointF(10, 0));
  const auto other = makeDocument(1000, 800);
  keepInitialZoom(*other);
  tools.setActiveDocument(other);
  pane.setDocument(other);
  EXPECT_EQ(content(), (PixelRect{110, 80, 60, 40}));
  EXPECT_EQ(moveOverlay()->moveToolRect->width, 1000.0F);
  release(middle);
  EXPECT_EQ(newRecords(), 1);
  EXPECT_EQ(recordCount(*other), 0);
}

TEST_F(CanvasToolsTest, FreeTransformIsAppliedAndCancelledByNotifications) {
  tools.selectTool(Tool::move);
  for (const bool isApplied : {false, true}) {
    tools.pushTool(Tool::freeTransform);
    dragMouse(view(), middle, middle + QPointF(30, -20));
    EXPECT_EQ(newRecords(), 0);
    post(isApplied ? notification::freeTransformApply : notification::freeTransformCancel);
    EXPECT_EQ(tools.currentTool(), Tool::move);
    EXPECT_EQ(newRecords(), isApplied ? 1 : 0);
    EXPECT_EQ(content(), (isApplied ? PixelRect{130, 60, 60, 40} : box));
  }
}

TEST_F(CanvasToolsTest, WithoutATransformTheNotificationsLeaveTheToolAlone) {
  tools.selectTool(Tool::move);
  document->setLocked(layer->id, true);
  tools.pushTool(Tool::freeTransform);
  post(notification::freeTransformApply);
  post(notification::freeTransformCancel);
  EXPECT_EQ(tools.currentTool(), Tool::freeTransform);
}

TEST_F(CanvasToolsTest, KeysEndAFreeTransform) {
  tools.selectTool(Tool::move);
  tools.pushTool(Tool::freeTransform);
  dragMouse(view(), middle, middle + QPointF(30, -20));
  pressKey(view(), Qt::Key_Escape);
  EXPECT_EQ(content(), box);
  tools.pushTool(Tool::freeTransform);
  dragMouse(view(), middle, middle + QPointF(30, -20));
  pressKey(view(), Qt::Key_Enter);
  EXPECT_EQ(content(), (PixelRect{130, 60, 60, 40}));
  EXPECT_EQ(newRecords(), 1);
  EXPECT_EQ(tools.currentTool(), Tool::move);
}

TEST_F(CanvasToolsTest, AnyOtherToolAppliesAFreeTransform) {
  tools.pushTool(Tool::freeTransform);
  dragMouse(view(), middle, middle + QPointF(30, -20));
  tools.selectTool(Tool::zoom);
  EXPECT_EQ(content(), (PixelRect{130, 60, 60, 40}));
  EXPECT_EQ(document->undoStack.undoActionName(), "Free Transform");
}

TEST_F(CanvasToolsTest, ArrowKeysNudgeTheLayer) {
  tools.selectTool(Tool::move);
  pressKey(view(), Qt::Key_Right);
  pressKey(view(), Qt::Key_Right);
  pressKey(view(), Qt::Key_Down, Qt::ShiftModifier);
  EXPECT_EQ(newRecords(), 0);
  tools.selectTool(Tool::zoom);
  EXPECT_EQ(content(), (PixelRect{102, 90, 60, 40}));
  EXPECT_EQ(newRecords(), 1);
}

TEST_F(CanvasToolsTest, AKeyIsOfferedToTheToolFirst) {
  tools.selectTool(Tool::move);
  press(middle);
  drag(middle + QPointF(10, 0));
  EXPECT_TRUE(view().offerKey({.key = keyCode::escape, .characters = {}}));
  EXPECT_FALSE(view().offerKey({.key = keyCode::escape, .characters = {}}));
  release(middle);
  EXPECT_EQ(newRecords(), 0);
}

TEST_F(CanvasToolsTest, TheZoomToolFollowsAltAndZoomsOnClicks) {
  tools.selectTool(Tool::zoom);
  press(middle);
  release(middle);
  EXPECT_EQ(document->zoom(), 2.0);
  sendMouse(view(), QEvent::MouseButtonPress, middle, Qt::LeftButton, Qt::LeftButton, Qt::AltModifier);
  sendMouse(view(), QEvent::MouseButtonRelease, middle, Qt::LeftButton, Qt::NoButton, Qt::AltModifier);
  EXPECT_EQ(document->zoom(), 1.0);
  dragMouse(view(), {100, 100}, {200, 175});
  EXPECT_EQ(document->zoom(), 4.0);
  EXPECT_EQ(view().viewToDocument({200, 150}).value(), QPointF(150, 137.5));
}

TEST_F(CanvasToolsTest, TheEyedropperSamplesWhilePressed) {
  tools.selectTool(Tool::eyedropper);
  press({20, 20});
  EXPECT_EQ(document->foregroundColor.value(), DisplayColor::white());
  drag(middle);
  release(middle);
  EXPECT_NEAR(document->foregroundColor.value().green, 0.5F, 0.003F);
  EXPECT_EQ(newRecords(), 0);
}

}  // namespace
}  // namespace orvanel
