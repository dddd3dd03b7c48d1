// The selection tools, through the view that forwards the events.
#include <gtest/gtest.h>

#include "CanvasSupport.h"
#include "canvas/CanvasPaneView.h"

namespace orvanel {
namespace {

/// A canvas of half the view's size, shown in its middle at actual size.
class SelectionToolsOnCanvas : public testing::Test {
 protected:
  SelectionToolsOnCanvas() {
    test::keepInitialZoom(*document);
    pane.resize(400, 300);
    pane.setDocument(document);
    pane.show();
    origin = view().documentToView({0, 0}).value();
  }
  ScrollableMTKView& view() { return pane.canvasView().container().mtkView(); }
  [[nodiscard]] QPointF at(double x, double y) const { return origin + QPointF(x, y); }
  void press(QPointF point) { test::sendMouse(view(), QEvent::MouseButtonPress, point); }
  void drag(QPointF point) {
    test::sendMouse(view(), QEvent::MouseMove, point, Qt::NoButton, Qt::LeftButton);
  }
  void release(QPointF point) {
    test::sendMouse(view(), QEvent::MouseButtonRelease, point, Qt::LeftButton, Qt::NoButton);
  }
  void click(QPointF point) {
    press(point);
    release(point);
  }
  [[nodiscard]] std::optional<PixelRect> bounds() const {
    const auto selection = document->activeSelection();
    if (selection == nullptr) return std::nullopt;
    return document->context().selectionBounds(*selection->maskTexture->texture);
  }

  DocumentPtr document = test::makeDocument(200, 150);
  ToolState tools;
  CanvasPaneView pane{MetalContext::shared(), tools};
  QPointF origin;
};

TEST_F(SelectionToolsOnCanvas, EveryToolSelects) {
  tools.selectTool(Tool::rectangleSelect);
  test::dragMouse(view(), at(20, 30), at(60, 50));
  EXPECT_EQ(bounds(), (PixelRect{20, 30, 40, 20}));
  tools.selectTool(Tool::ellipseSelect);
  test::dragMouse(view(), at(100, 30), at(140, 50));
  EXPECT_EQ(bounds(), (PixelRect{100, 30, 40, 20}));
  tools.selectTool(Tool::lassoSelect);
  press(at(10, 10));
  for (const QPointF point : {at(50, 10), at(50, 40), at(10, 40)}) drag(point);
  release(at(10, 40));
  EXPECT_EQ(bounds(), (PixelRect{10, 10, 40, 30}));
  tools.selectTool(Tool::magicWand);
  click(at(190, 140));
  EXPECT_TRUE(document->selection.value()->isFullSelection.value()) << "the layer is white throughout";
}

TEST_F(SelectionToolsOnCanvas, ADoubleClickClosesThePolygon) {
  tools.selectTool(Tool::polygonalLassoSelect);
  for (const QPointF point : {at(20, 20), at(100, 20), at(100, 80)}) click(point);
  click(at(20, 80));
  test::sendMouse(view(), QEvent::MouseButtonDblClick, at(20, 80));
  release(at(20, 80));
  EXPECT_EQ(bounds(), (PixelRect{20, 20, 80, 60}));
}

TEST_F(SelectionToolsOnCanvas, TheSpaceBarMovesTheShapeInsteadOfTheView) {
  tools.selectTool(Tool::rectangleSelect);
  press(at(20, 20));
  drag(at(40, 40));
  test::sendKey(view(), QEvent::KeyPress, Qt::Key_Space);
  EXPECT_EQ(tools.currentTool(), Tool::rectangleSelect);
  drag(at(50, 45));
  test::sendKey(view(), QEvent::KeyRelease, Qt::Key_Space);
  release(at(50, 45));
  EXPECT_EQ(bounds(), (PixelRect{30, 25, 20, 20}));
  test::sendKey(view(), QEvent::KeyPress, Qt::Key_Space);
  EXPECT_EQ(tools.currentTool(), Tool::hand) << "between gestures it is the hand's";
  test::sendKey(view(), QEvent::KeyRelease, Qt::Key_Space);
}

TEST_F(SelectionToolsOnCanvas, ATemporaryHandDropsAPolygonButNotTheSelection) {
  tools.selectTool(Tool::rectangleSelect);
  test::dragMouse(view(), at(20, 30), at(60, 50));
  tools.selectTool(Tool::polygonalLassoSelect);
  for (const QPointF point : {at(100, 20), at(150, 20), at(150, 80)}) click(point);
  tools.pushTool(Tool::hand);
  tools.popTool();
  click(at(100, 20));
  EXPECT_EQ(bounds(), (PixelRect{20, 30, 40, 20}));
}

TEST_F(SelectionToolsOnCanvas, AChangeOfToolInMidDragEndsTheGesture) {
  tools.selectTool(Tool::rectangleSelect);
  press(at(20, 20));
  drag(at(60, 60));
  tools.selectTool(Tool::ellipseSelect);
  drag(at(80, 80));
  release(at(80, 80));
  EXPECT_EQ(bounds(), std::nullopt);
  EXPECT_EQ(document->dragSize.value(), std::nullopt);
  test::dragMouse(view(), at(20, 30), at(60, 50));
  EXPECT_EQ(bounds(), (PixelRect{20, 30, 40, 20}));
}

TEST_F(SelectionToolsOnCanvas, HoveringTheSelectionShowsThatItMoves) {
  tools.selectTool(Tool::rectangleSelect);
  const auto imageAt = [&](QPointF point) {
    test::moveMouse(view(), point);
    return view().cursor();
  };
  test::dragMouse(view(), at(20, 30), at(60, 50));
  EXPECT_NE(imageAt(at(30, 40)), imageAt(at(100, 100)));
}

}  // namespace
}  // namespace orvanel
