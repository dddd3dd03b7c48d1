#include "tools/selection/MagicWand.h"

#include <gtest/gtest.h>

#include "model/LevelsAdjustment.h"
#include "model/ModelSupport.h"
#include "raster/HalfFloat.h"
#include "raster/MemoryBudget.h"
#include "raster/TileMemory.h"

namespace orvanel {
namespace {

using namespace test;

constexpr MagicWandSettings exact{.tolerance = 0.0F, .antialiased = false};

class MagicWands : public testing::TestWithParam<ColorMode> {
 protected:
  /// Fills a rectangle on the active layer.
  void paint(const PixelRect& rect, const DisplayColor& color) const {
    document->ensureSelection();
    writableSelection(*document).setRect(rect, 0.0F, document->context());
    document->fillSelection(color);
    writableSelection(*document).clear(document->context());
  }
  void press(int x, int y, const MagicWandSettings& settings,
             SelectionMode mode = SelectionMode::replace) const {
    const auto wand = MagicWand::press(document, x, y, mode, settings);
    ASSERT_NE(wand, nullptr);
    wand->release();
  }
  [[nodiscard]] std::optional<PixelRect> bounds() const {
    return document->context().selectionBounds(*document->selection.value()->maskTexture->texture);
  }
  [[nodiscard]] bool isSelected(int x, int y) const {
    return document->selection.value()->isPointSelected(x, y);
  }

