// Scrolling, zooming and keys, driven by real events.
#include <gtest/gtest.h>

#include <QLineEdit>
#include <QVBoxLayout>

#include "CanvasSupport.h"
#include "canvas/CanvasPaneView.h"
#include "canvas/CursorImages.h"

namespace orvanel {
namespace {

using test::pressKey;
using test::sendGesture;
using test::sendKey;
using test::sendWheel;

constexpr QPoint noPixels;
constexpr QPoint oneClickUp{0, 120};

class CanvasInputTest : public testing::Test {
 protected:
  CanvasInputTest() {
    test::keepInitialZoom(*document);
    pane.resize(400, 300);
    pane.setDocument(document);
    pane.show();
    view().onScrollChanged = [this] { ++scrollChanges; };
  }
  ScrollableMTKView& view() { return pane.canvasView().container().mtkView(); }
  [[nodiscard]] QPointF offset() const { return document->viewportOffset.value(); }
  void altWheel(QPoint angle, Qt::ScrollPhase phase = Qt::NoScrollPhase, QPoint pixels = noPixels) {
    sendWheel(view(), {100, 100}, pixels, angle, Qt::AltModifier, phase);
  }

  DocumentPtr document = test::makeDocument(2000, 1500);
  ToolState tools;
  CanvasPaneView pane{MetalContext::shared(), tools};
  int scrollChanges = 0;
};

TEST_F(CanvasInputTest, AWheelClickPansFortyViewPoints) {
  document->setViewportOffset(QPointF(500, 500));
  sendWheel(view(), {10, 10}, noPixels, oneClickUp);
  EXPECT_EQ(offset(), QPointF(500, 460));
  sendWheel(view(), {10, 10}, noPixels, {-120, 0});
  EXPECT_EQ(offset(), QPointF(540, 460));
  test::zoomToIndex(*document, 17);
  sendWheel(view(), {10, 10}, noPixels, {0, -240});
  EXPECT_EQ(offset(), QPointF(540, 480));
}

TEST_F(CanvasInputTest, PreciseDeltasPanPointForPoint) {
  document->setViewportOffset(QPointF(500, 500));
  sendWheel(view(), {10, 10}, {3, -7}, {4, -9});
  EXPECT_EQ(offset(), QPointF(497, 507));
}

TEST_F(CanvasInputTest, ShiftTurnsTheWheelSideways) {
  document->setViewportOffset(QPointF(500, 500));
  sendWheel(view(), {10, 10}, noPixels, oneClickUp, Qt::ShiftModifier);
  EXPECT_EQ(offset(), QPointF(460, 500));
}

TEST_F(CanvasInputTest, ScrollingStopsAtTheBoundsWithoutNotifying) {
  document->setViewportOffset(QPointF(-200, -140));
  const test::ChangeRecorder changes(*document);
  const auto moves = [&] { return changes.count<change::ViewChanged>(ViewProperty::viewportOffset); };
  scrollChanges = 0;
  sendWheel(view(), {10, 10}, noPixels, oneClickUp);
  EXPECT_EQ(offset(), QPointF(-200, -150));
  EXPECT_EQ(moves(), 1U);
  EXPECT_EQ(scrollChanges, 1);
  sendWheel(view(), {10, 10}, noPixels, oneClickUp);
  EXPECT_EQ(moves(), 1U);
  EXPECT_EQ(scrollChanges, 1);
}

TEST_F(CanvasInputTest, ACanvasThatFitsDoesNotScroll) {
  test::zoomToIndex(*document, 8);
  sendWheel(view(), {10, 10}, noPixels, oneClickUp);
  EXPECT_EQ(offset(), QPointF(0, 0));
  EXPECT_EQ(scrollChanges, 0);
}

TEST_F(CanvasInputTest, OneWheelClickWithAltZoomsOneStep) {
  altWheel(oneClickUp);
  EXPECT_EQ(document->zoomLevelIndex.value(), 15);
  altWheel(-oneClickUp);
  altWheel(-oneClickUp);
  EXPECT_EQ(document->zoomLevelIndex.value(), 13);
}

TEST_F(CanvasInputTest, AltZoomsEvenWhenTheWheelDeltaIsHorizontal) {
  altWheel({120, 0});
  EXPECT_EQ(document->zoomLevelIndex.value(), 15);
  altWheel({-120, 0});
  EXPECT_EQ(document->zoomLevelIndex.value(), 14);
}

TEST_F(CanvasInputTest, SeveralClicksInOneEventAreSeveralSteps) {
  altWheel(3 * oneClickUp);
  EXPECT_EQ(document->zoomLevelIndex.value(), 17);
  altWheel(-2 * oneClickUp);
  EXPECT_EQ(document->zoomLevelIndex.value(), 15);
}

TEST_F(CanvasInputTest, ControlAndTheWheelZoomAboutThePointer) {
  document->setViewportOffset(QPointF(600, 400));
  const QPointF pointer(130, 90);
  const QPointF before = view().viewToDocument(pointer).value();
  sendWheel(view(), pointer, noPixels, oneClickUp, Qt::ControlModifier);
  EXPECT_EQ(document->zoomLevelIndex.value(), 15);
  EXPECT_EQ(view().viewToDocument(pointer).value(), before);
  sendWheel(view(), pointer, noPixels, -oneClickUp, Qt::ControlModifier | Qt::ShiftModifier);
  EXPECT_EQ(document->zoomLevelIndex.value(), 14) << "Shift turns nothing that zooms";
}

TEST_F(CanvasInputTest, WheelClicksStepWhenTheirSumReachesTwenty) {
  altWheel({0, 114});
  EXPECT_EQ(view().scrollZoomAccumulator(), 19.0);
  EXPECT_EQ(document->zoomLevelIndex.value(), 14);
  altWheel({0, 6});
  EXPECT_EQ(view().scrollZoomAccumulator(), 0.0);
  EXPECT_EQ(document->zoomLevelIndex.value(), 15);
  altWheel({0, -120});
  EXPECT_EQ(document->zoomLevelIndex.value(), 14);
}

TEST_F(CanvasInputTest, AClickInPartsIsOneStepAndOneAndAHalfLeaveAHalf) {
  for (int part = 0; part < 4; ++part) altWheel({0, 30});
  EXPECT_EQ(document->zoomLevelIndex.value(), 15);
  altWheel({0, 180});
  EXPECT_EQ(document->zoomLevelIndex.value(), 16);
  EXPECT_EQ(view().scrollZoomAccumulator(), 10.0);
}

TEST_F(CanvasInputTest, TheEndOfATouchpadScrollIsNoStep) {
  altWheel({0, 10}, Qt::ScrollBegin, {0, 30});
  altWheel({0, 0}, Qt::ScrollEnd, {0, 0});
  EXPECT_EQ(document->zoomLevelIndex.value(), 14);
  EXPECT_EQ(view().scrollZoomAccumulator(), 0.0);
}

TEST_F(CanvasInputTest, PreciseDeltasStepWhenTheirSumReachesFifty) {
  altWheel({0, 10}, Qt::ScrollBegin, {0, 30});
  altWheel({0, 10}, Qt::ScrollUpdate, {0, 19});
  EXPECT_EQ(view().scrollZoomAccumulator(), 49.0);
  EXPECT_EQ(document->zoomLevelIndex.value(), 14);
  altWheel({0, 10}, Qt::ScrollUpdate, {0, 1});
  EXPECT_EQ(document->zoomLevelIndex.value(), 15);
  EXPECT_EQ(view().scrollZoomAccumulator(), 0.0);
}

TEST_F(CanvasInputTest, TheZoomAccumulatorIsResetWhenAGestureBeginsAndEnds) {
  altWheel({0, 10}, Qt::ScrollUpdate, {0, 40});
  altWheel({0, 10}, Qt::ScrollBegin, {0, 20});
  EXPECT_EQ(view().scrollZoomAccumulator(), 20.0);
  altWheel({0, 10}, Qt::ScrollEnd, {0, 5});
  EXPECT_EQ(view().scrollZoomAccumulator(), 0.0);
  EXPECT_EQ(document->zoomLevelIndex.value(), 14);
}

TEST_F(CanvasInputTest, ZoomKeepsThePointUnderThePointer) {
  document->setViewportOffset(QPointF(600, 400));
  const QPointF pointer(130, 90);
  const QPointF before = view().viewToDocument(pointer).value();
  sendWheel(view(), pointer, noPixels, oneClickUp, Qt::AltModifier);
  EXPECT_EQ(view().viewToDocument(pointer).value(), before);
  sendWheel(view(), pointer, noPixels, -oneClickUp, Qt::AltModifier);
  EXPECT_EQ(offset(), QPointF(600, 400));
}

TEST_F(CanvasInputTest, ZoomStaysWithinTheScrollBounds) {
  test::zoomToIndex(*document, 15);
  document->setViewportOffset(QPointF(-100, -75));
  sendWheel(view(), {400, 300}, noPixels, -oneClickUp, Qt::AltModifier);
  EXPECT_EQ(offset(), QPointF(-200, -150));
}

TEST_F(CanvasInputTest, APinchStepsBeyondOneFifth) {
  sendGesture(view(), Qt::BeginNativeGesture, 0, {100, 100});
  sendGesture(view(), Qt::ZoomNativeGesture, 0.19, {100, 100});
  EXPECT_EQ(document->zoomLevelIndex.value(), 14);
  sendGesture(view(), Qt::ZoomNativeGesture, 0.02, {100, 100});
  EXPECT_EQ(document->zoomLevelIndex.value(), 15);
  EXPECT_EQ(view().magnifyAccumulator(), 0.0);
  sendGesture(view(), Qt::ZoomNativeGesture, -0.2, {100, 100});
  EXPECT_EQ(document->zoomLevelIndex.value(), 15);
  sendGesture(view(), Qt::ZoomNativeGesture, -0.01, {100, 100});
  EXPECT_EQ(document->zoomLevelIndex.value(), 14);
  sendGesture(view(), Qt::ZoomNativeGesture, 0.1, {100, 100});
  sendGesture(view(), Qt::EndNativeGesture, 0, {100, 100});
  EXPECT_EQ(view().magnifyAccumulator(), 0.0);
}

TEST_F(CanvasInputTest, APinchAtTheEndsOfTheTableOnlyResetsItsAccumulator) {
  test::zoomToIndex(*document, 28);
  sendGesture(view(), Qt::ZoomNativeGesture, 0.25, {100, 100});
  EXPECT_EQ(document->zoomLevelIndex.value(), 28);
  EXPECT_EQ(view().magnifyAccumulator(), 0.0);
  test::zoomToIndex(*document, 0);
  sendGesture(view(), Qt::ZoomNativeGesture, -0.25, {100, 100});
  EXPECT_EQ(document->zoomLevelIndex.value(), 0);
  EXPECT_EQ(view().magnifyAccumulator(), 0.0);
}

TEST_F(CanvasInputTest, WithoutADocumentScrollAndPinchDoNothing) {
  pane.setDocument(nullptr);
  sendWheel(view(), {10, 10}, noPixels, oneClickUp);
  altWheel(oneClickUp);
  sendGesture(view(), Qt::ZoomNativeGesture, 0.5, {100, 100});
  EXPECT_EQ(view().magnifyAccumulator(), 0.0);
  EXPECT_EQ(view().scrollZoomAccumulator(), 0.0);
  EXPECT_EQ(scrollChanges, 0);
  EXPECT_FALSE(view().viewToDocument({1, 1}).has_value());
  EXPECT_FALSE(view().viewToPixel({1, 1}).has_value());
}

TEST_F(CanvasInputTest, ViewPointsConvertToFractionalAndWholeDocumentPoints) {
  test::zoomToIndex(*document, 15);
  document->setViewportOffset(QPointF(-10, 20));
  EXPECT_EQ(view().viewToDocument({5, 5}).value(), QPointF(-7.5, 22.5));
  EXPECT_EQ(view().viewToPixel({5, 5}).value(), QPoint(-8, 22));
}

TEST_F(CanvasInputTest, ZoomKeysNeedTheCommandModifierAlone) {
  pressKey(view(), Qt::Key_Equal, Qt::ControlModifier);
  EXPECT_EQ(document->zoomLevelIndex.value(), 15);
  pressKey(view(), Qt::Key_Plus, Qt::ControlModifier);
  EXPECT_EQ(document->zoomLevelIndex.value(), 16);
  pressKey(view(), Qt::Key_Minus, Qt::ControlModifier);
  EXPECT_EQ(document->zoomLevelIndex.value(), 15);
  pressKey(view(), Qt::Key_1, Qt::ControlModifier);
  EXPECT_EQ(document->zoomLevelIndex.value(), 14);
  pressKey(view(), Qt::Key_0, Qt::ControlModifier);
  EXPECT_DOUBLE_EQ(document->customZoomLevel.value().value(), 260.0 / 1500.0);
  pressKey(view(), Qt::Key_Equal);
  pressKey(view(), Qt::Key_Minus, Qt::ControlModifier | Qt::AltModifier);
  EXPECT_TRUE(document->customZoomLevel.value().has_value());
}

TEST_F(CanvasInputTest, PlusZoomsInHoweverItIsTyped) {
  pressKey(view(), Qt::Key_Plus, Qt::ControlModifier | Qt::ShiftModifier);
  EXPECT_EQ(document->zoomLevelIndex.value(), 15);
  pressKey(view(), Qt::Key_Equal, Qt::ControlModifier | Qt::ShiftModifier);
  EXPECT_EQ(document->zoomLevelIndex.value(), 16);
  pressKey(view(), Qt::Key_Plus, Qt::ControlModifier | Qt::KeypadModifier);
  EXPECT_EQ(document->zoomLevelIndex.value(), 17);
  pressKey(view(), Qt::Key_Plus);
  pressKey(view(), Qt::Key_Plus, Qt::ControlModifier | Qt::AltModifier);
  EXPECT_EQ(document->zoomLevelIndex.value(), 17);
}

TEST_F(CanvasInputTest, ZoomNotificationsActAtTheViewsCentre) {
  document->setViewportOffset(QPointF(600, 400));
  const QPointF centre = view().viewToDocument({200, 150}).value();
  NotificationCenter& posts = NotificationCenter::standard();
  posts.post(notification::zoomIn);
  EXPECT_EQ(document->zoomLevelIndex.value(), 15);
  EXPECT_EQ(view().viewToDocument({200, 150}).value(), centre);
  posts.post(notification::zoomOut);
  posts.post(notification::zoomOut);
  EXPECT_EQ(document->zoomLevelIndex.value(), 13);
  posts.post(notification::zoomActualSize);
  EXPECT_EQ(document->zoomLevelIndex.value(), 14);
  posts.post(notification::zoomFitOnScreen);
  EXPECT_DOUBLE_EQ(document->zoom(), 260.0 / 1500.0);
  EXPECT_EQ(offset(), QPointF(0, 0));
}

TEST_F(CanvasInputTest, ActualSizeBringsASmallCanvasBackIntoView) {
  const auto small = test::makeDocument(300, 200);
  test::keepInitialZoom(*small);
  pane.setDocument(small);
  test::zoomToIndex(*small, 20);
  small->setViewportOffset(QPointF(250, 150));
  NotificationCenter::standard().post(notification::zoomActualSize);
  EXPECT_EQ(small->viewportOffset.value(), QPointF(0, 0));
}

TEST_F(CanvasInputTest, SpaceHoldsTheHand) {
  tools.selectTool(Tool::zoom);
  sendKey(view(), QEvent::KeyPress, Qt::Key_Space);
  EXPECT_EQ(tools.toolStack.value(), (std::vector{Tool::zoom, Tool::hand}));
  sendKey(view(), QEvent::KeyRelease, Qt::Key_Space, Qt::NoModifier, true);
  sendKey(view(), QEvent::KeyPress, Qt::Key_Space, Qt::NoModifier, true);
  EXPECT_EQ(tools.toolStack.value(), (std::vector{Tool::zoom, Tool::hand}));
  EXPECT_EQ(view().cursor(), cursorImage(CursorShape::openHand, 1.0));
  sendKey(view(), QEvent::KeyRelease, Qt::Key_Space);
  EXPECT_EQ(tools.toolStack.value(), (std::vector{Tool::zoom}));
}

TEST_F(CanvasInputTest, SpacePushesNothingWhileTheHandIsSelected) {
  pressKey(view(), Qt::Key_Space);
  EXPECT_EQ(tools.toolStack.value(), (std::vector{Tool::hand}));
  tools.selectTool(Tool::zoom);
  sendKey(view(), QEvent::KeyPress, Qt::Key_Space, Qt::ShiftModifier);
  EXPECT_EQ(tools.toolStack.value(), (std::vector{Tool::zoom}));
}

TEST_F(CanvasInputTest, ControlTabCyclesDocumentsAndReleasingControlCommits) {
  test::PostCounter next(notification::cycleNextDocument);
  test::PostCounter previous(notification::cyclePreviousDocument);
  test::PostCounter commit(notification::commitMRUCycle);
  // On some desktops an event's modifiers exclude the modifier key that caused it, on others they include it.
  sendKey(view(), QEvent::KeyPress, Qt::Key_Control, Qt::NoModifier);
  sendKey(view(), QEvent::KeyPress, Qt::Key_Tab, Qt::ControlModifier);
  EXPECT_EQ(next.count, 1);
  sendKey(view(), QEvent::KeyPress, Qt::Key_Shift, Qt::ControlModifier);
  sendKey(view(), QEvent::KeyPress, Qt::Key_Backtab, Qt::ControlModifier | Qt::ShiftModifier);
  EXPECT_EQ(previous.count, 1);
  EXPECT_EQ(commit.count, 0);
  sendKey(view(), QEvent::KeyRelease, Qt::Key_Shift, Qt::ControlModifier);
  EXPECT_EQ(commit.count, 0);
  sendKey(view(), QEvent::KeyRelease, Qt::Key_Control, Qt::ControlModifier);
  EXPECT_EQ(commit.count, 1);
  sendKey(view(), QEvent::KeyPress, Qt::Key_Tab, Qt::ControlModifier | Qt::AltModifier);
  EXPECT_EQ(next.count, 1);
  EXPECT_EQ(previous.count, 1);
}

TEST_F(CanvasInputTest, AnyModifierChangeWithoutControlCommits) {
  test::PostCounter commit(notification::commitMRUCycle);
  pressKey(view(), Qt::Key_Shift);
  EXPECT_EQ(commit.count, 2);
}

TEST_F(CanvasInputTest, TheCursorPositionIsTheCanvasPixelUnderThePointer) {
  test::zoomToIndex(*document, 15);
  test::moveMouse(view(), {5, 9});
  EXPECT_EQ(document->cursorDocumentPosition.value(), std::optional(QPointF(2, 4)));
  document->setViewportOffset(QPointF(-50, 0));
  test::moveMouse(view(), {99, 10});
  EXPECT_EQ(document->cursorDocumentPosition.value(), std::nullopt);
  test::moveMouse(view(), {100, 10});
  EXPECT_EQ(document->cursorDocumentPosition.value(), std::optional(QPointF(0, 5)));
  QEvent leave(QEvent::Leave);
  QApplication::sendEvent(&view(), &leave);
  EXPECT_EQ(document->cursorDocumentPosition.value(), std::nullopt);
}

TEST_F(CanvasInputTest, TheCursorPositionFollowsWhenTheImageMovesUnderAStillPointer) {
  const auto position = [&] { return document->cursorDocumentPosition.value(); };
  test::moveMouse(view(), {100, 50});
  EXPECT_EQ(position(), QPointF(100, 50));
  sendWheel(view(), {100, 50}, noPixels, -oneClickUp);
  EXPECT_EQ(position(), QPointF(100, 90));
  pressKey(view(), Qt::Key_Equal, Qt::ControlModifier);
  EXPECT_EQ(position(), QPointF(150, 140));
  document->crop({0, 0, 40, 1500}, QStringLiteral("Crop"));
  EXPECT_EQ(offset().x(), 0.0);
  EXPECT_EQ(position(), std::nullopt);
  QEvent leave(QEvent::Leave);
  QApplication::sendEvent(&view(), &leave);
  document->setViewportOffset({0, 0});
  EXPECT_EQ(position(), std::nullopt);
}

TEST_F(CanvasInputTest, TheNextDocumentIsUnderTheStillPointer) {
  test::moveMouse(view(), {100, 50});
  const auto other = test::makeDocument(2000, 1500);
  test::keepInitialZoom(*other);
  pane.setDocument(other);
  EXPECT_EQ(document->cursorDocumentPosition.value(), std::nullopt);
  EXPECT_EQ(other->cursorDocumentPosition.value(), QPointF(100, 50));
}

TEST_F(CanvasInputTest, TheLastPixelIsInsideAndTheNextIsNot) {
  const auto small = test::makeDocument(10, 10);
  test::keepInitialZoom(*small);
  pane.setDocument(small);
  test::moveMouse(view(), {204.9, 154.9});
  EXPECT_EQ(small->cursorDocumentPosition.value(), std::optional(QPointF(9, 9)));
  test::moveMouse(view(), {205.0, 154.9});
  EXPECT_EQ(small->cursorDocumentPosition.value(), std::nullopt);
}

TEST(CanvasFocus, ReturnsToTheCanvasUnlessTextIsBeingTyped) {
  ToolState tools;
  QWidget window;
  auto* layout = new QVBoxLayout(&window);
  auto* field = new QLineEdit;
  auto* button = new QWidget;
  button->setFocusPolicy(Qt::StrongFocus);
  auto* pane = new CanvasPaneView(MetalContext::shared(), tools);
  layout->addWidget(field);
  layout->addWidget(button);
  layout->addWidget(pane);
  const auto document = test::makeDocument(20, 20);
  pane->setDocument(document);
  window.show();
  field->setFocus();
  NotificationCenter::standard().post(notification::focusCanvas);
  EXPECT_EQ(window.focusWidget(), field);
  button->setFocus();
  NotificationCenter::standard().post(notification::focusCanvas);
  EXPECT_EQ(window.focusWidget(), &pane->canvasView().container().mtkView());
}

}  // namespace
}  // namespace orvanel
