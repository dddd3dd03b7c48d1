// The match that a wand gesture keeps, against the plain flood and the kernels that see every pixel.
#include "raster/WandMatch.h"

#include <gtest/gtest.h>

#include <atomic>

#include "raster/WandReference.h"

namespace orvanel {
namespace {

using reference::colorAt;
using reference::context;
using reference::speckled;

/// What the flood finds in the plainest way, antialiased by its kernel if wanted.
Surface expectedFlood(const Surface& sample, int x, int y, const Color4& seed, float tolerance,
                      WandEdges edges) {
  const std::vector<bool> found = reference::flooded(reference::imageOf(sample), x, y, seed, tolerance);
  Surface mask = reference::maskOf(sample.width(), sample.height(), [&](int column, int row) {
    return found[static_cast<std::size_t>(row * sample.width() + column)] ? 1.0F : 0.0F;
  });
  if (edges == WandEdges::antialiased) context().magicWandAntialias(mask);
  return mask;
}

Surface written(const WandMatch& match, const Surface& sample, WandEdges edges) {
  Surface mask(maskPixelFormat, sample.width(), sample.height());
  context().fillMask(mask, 0.5F);
  match.writeTo(mask, edges);
  return mask;
}

/// Marks pixels of an `rgba8` surface black.
void blacken(Surface& surface, const PixelRect& rect) {
  const std::uint32_t black = 0xFF000000U;
  const std::vector<std::uint32_t> pixels(
      static_cast<std::size_t>(rect.width) * static_cast<std::size_t>(rect.height), black);
  surface.writeRect(rect, reinterpret_cast<const std::byte*>(pixels.data()),
                    static_cast<std::size_t>(rect.width) * sizeof(black));
}

Surface white(int width, int height) {
  Surface surface(PixelFormat::rgba8Unorm, width, height);
  surface.fill(0xFFFFFFFFU);
  return surface;
}

constexpr Color4 whiteColor{1.0F, 1.0F, 1.0F, 1.0F};

TEST(WandMatch, FloodsAsAQueueWouldAtEveryToleranceOfAGesture) {
  std::mt19937 random(61);
  for (const PixelFormat format : reference::layerFormats) {
    for (const auto& [width, height] : {std::pair{1, 1}, {129, 3}, {200, 300}}) {
      for (const unsigned percent : {0U, 40U, 60U, 90U}) {
        const Surface sample = speckled(format, width, height, percent, random);
        const int x = static_cast<int>(random() % static_cast<unsigned>(width));
        const int y = static_cast<int>(random() % static_cast<unsigned>(height));
        const Color4 seed = colorAt(sample, x, y);
        WandMatch match(sample);
        for (const float tolerance : {0.0F, 0.6F, 0.2F, 1.0F, 0.01F}) {
          ASSERT_TRUE(match.flood(x, y, seed, tolerance));
          for (const WandEdges edges : {WandEdges::crisp, WandEdges::antialiased}) {
            const Surface expected = expectedFlood(sample, x, y, seed, tolerance, edges);
            ASSERT_TRUE(written(match, sample, edges).equals(expected));
          }
        }
      }
    }
  }
}

TEST(WandMatch, FindsAllThatTheKernelFinds) {
  std::mt19937 random(62);
  for (const PixelFormat format : reference::layerFormats) {
    const Surface sample = speckled(format, 300, 200, 55, random);
    WandMatch match(sample);
    for (const float tolerance : {0.0F, 0.5F, 1.0F, 0.1F}) {
      const Color4 seed = colorAt(sample, 150, 100);
      ASSERT_TRUE(match.findAll(seed, tolerance));
      Surface expected(maskPixelFormat, 300, 200);
      context().magicWandNonContiguous(sample, expected, seed, tolerance);
      EXPECT_TRUE(written(match, sample, WandEdges::crisp).equals(expected));
      context().magicWandAntialias(expected);
      EXPECT_TRUE(written(match, sample, WandEdges::antialiased).equals(expected));
    }
  }
}

TEST(WandMatch, ChangesBetweenFloodingAndFindingAll) {
  std::mt19937 random(63);
  const Surface sample = speckled(PixelFormat::rgba8Unorm, 260, 150, 50, random);
  const Color4 seed = colorAt(sample, 10, 10);
  WandMatch match(sample);
  ASSERT_TRUE(match.findAll(seed, 0.0F));
  ASSERT_TRUE(match.flood(10, 10, seed, 0.0F));
  EXPECT_TRUE(written(match, sample, WandEdges::crisp)
                  .equals(expectedFlood(sample, 10, 10, seed, 0.0F, WandEdges::crisp)));
}

TEST(WandMatch, FollowsAPathThatLeavesATileAndReturns) {
  // Walls across three tiles, open at alternate ends: one path winds through all of them.
  Surface sample = white(300, 257);
  for (int wall = 0; wall < 32; ++wall) blacken(sample, {wall % 2, 1 + 8 * wall, 299, 1});
  WandMatch match(sample);
  ASSERT_TRUE(match.flood(150, 0, whiteColor, 0.0F));
  EXPECT_TRUE(written(match, sample, WandEdges::antialiased)
                  .equals(expectedFlood(sample, 150, 0, whiteColor, 0.0F, WandEdges::antialiased)));
}

TEST(WandMatch, LooksOnlyAtTilesThatTheFloodReaches) {
  Surface sample = white(10 * tileSide, 10 * tileSide);
  // A ring of black around the second tile, within it.
  blacken(sample, {130, 2, 120, 1});
  blacken(sample, {130, 100, 120, 1});
  blacken(sample, {130, 2, 1, 99});
  blacken(sample, {249, 2, 1, 99});
  std::atomic<int> looked = 0;
  WandMatch match(sample.format(), sample.width(), sample.height(), [&](int index) {
    ++looked;
    return sample.tile(index);
  });
  ASSERT_TRUE(match.flood(150, 50, whiteColor, 0.0F));
  EXPECT_EQ(looked, 1);
  EXPECT_EQ(context().selectionBounds(written(match, sample, WandEdges::crisp)),
            (PixelRect{131, 3, 118, 97}));
  ASSERT_TRUE(match.flood(0, 0, whiteColor, 0.0F));
  EXPECT_EQ(looked, 100) << "each tile is looked up once";
  ASSERT_TRUE(match.flood(0, 0, whiteColor, 1.0F));
  EXPECT_EQ(looked, 100);
  EXPECT_TRUE(match.isFull());
}

TEST(WandMatch, TheSeedIsSelectedAndPassedThroughWhateverItsColour) {
  Surface sample = white(200, 200);
  blacken(sample, {130, 130, 1, 1});
  WandMatch match(sample);
  ASSERT_TRUE(match.flood(130, 130, {0.5F, 0.5F, 0.5F, 1.0F}, 0.0F));
  EXPECT_EQ(context().selectionBounds(written(match, sample, WandEdges::crisp)), (PixelRect{130, 130, 1, 1}));
  EXPECT_FALSE(match.isFull());
  ASSERT_TRUE(match.flood(130, 130, whiteColor, 0.0F));
  EXPECT_TRUE(match.isFull());
}

TEST(WandMatch, FindingNothingIsEmpty) {
  WandMatch match(white(200, 200));
  ASSERT_TRUE(match.findAll({0.0F, 0.0F, 0.0F, 1.0F}, 0.1F));
  EXPECT_TRUE(match.isEmpty());
  EXPECT_FALSE(match.isFull());
}

}  // namespace
}  // namespace orvanel
