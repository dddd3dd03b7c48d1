#include "model/LevelsAdjustment.h"

#include <gtest/gtest.h>

#include <numeric>

#include "model/PixelSupport.h"
#include "raster/TileMemory.h"

namespace orvanel {
namespace {

using namespace test;
using reference::Color;

constexpr Levels strong{.blackPoint = 51.0F, .whitePoint = 204.0F, .gamma = 2.0F};

/// A colour channel with levels applied at full weight.
double leveled(double value, const Levels& levels) {
  const double black = static_cast<double>(levels.blackPoint) / 255.0;
  const double white = static_cast<double>(levels.whitePoint) / 255.0;
  return std::pow(std::clamp((value - black) / (white - black), 0.0, 1.0),
                  1.0 / static_cast<double>(levels.gamma));
}

class LevelsAdjustmentTest : public testing::TestWithParam<ColorMode> {
 protected:
  [[nodiscard]] Surface pixels() const {
    if (document != nullptr) document->settle();
    return pixelsOf(*layer);
  }
  [[nodiscard]] LevelsAdjustment begin() const { return LevelsAdjustment::begin(document).value(); }
  void expectLeveled(const Surface& before, const Levels& levels) const {
    reference::Image expected = reference::imageOf(before);
    const std::shared_ptr<const Selection> selected = document->activeSelection();
    for (int y = 0; y < expected.height; ++y) {
      for (int x = 0; x < expected.width; ++x) {
        const double s = selected != nullptr
                             ? static_cast<double>(reference::maskAt(*selected->maskTexture->texture, x, y))
                             : 1.0;
        for (std::size_t c = 0; c < 3; ++c) {
          double& value = expected.at(x, y)[c];
          value += (leveled(value, levels) - value) * s;
        }
      }
    }
    reference::expectImage(pixels(), expected, 2e-5);
  }

