#include "tools/selection/SelectionGesture.h"

#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <optional>
#include <utility>
#include <vector>

#include "model/ModelSupport.h"
#include "raster/HalfFloat.h"
#include "raster/MemoryBudget.h"
#include "raster/TileMemory.h"
#include "tools/selection/SelectionMove.h"
#include "tools/selection/ShapeCost.h"

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

/// A shape by name: what it may cost, and how it is written.
struct Shape {
  const char* name;
  std::function<std::uint64_t(const Document&)> cost;
  std::function<void(Selection&, const MetalContext&)> fill;
};

Shape rectangle(const PixelRect& rect, float feather) {
  return {"rectangle", [=](const Document& d) { return shapeCost::ofRect(d, rect, feather); },
          [=](Selection& shape, const MetalContext& context) { shape.setRect(rect, feather, context); }};
}

Shape ellipse(float x, float y, float across, float down, float feather) {
  return {"ellipse", [=](const Document& d) { return shapeCost::ofEllipse(d, x, y, across, down, feather); },
          [=](Selection& shape, const MetalContext& context) {
            shape.setEllipse(x, y, across, down, feather, context);
          }};
}

Shape polygon(const std::vector<PolygonPoint>& points) {
  return {"polygon", [=](const Document& d) { return shapeCost::ofPolygon(d, points); },
          [=](Selection& shape, const MetalContext& context) { shape.setPolygon(points, context); }};
}

std::vector<Shape> someShapes() {
  return {rectangle({0, 0, 128, 128}, 0.0F),
          rectangle({130, 5, 700, 600}, 0.0F),
          rectangle({300, 300, 300, 200}, 12.0F),
          rectangle({200, 200, 10, 10}, 90.0F),
          rectangle({0, 0, 900, 800}, 40.0F),
          ellipse(450.0F, 400.0F, 380.0F, 128.5F, 0.0F),
          ellipse(20.0F, 30.0F, 600.0F, 700.0F, 3.0F),
          ellipse(500.0F, 500.0F, 4000.0F, 4000.0F, 0.0F),
          ellipse(500.0F, 300.0F, 50.0F, 60.0F, 70.0F),
          polygon({{10.0F, 10.0F}, {890.0F, 30.0F}, {400.0F, 790.0F}}),
          polygon({{-900.0F, 128.0F}, {2000.0F, 128.0F}, {384.0F, -500.0F}, {384.0F, 3000.0F}}),
          polygon({{0.0F, 0.0F}, {900.0F, 0.0F}, {900.0F, 800.0F}, {0.0F, 800.0F}})};
}

std::uint64_t maskBytes(const Surface& mask) {
  std::uint64_t bytes = 0;
  for (int index = 0; index < mask.tileCount(); ++index) {
    if (!mask.tile(index).isUniform()) bytes += mask.tileBytes();
  }
  return bytes;
}

class ShapesWithoutMemory : public testing::Test {
 protected:
  void select(const Shape& shape, SelectionMode mode = SelectionMode::replace) const {
    SelectionGesture gesture(document, QStringLiteral("Select"));
    gesture.selectShape(
        mode, [&](Selection& selection) { shape.fill(selection, document->context()); },
        shape.cost(*document));
    gesture.close();
  }
  [[nodiscard]] const Surface& mask() const { return *document->selection.value()->maskTexture->texture; }
  [[nodiscard]] std::size_t records() const { return document->undoStack.operations().size(); }

  DocumentPtr document = makeDocument(900, 800);
};

TEST_F(ShapesWithoutMemory, AShapeTakesNoMoreThanItsCost) {
  for (const Shape& shape : someShapes()) {
    select(shape);
    EXPECT_LE(maskBytes(mask()), shape.cost(*document)) << shape.name;
    for (const auto& [dx, dy] : {std::pair{128, 0}, {1, 0}, {-37, 260}, {0, -5}}) {
      const std::uint64_t cost = shapeCost::ofMove(mask(), dx, dy);
      SelectionMove move(document);
      move.moveTo(dx, dy);
      EXPECT_LE(maskBytes(mask()), cost) << shape.name << " moved";
      move.takeBack();
    }
  }
}

TEST_F(ShapesWithoutMemory, AShapeOfWholeTilesNeedsNone) {
  const ScopedMemoryLimit limit(0);
  select(rectangle({128, 128, 256, 128}, 0.0F));
  EXPECT_EQ(document->context().selectionBounds(mask()), (PixelRect{128, 128, 256, 128}));
}

TEST_F(ShapesWithoutMemory, ARefusedShapeLeavesTheSelectionAsItWas) {
  select(rectangle({5, 5, 300, 300}, 0.0F));
  const Surface before = mask();
  const std::size_t recordsBefore = records();
  ChangeRecorder changes(*document);
  for (const Shape& shape :
       {rectangle({30, 40, 200, 200}, 20.0F), ellipse(400.0F, 300.0F, 200.0F, 100.0F, 5.0F),
        polygon({{10.0F, 10.0F}, {500.0F, 30.0F}, {200.0F, 700.0F}})}) {
    changes.clear();
    const ScopedMemoryLimit limit(shape.cost(*document) - 1);
    select(shape);
    EXPECT_EQ(changes.count<change::EditRefused>(), 1U) << shape.name;
    EXPECT_TRUE(mask().equals(before)) << shape.name;
    EXPECT_EQ(records(), recordsBefore) << shape.name;
  }
  const Shape added = rectangle({30, 40, 500, 200}, 0.0F);
  changes.clear();
  {
    const ScopedMemoryLimit limit(2 * added.cost(*document) - 1);
    select(added, SelectionMode::add);
  }
  EXPECT_EQ(changes.count<change::EditRefused>(), 1U) << "the shape's mask and the combined one";
  EXPECT_TRUE(mask().equals(before));
}

TEST_F(ShapesWithoutMemory, ARefusedMoveIsToldOnceAndPutsTheSelectionBack) {
  select(rectangle({128, 128, 256, 128}, 0.0F));
  const Surface before = mask();
  const std::size_t recordsBefore = records();
  const ChangeRecorder changes(*document);
  const ScopedMemoryLimit limit(0);
  SelectionMove move(document);
  move.moveTo(128, 0);
  EXPECT_EQ(changes.count<change::EditRefused>(), 0U);
  for (const int dx : {129, 130, 131}) move.moveTo(dx, 0);
  move.close();
  EXPECT_EQ(changes.count<change::EditRefused>(), 1U);
  EXPECT_TRUE(mask().equals(before));
  EXPECT_EQ(records(), recordsBefore);
}

}  // namespace
}  // namespace orvanel
