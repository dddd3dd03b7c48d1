#include "tools/selection/SelectionGesture.h"

#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <optional>
#include <vector>

#include "model/ModelSupport.h"
#include "raster/HalfFloat.h"
#include "raster/TileMemory.h"

namespace orvanel {
namespace {

using namespace test;

class SelectionGestures : public testing::Test {
 protected:
  void selectRect(SelectionMode mode, const PixelRect& rect) const {
    SelectionGesture gesture(document, QStringLiteral("Rectangle Select"));
    gesture.selectShape(mode, [&](Selection& shape) { shape.setRect(rect, 0.0F, document->context()); });
    gesture.close();
  }
  [[nodiscard]] const Selection& selection() const { return *document->selection.value(); }
  [[nodiscard]] float valueAt(int x, int y) const {
    return halfToFloat(static_cast<std::uint16_t>(selection().maskTexture->texture->pixelAt(x, y)));
  }
  [[nodiscard]] std::size_t records() const { return document->undoStack.operations().size(); }

  DocumentPtr document = makeDocument();
};

TEST_F(SelectionGestures, AShapeReplacesTheSelection) {
  selectRect(SelectionMode::replace, {0, 0, 10, 10});
  selectRect(SelectionMode::replace, {20, 0, 5, 5});
  EXPECT_EQ(document->context().selectionBounds(*selection().maskTexture->texture), (PixelRect{20, 0, 5, 5}));
  EXPECT_EQ(selection().flags(), (Selection::Flags{true, false}));
}

TEST_F(SelectionGestures, ModesCombineWithTheSelection) {
  selectRect(SelectionMode::replace, {0, 0, 10, 10});
  selectRect(SelectionMode::add, {8, 0, 10, 10});
  EXPECT_EQ(valueAt(17, 5), 1.0F);
  selectRect(SelectionMode::subtract, {0, 0, 4, 10});
  EXPECT_EQ(valueAt(3, 5), 0.0F);
  EXPECT_EQ(valueAt(4, 5), 1.0F);
  selectRect(SelectionMode::intersect, {0, 0, 6, 30});
  EXPECT_EQ(document->context().selectionBounds(*selection().maskTexture->texture), (PixelRect{4, 0, 2, 10}));
  EXPECT_EQ(records(), 4U);
}

TEST_F(SelectionGestures, WithNothingSelectedEveryModeReplaces) {
  for (const SelectionMode mode : {SelectionMode::add, SelectionMode::subtract, SelectionMode::intersect}) {
    selectRect(mode, {2, 2, 3, 3});
    EXPECT_EQ(document->context().selectionBounds(*selection().maskTexture->texture),
              (PixelRect{2, 2, 3, 3}));
    document->deselect();
  }
}

TEST_F(SelectionGestures, FlagsAreDerivedFromTheCombinedMask) {
  selectRect(SelectionMode::replace, {0, 0, 40, 20});
  selectRect(SelectionMode::add, {0, 10, 40, 20});
  EXPECT_EQ(selection().flags(), (Selection::Flags{true, true}));
  selectRect(SelectionMode::subtract, {0, 0, 1, 1});
  EXPECT_EQ(selection().flags(), (Selection::Flags{true, false}));
  selectRect(SelectionMode::subtract, {0, 0, 40, 30});
  EXPECT_EQ(selection().flags(), (Selection::Flags{false, false}));
}

TEST_F(SelectionGestures, NothingSelectedBeforeOrAfterLeavesNoRecord) {
  SelectionGesture click(document, QStringLiteral("Rectangle Select"));
  click.clear();
  click.close();
  EXPECT_EQ(records(), 0U);
  selectRect(SelectionMode::replace, {0, 0, 3, 3});
  SelectionGesture again(document, QStringLiteral("Rectangle Select"));
  again.clear();
  again.close();
  EXPECT_EQ(records(), 2U);
  EXPECT_EQ(document->activeSelection(), nullptr);
  document->undo();
  EXPECT_EQ(selection().flags(), (Selection::Flags{true, false}));
  EXPECT_EQ(valueAt(2, 2), 1.0F);
}

TEST_F(SelectionGestures, ADestroyedGestureLeavesNoRecord) {
  { const SelectionGesture gesture(document, QStringLiteral("Lasso Select")); }
  EXPECT_EQ(records(), 0U);
}

TEST_F(SelectionGestures, WithoutMemoryForTheShapeNothingChanges) {
  selectRect(SelectionMode::replace, {0, 0, 3, 3});
  SelectionGesture gesture(document, QStringLiteral("Rectangle Select"));
  {
    const tileMemory::ScopedSurfaceFailure failure(0);
    gesture.selectShape(SelectionMode::add, [&](Selection& shape) { shape.selectAll(document->context()); });
  }
  gesture.close();
  EXPECT_EQ(document->context().selectionBounds(*selection().maskTexture->texture), (PixelRect{0, 0, 3, 3}));
  EXPECT_EQ(records(), 1U);
}

TEST_F(SelectionGestures, AShapeThatCoversNoPixelLeavesTheSelectionAndNoRecordInEveryMode) {
  const MetalContext& context = document->context();
  const std::array<PolygonPoint, 3> line{{{2.0F, 2.0F}, {9.0F, 9.0F}, {20.0F, 20.0F}}};
  const std::array<PolygonPoint, 3> alongTheEdge{{{0.0F, 2.0F}, {0.0F, 9.0F}, {0.0F, 20.0F}}};
  const std::vector<std::function<void(Selection&)>> shapes{
      [&](Selection& shape) { shape.setPolygon(line, context); },
      [&](Selection& shape) { shape.setPolygon(alongTheEdge, context); },
      // Only an empty corner of its box is on the canvas.
      [&](Selection& shape) { shape.setEllipse(50.0F, 40.0F, 11.0F, 11.0F, 0.0F, context); },
      [&](Selection& shape) {
        shape.setRect({5, 5, 0, 3}, 0.0F, context);
      },
  };
  const auto draw = [&](SelectionMode mode, const std::function<void(Selection&)>& fill) {
    SelectionGesture gesture(document, QStringLiteral("Lasso Select"));
    gesture.selectShape(mode, fill);
    gesture.close();
  };
  for (const auto& fill : shapes) draw(SelectionMode::replace, fill);
  EXPECT_EQ(records(), 0U);
  EXPECT_EQ(document->activeSelection(), nullptr);
  selectRect(SelectionMode::replace, {0, 0, 3, 3});
  for (const SelectionMode mode :
       {SelectionMode::replace, SelectionMode::add, SelectionMode::subtract, SelectionMode::intersect}) {
    for (const auto& fill : shapes) draw(mode, fill);
    EXPECT_EQ(context.selectionBounds(*selection().maskTexture->texture), (PixelRect{0, 0, 3, 3}));
    EXPECT_EQ(records(), 1U);
  }
}

TEST_F(SelectionGestures, AShapeThatCoversNoPixelTakesBackTheOneBefore) {
  selectRect(SelectionMode::replace, {0, 0, 3, 3});
  SelectionGesture gesture(document, QStringLiteral("Rectangle Select"));
  gesture.selectShape(SelectionMode::replace,
                      [&](Selection& shape) { shape.selectAll(document->context()); });
  gesture.selectShape(SelectionMode::replace, [&](Selection& shape) { shape.clear(document->context()); });
  gesture.close();
  EXPECT_EQ(document->context().selectionBounds(*selection().maskTexture->texture), (PixelRect{0, 0, 3, 3}));
  EXPECT_EQ(records(), 1U);
}

TEST_F(SelectionGestures, WithoutMemoryForTheRecordNothingChanges) {
  selectRect(SelectionMode::replace, {0, 0, 3, 3});
  std::optional<SelectionGesture> gesture;
  {
    const tileMemory::ScopedSurfaceFailure failure(0);
    gesture.emplace(document, QStringLiteral("Rectangle Select"));
  }
  gesture->selectShape(SelectionMode::replace,
                       [&](Selection& shape) { shape.selectAll(document->context()); });
  gesture->clear();
  gesture->close();
  EXPECT_EQ(document->context().selectionBounds(*selection().maskTexture->texture), (PixelRect{0, 0, 3, 3}));
  EXPECT_EQ(records(), 1U);
}

TEST_F(SelectionGestures, SelectingDoesNotMakeTheDocumentDirty) {
  selectRect(SelectionMode::replace, {0, 0, 3, 3});
  EXPECT_FALSE(document->isDirty.value());
}

TEST_F(SelectionGestures, ADrawnRectangleIsExpandedToPixelEdgesAndClipped) {
  EXPECT_EQ(drawnRect(*document, 1.2, 1.2, 1.9, 1.9), (PixelRect{1, 1, 3, 3}));
  EXPECT_EQ(drawnRect(*document, 5.0, 6.0, -3.0, -2.0), (PixelRect{2, 4, 3, 2}));
  EXPECT_EQ(drawnRect(*document, -10.0, -10.0, 1000.0, 12.0), (PixelRect{0, 0, 40, 2}));
  EXPECT_TRUE(drawnRect(*document, 50.0, 3.0, 10.0, 10.0).isEmpty());
  EXPECT_TRUE(drawnRect(*document, -20.0, 3.0, 10.0, 10.0).isEmpty());
  EXPECT_EQ(drawnRect(*document, -1e300, -1e300, 1.7e308, 1.7e308), (PixelRect{0, 0, 40, 30}));
}

}  // namespace
}  // namespace orvanel