  std::mt19937 random{37};
  DocumentPtr document = makeRandomDocument(GetParam(), random);
  std::shared_ptr<Layer> layer = document->allLayers().front();
};

INSTANTIATE_TEST_SUITE_P(Modes, LevelsAdjustmentTest, testing::ValuesIn(allColorModes), modeName);

TEST_P(LevelsAdjustmentTest, TheDefaultLevelsChangeNothing) {
  EXPECT_EQ(Levels{}.blackPoint, 0.0F);
  EXPECT_EQ(Levels{}.whitePoint, 255.0F);
  EXPECT_EQ(Levels{}.gamma, 1.0F);
  const Surface before = pixels();
  LevelsAdjustment adjustment = begin();
  EXPECT_EQ(adjustment.layerID(), layer->id);
  adjustment.apply(Levels{});
  reference::expectImage(pixels(), reference::imageOf(before));
}

TEST_P(LevelsAdjustmentTest, StretchesColoursBetweenThePointsAndPreservesAlpha) {
  const Surface before = pixels();
  LevelsAdjustment adjustment = begin();
  adjustment.apply(strong);
  expectLeveled(before, strong);
}

TEST_P(LevelsAdjustmentTest, PreviewsNeverCompound) {
  const Surface before = pixels();
  LevelsAdjustment adjustment = begin();
  adjustment.apply(strong);
  const Surface once = pixels();
  adjustment.apply({.blackPoint = 200.0F, .whitePoint = 201.0F, .gamma = 0.1F});
  adjustment.apply({.blackPoint = 0.0F, .whitePoint = 1.0F, .gamma = 9.99F});
  adjustment.apply(strong);
  EXPECT_TRUE(pixels().equals(once));
  expectLeveled(before, strong);
}

TEST_P(LevelsAdjustmentTest, WhiteAtOrBelowBlackIsAStepAtBlack) {
  const Surface before = pixels();
  LevelsAdjustment adjustment = begin();
  adjustment.apply({.blackPoint = 100.0F, .whitePoint = 50.0F, .gamma = 1.0F});
  const reference::Image old = reference::imageOf(before);
  const reference::Image now = reference::imageOf(pixels());
  for (std::size_t i = 0; i < old.pixels.size(); ++i) {
    for (std::size_t c = 0; c < 3; ++c) {
      // The side that black itself falls on is unspecified.
      if (std::abs(old.pixels[i][c] - 100.0 / 255.0) < 1e-6) continue;
      ASSERT_EQ(now.pixels[i][c], old.pixels[i][c] > 100.0 / 255.0 ? 1.0 : 0.0);
    }
    ASSERT_EQ(now.pixels[i][3], old.pixels[i][3]);
  }
}

TEST_P(LevelsAdjustmentTest, ASelectionLimitsPreviewAndResult) {
  selectRandomly(*document, random);
  const Surface before = pixels();
  LevelsAdjustment adjustment = begin();
  adjustment.apply(strong);
  expectLeveled(before, strong);
  adjustment.commit();
  expectLeveled(before, strong);
}

TEST_P(LevelsAdjustmentTest, ThePreviewUsesTheCurrentSelection) {
  const Surface before = pixels();
  LevelsAdjustment adjustment = begin();
  adjustment.apply(strong);
  selectRect(*document, {5, 5, 130, 20});
  adjustment.apply(strong);
  expectLeveled(before, strong);
  document->deselect();
  adjustment.apply(strong);
  expectLeveled(before, strong);
}

TEST_P(LevelsAdjustmentTest, ChangesThePixelsEvenIfTheMaskIsSelected) {
  addRandomMask(*layer, random);
  put(layer->isMaskSelected, true);
  const Surface before = pixels();
  const Surface mask = maskPixelsOf(*layer);
  LevelsAdjustment adjustment = begin();
  adjustment.apply(strong);
  adjustment.commit();
  expectLeveled(before, strong);
  EXPECT_TRUE(maskPixelsOf(*layer).equals(mask));
}

TEST_P(LevelsAdjustmentTest, CommitCycle) {
  expectPixelCycle(*document, "Levels", [&] {
    LevelsAdjustment adjustment = begin();
    adjustment.apply(strong);
    adjustment.commit();
  });
}

TEST_P(LevelsAdjustmentTest, CommittingWithoutAChangeStillLeavesARecord) {
  const Surface before = pixels();
  LevelsAdjustment adjustment = begin();
  EXPECT_TRUE(marksEdited(*document, [&] { adjustment.commit(); }));
  EXPECT_EQ(recordCount(*document), 1);
  EXPECT_EQ(document->undoStack.undoActionName(), "Levels");
  EXPECT_TRUE(pixels().equals(before));
}

TEST_P(LevelsAdjustmentTest, ACommittedRecordHoldsBothSides) {
  LevelsAdjustment adjustment = begin();
  adjustment.apply(strong);
  adjustment.commit();
  TextureSnapshot::waitForCompression();
  const auto after = TextureSnapshot::capture(*layer->texture.value(), document->context());
  TextureSnapshot::waitForCompression();
  // The new snapshot shares the tiles of the record's second one, so each is charged half.
  EXPECT_EQ(document->undoStack.totalMemoryCost(),
            adjustment.snapshotBefore()->compressedSize() + after->compressedSize());
}

TEST_P(LevelsAdjustmentTest, APreviewOnlyRequestsCompositing) {
  LevelsAdjustment adjustment = begin();
  document->setDirty(false);
  put(document->needsCompositing, false);
  adjustment.apply(strong);
  EXPECT_FALSE(document->isDirty.value());
  EXPECT_TRUE(document->needsCompositing.value());
  EXPECT_EQ(recordCount(*document), 0);
}

TEST_P(LevelsAdjustmentTest, CancelRestoresTheOriginalPixelsExactly) {
  const Surface before = pixels();
  LevelsAdjustment adjustment = begin();
  for (int i = 1; i < 30; ++i) {
    adjustment.apply({.blackPoint = static_cast<float>(i),
                      .whitePoint = 255.0F - static_cast<float>(i),
                      .gamma = 0.1F * static_cast<float>(i)});
  }
  document->setDirty(false);
  put(document->needsCompositing, false);
  EXPECT_TRUE(marksThumbnails(*layer, [&] { adjustment.cancel(); }));
  EXPECT_TRUE(pixels().equals(before));
  EXPECT_FALSE(document->isDirty.value());
  EXPECT_TRUE(document->needsCompositing.value());
  EXPECT_EQ(recordCount(*document), 0);
}

TEST_P(LevelsAdjustmentTest, CommitMarksTheThumbnails) {
  LevelsAdjustment adjustment = begin();
  EXPECT_TRUE(marksThumbnails(*layer, [&] { adjustment.commit(); }));
}

TEST_P(LevelsAdjustmentTest, ActivatingAnotherLayerDoesNotRetargetTheAdjustment) {
  LevelsAdjustment adjustment = begin();
  document->addLayer("Other");
  const Surface before = pixels();
  adjustment.apply(strong);
  expectLeveled(before, strong);
}

TEST_P(LevelsAdjustmentTest, DoesNotBeginWithoutAnActiveLayerWithPixels) {
  document->addFolder("F");
  EXPECT_FALSE(LevelsAdjustment::begin(document));
  document->selectNode(std::nullopt);
  EXPECT_FALSE(LevelsAdjustment::begin(document));
  document->selectNode(layer->id);
  put(layer->texture, nullptr);
  EXPECT_FALSE(LevelsAdjustment::begin(document));
}

TEST_P(LevelsAdjustmentTest, DoesNotBeginWithoutASnapshot) {
  const tileMemory::ScopedSurfaceFailure failure(0);
  EXPECT_FALSE(LevelsAdjustment::begin(document));
}

TEST_P(LevelsAdjustmentTest, AResultThatCannotBeCapturedIsReadAtTheFirstUndo) {
  const Surface before = pixels();
  LevelsAdjustment adjustment = begin();
  adjustment.apply(strong);
  const Surface after = pixels();
  {
    const tileMemory::ScopedSurfaceFailure failure(0);
    adjustment.commit();
  }
  ASSERT_EQ(recordCount(*document), 1);
  document->undo();
  EXPECT_TRUE(pixels().equals(before));
  document->redo();
  EXPECT_TRUE(pixels().equals(after));
}

TEST_P(LevelsAdjustmentTest, RemovingTheLayerEndsItSilently) {
  document->addLayer("Other");
  document->selectNode(layer->id);
  LevelsAdjustment adjustment = begin();
  const Surface before = pixels();
  document->removeNode(layer->id);
  expectNothing(*document, [&] {
    adjustment.apply(strong);
    adjustment.commit();
    adjustment.cancel();
  });
  EXPECT_TRUE(pixels().equals(before));
}

TEST_P(LevelsAdjustmentTest, ClosingTheDocumentEndsItSilently) {
  LevelsAdjustment adjustment = begin();
  const Surface before = pixels();
  document.reset();
  adjustment.apply(strong);
  adjustment.commit();
  adjustment.cancel();
  EXPECT_TRUE(pixels().equals(before));
}

// The histogram.

std::int64_t total(const LevelsHistogram& histogram) {
  return std::accumulate(histogram.begin(), histogram.end(), std::int64_t{0});
}

TEST(LevelsHistogramTest, CountsEachPixelOnceRegardlessOfAlpha) {
  Surface pixels(PixelFormat::rgba8Unorm, 4, 1);
  const std::array<std::uint32_t, 4> row{0x00FFFFFFU, 0xFFFFFFFFU, 0xFF000000U, 0x80010101U};
  pixels.writeRect({0, 0, 4, 1}, reinterpret_cast<const std::byte*>(row.data()), sizeof(row));
  const LevelsHistogram histogram = levelsHistogram(pixels);
  EXPECT_EQ(histogram[255], 2);
  EXPECT_EQ(histogram[0], 1);
  EXPECT_EQ(histogram[1], 1);
  EXPECT_EQ(total(histogram), 4);
}

TEST(LevelsHistogramTest, EveryGreyFallsIntoItsOwnBinInEveryMode) {
  for (const ColorMode mode : allColorModes) {
    Surface pixels(layerPixelFormat(mode), 256, 1);
    const auto step = static_cast<std::size_t>(pixels.pixelBytes());
    for (std::uint64_t grey = 0; grey < 256; ++grey) {
      // Half floats can't represent multiples of 1/255, so use the middle of the bin.
      const std::uint64_t half =
          floatToHalf((static_cast<float>(grey) + (grey < 255 ? 0.5F : 0.0F)) / 255.0F);
      const std::array<std::uint64_t, 4> bits{grey, grey * 257U, grey | grey << 8U | grey << 16U,
                                              half | half << 16U | half << 32U};
      pixels.writeRect({static_cast<int>(grey), 0, 1, 1},
                       reinterpret_cast<const std::byte*>(&bits[rawValue(mode)]), step);
    }
    for (const std::int64_t count : levelsHistogram(pixels)) EXPECT_EQ(count, 1) << rawValue(mode);
  }
}

TEST(LevelsHistogramTest, ColoursAreWeightedAndTruncated) {
  const auto binOf = [](std::uint64_t bits, PixelFormat format) {
    Surface pixel(format, 1, 1);
    pixel.fill(bits);
    const LevelsHistogram histogram = levelsHistogram(pixel);
    return std::find(histogram.begin(), histogram.end(), 1) - histogram.begin();
  };
  EXPECT_EQ(binOf(0x0000FFU, PixelFormat::rgba8Unorm), 76) << "0.299 x 255 = 76.2";
  EXPECT_EQ(binOf(0x00FF00U, PixelFormat::rgba8Unorm), 149) << "0.587 x 255 = 149.7";
  EXPECT_EQ(binOf(0xFF0000U, PixelFormat::rgba8Unorm), 29) << "0.114 x 255 = 29.1";
  EXPECT_EQ(binOf(0x3C00U, PixelFormat::rgba16Float), 76);
  EXPECT_EQ(binOf(0x3C000000U, PixelFormat::rgba16Float), 149);
  EXPECT_EQ(binOf(0x3C0000000000U, PixelFormat::rgba16Float), 29);
  EXPECT_EQ(binOf(0x00FFU, PixelFormat::rg16Unorm), 0);
  EXPECT_EQ(binOf(0xAB42U, PixelFormat::rg8Unorm), 0x42);
}

TEST(LevelsHistogramTest, ValuesBeyondTheScaleAreClampedToItsEnds) {
  const auto countsOf = [](float value) {
    Surface pixel(PixelFormat::rgba16Float, 1, 1);
    pixel.fill(std::uint64_t{floatToHalf(value)} * 0x000100010001U);
    return levelsHistogram(pixel);
  };
  EXPECT_EQ(countsOf(7.0F)[255], 1);
  EXPECT_EQ(countsOf(-7.0F)[0], 1);
  EXPECT_EQ(countsOf(std::numeric_limits<float>::infinity())[255], 1);
  EXPECT_EQ(countsOf(std::numeric_limits<float>::quiet_NaN())[0], 1);
}

TEST(LevelsHistogramTest, ReadsEveryPixelOfASmallCanvasAndAGridOfALargeOne) {
  EXPECT_EQ(total(levelsHistogram(Surface(PixelFormat::rgba8Unorm, 512, 512))), 512 * 512);
  EXPECT_EQ(total(levelsHistogram(Surface(PixelFormat::rgba8Unorm, 1000, 500))), 500000);
  EXPECT_EQ(total(levelsHistogram(Surface(PixelFormat::rgba8Unorm, 1001, 500))), 501 * 250)
      << "one column more";
  EXPECT_EQ(total(levelsHistogram(Surface(PixelFormat::rgba8Unorm, 2000, 1000))), 1000 * 500);
  EXPECT_EQ(total(levelsHistogram(Surface(PixelFormat::rg8Unorm, 2001, 1001))), 667 * 334);
}

TEST(LevelsHistogramTest, TheGridStartsAtTheFirstPixel) {
  Surface pixels(PixelFormat::rg8Unorm, 2000, 1000);
  const std::array<std::uint16_t, 3> row{0x0AU, 0x14U, 0x1EU};
  pixels.writeRect({0, 0, 3, 1}, reinterpret_cast<const std::byte*>(row.data()), sizeof(row));
  pixels.writeRect({0, 1, 3, 1}, reinterpret_cast<const std::byte*>(row.data()), sizeof(row));
  const LevelsHistogram histogram = levelsHistogram(pixels);
  EXPECT_EQ(histogram[0x0A], 1);
  EXPECT_EQ(histogram[0x14], 0);
  EXPECT_EQ(histogram[0x1E], 1);
}

}  // namespace
}  // namespace orvanel