  DocumentPtr document = makeDocument(40, 30, GetParam());
  static constexpr DisplayColor dark{0.2F, 0.2F, 0.2F, 1.0F};
};

TEST_P(MagicWands, SelectsPixelsConnectedToTheSeed) {
  paint({5, 5, 4, 4}, dark);
  paint({9, 9, 4, 4}, dark);  // touches only at a corner
  press(6, 6, exact);
  EXPECT_EQ(bounds(), (PixelRect{5, 5, 4, 4}));
  EXPECT_EQ(document->undoStack.undoActionName(), "Magic Wand");
}

TEST_P(MagicWands, SelectsAllSimilarPixelsWhenNotContiguous) {
  paint({5, 5, 4, 4}, dark);
  paint({20, 20, 4, 4}, dark);
  MagicWandSettings settings = exact;
  settings.contiguous = false;
  press(6, 6, settings);
  EXPECT_EQ(bounds(), (PixelRect{5, 5, 19, 19}));
  EXPECT_FALSE(isSelected(15, 15));
}

TEST_P(MagicWands, APixelUnlikeItsNeighboursIsSelectedAlone) {
  paint({7, 7, 1, 1}, dark);
  press(7, 7, exact);
  EXPECT_EQ(bounds(), (PixelRect{7, 7, 1, 1}));
}

TEST_P(MagicWands, ToleranceIsOnTheEightBitScale) {
  paint({0, 0, 20, 30}, {100.0F / 255.0F, 100.0F / 255.0F, 100.0F / 255.0F, 1.0F});
  paint({20, 0, 20, 30}, {110.0F / 255.0F, 110.0F / 255.0F, 110.0F / 255.0F, 1.0F});
  MagicWandSettings settings = exact;
  settings.tolerance = 9.5F;
  press(3, 3, settings);
  EXPECT_EQ(bounds(), (PixelRect{0, 0, 20, 30}));
  settings.tolerance = 10.5F;
  press(3, 3, settings);
  EXPECT_EQ(bounds(), (PixelRect{0, 0, 40, 30}));
  EXPECT_TRUE(document->selection.value()->isFullSelection.value());
}

TEST_P(MagicWands, ModesCombineWithTheSelectionAtThePress) {
  paint({0, 0, 10, 30}, dark);
  paint({10, 0, 10, 30}, {0.6F, 0.6F, 0.6F, 1.0F});
  press(3, 3, exact);
  press(15, 3, exact, SelectionMode::add);
  EXPECT_EQ(bounds(), (PixelRect{0, 0, 20, 30}));
  press(3, 3, exact, SelectionMode::subtract);
  EXPECT_EQ(bounds(), (PixelRect{10, 0, 10, 30}));
}

TEST_P(MagicWands, EveryToleranceStartsFromTheSelectionAtThePress) {
  paint({0, 0, 10, 30}, dark);
  press(3, 3, exact);
  const auto wand = MagicWand::press(document, 30, 3, SelectionMode::add, exact);
  EXPECT_TRUE(document->selection.value()->isFullSelection.value());
  MagicWandSettings wide = exact;
  wide.tolerance = 255.0F;
  wand->select(wide);
  wand->select(exact);
  wand->release();
  EXPECT_EQ(document->undoStack.operations().size(), 3U);  // one fill, two presses
  document->undo();
  EXPECT_EQ(bounds(), (PixelRect{0, 0, 10, 30}));
}

TEST_P(MagicWands, SamplesTheCompositeOfAllLayers) {
  document->addLayer(QStringLiteral("Empty"));
  MagicWandSettings settings = exact;
  settings.sampleAllLayers = true;
  press(10, 10, settings);
  EXPECT_TRUE(document->selection.value()->isFullSelection.value()) << "the white layer beneath";
  paint({0, 0, 3, 3}, dark);
  press(1, 1, settings);
  EXPECT_EQ(bounds(), (PixelRect{0, 0, 3, 3})) << "the rectangle just painted";
}

TEST_P(MagicWands, SamplesTheMaskBeingEdited) {
  const std::shared_ptr<Layer> layer = document->activeLayer();
  document->context().fillRectMask(writable(addMask(*layer)->maskTexture->texture), {3, 4, 5, 6}, 0.0F);
  put(layer->isMaskSelected, true);
  press(4, 5, exact);
  EXPECT_EQ(bounds(), (PixelRect{3, 4, 5, 6}));
}

TEST_P(MagicWands, SamplesWhatAnOpenAdjustmentShows) {
  paint({0, 0, 20, 30}, {0.6F, 0.6F, 0.6F, 1.0F});
  std::optional<LevelsAdjustment> levels = LevelsAdjustment::begin(document);
  ASSERT_TRUE(levels.has_value());
  levels->apply({.whitePoint = 100.0F});
  press(3, 3, exact);
  EXPECT_EQ(bounds(), (PixelRect{0, 0, 40, 30})) << "both halves have become white";
  EXPECT_TRUE(levels->isOpen());
}

TEST_P(MagicWands, NeedsMemoryOnlyForTilesThatItMayDivide) {
  document = makeDocument(10 * tileSide, 10 * tileSide, GetParam());
  const auto isAdmitted = [this](std::uint64_t bytes) {
    const ScopedMemoryLimit limit(bytes);
    return MagicWand::press(document, 6, 6, SelectionMode::replace, exact) != nullptr;
  };
  EXPECT_TRUE(isAdmitted(0)) << "a uniform image matches as a whole";
  paint({5, 5, 4, 4}, dark);
  EXPECT_FALSE(isAdmitted(0));
  EXPECT_TRUE(isAdmitted(std::uint64_t{24} * tilePixels)) << "one tile, and two that it may soften";
  const std::shared_ptr<Layer> layer = document->activeLayer();
  document->context().fillRectMask(writable(addMask(*layer)->maskTexture->texture), {3, 4, 5, 6}, 0.0F);
  put(layer->isMaskSelected, true);
  EXPECT_TRUE(isAdmitted(std::uint64_t{24} * tilePixels)) << "the mask's own tile is converted as well";
}

TEST_P(MagicWands, WithoutMemoryToFlattenNothingIsSelected) {
  document->addLayer(QStringLiteral("Above"));
  paint({5, 5, 4, 4}, dark);
  const ScopedMemoryLimit limit(0);
  MagicWandSettings settings = exact;
  settings.sampleAllLayers = true;
  EXPECT_EQ(MagicWand::press(document, 6, 6, SelectionMode::replace, settings), nullptr);
}

TEST_P(MagicWands, IfTheFloodRunsOutOfMemoryTheSelectionAtThePressIsKept) {
  document->selectAll();
  const auto wand = MagicWand::press(document, 5, 5, SelectionMode::replace, exact);
  {
    const tileMemory::ScopedSurfaceFailure failure(0);
    wand->select(exact);
  }
  wand->release();
  EXPECT_TRUE(document->selection.value()->isFullSelection.value());
  EXPECT_EQ(bounds(), (PixelRect{0, 0, 40, 30}));
}

TEST_P(MagicWands, NothingHappensOutsideTheCanvasOrOnAFolder) {
  EXPECT_EQ(MagicWand::press(document, -1, 0, SelectionMode::replace, exact), nullptr);
  EXPECT_EQ(MagicWand::press(document, 40, 0, SelectionMode::replace, exact), nullptr);
  EXPECT_EQ(MagicWand::press(document, 0, 30, SelectionMode::replace, exact), nullptr);
  document->addFolder(QStringLiteral("Folder"));
  EXPECT_EQ(MagicWand::press(document, 5, 5, SelectionMode::replace, exact), nullptr);
  EXPECT_EQ(document->selection.value(), nullptr);
}

TEST_P(MagicWands, AntialiasingSoftensStairsAndKeepsStraightEdgesCrisp) {
  paint({0, 0, 20, 30}, dark);
  MagicWandSettings settings = exact;
  settings.antialiased = true;
  press(3, 3, settings);
  EXPECT_EQ(bounds(), (PixelRect{0, 0, 20, 30}));
  paint({20, 0, 1, 29}, dark);
  press(3, 3, settings);
  const auto value = document->selection.value()->maskTexture->texture->pixelAt(20, 29);
  EXPECT_EQ(halfToFloat(static_cast<std::uint16_t>(value)), 0.5F);
}

INSTANTIATE_TEST_SUITE_P(Modes, MagicWands, testing::ValuesIn(allColorModes));

}  // namespace
}  // namespace orvanel
