#include "raster/Surface.h"

#include <gtest/gtest.h>

#include <random>
#include <tuple>
#include <vector>

#include "raster/RandomSurface.h"
#include "raster/Regularity.h"
#include "raster/TileMemory.h"

namespace orvanel {
namespace {

TEST(Surface, ANewSurfaceIsZeroAndTakesNoPixelMemory) {
  const std::size_t before = tileMemory::bytesInUse();
  const Surface surface(PixelFormat::rgba16Float, 16384, 16384);
  EXPECT_EQ(tileMemory::bytesInUse(), before);
  EXPECT_EQ(surface.pixelAt(16383, 16383), 0U);
  EXPECT_EQ(surface.byteSize(), 16384LL * 16384 * 8);
}

TEST(Surface, ACopySharesTilesUntilOneSideWrites) {
  std::mt19937 random(1);
  Surface original(PixelFormat::rgba8Unorm, 300, 200);
  for (int index = 0; index < original.tileCount(); ++index) fillRandomTile(original, index, random);
  const std::size_t before = tileMemory::bytesInUse();
  const Surface copy = original;
  EXPECT_EQ(tileMemory::bytesInUse(), before);
  const std::uint64_t kept = copy.pixelAt(5, 5);
  const std::uint32_t changed = ~static_cast<std::uint32_t>(kept);
  original.writeRect({5, 5, 1, 1}, reinterpret_cast<const std::byte*>(&changed), 4);
  EXPECT_EQ(tileMemory::bytesInUse(), before + original.tileBytes());
  EXPECT_EQ(original.pixelAt(5, 5), changed);
  EXPECT_EQ(copy.pixelAt(5, 5), kept);
  EXPECT_EQ(copy.tile(1), original.tile(1));
}

TEST(Surface, EveryWriteGivesTheTileANewVersionAndLeavesOthersAlone) {
  std::mt19937 random(2);
  Surface surface(PixelFormat::rg16Unorm, 300, 200);
  for (int index = 0; index < surface.tileCount(); ++index) fillRandomTile(surface, index, random);
  std::vector<std::uint64_t> versions;
  for (int index = 0; index < surface.tileCount(); ++index) versions.push_back(surface.tile(index).version());
  (void)surface.editTile(2);
  for (int index = 0; index < surface.tileCount(); ++index) {
    EXPECT_EQ(surface.tile(index).version() != versions[static_cast<std::size_t>(index)], index == 2);
  }
}

TEST(Surface, RectanglesReadBackWhatWasWrittenAcrossTileBorders) {
  std::mt19937 random(3);
  for (const PixelFormat format : {PixelFormat::r16Float, PixelFormat::rg8Unorm, PixelFormat::rg16Unorm,
                                   PixelFormat::rgba8Unorm, PixelFormat::rgba16Float}) {
    Surface surface = randomSurface(format, 391, 270, random);
    const Surface before = surface;
    const PixelRect rect{100, 120, 201, 99};
    const auto step = static_cast<std::size_t>(surface.pixelBytes());
    const std::size_t stride = 201 * step + 6;
    std::vector<std::byte> rows(stride * 99);
    for (std::byte& byte : rows) byte = static_cast<std::byte>(random());
    surface.writeRect(rect, rows.data(), stride);
    std::vector<std::byte> back(201 * step * 99);
    surface.readRect(rect, back.data(), 201 * step);
    for (std::size_t row = 0; row < 99; ++row) {
      ASSERT_EQ(std::memcmp(back.data() + row * 201 * step, rows.data() + row * stride, 201 * step), 0);
    }
    for (int y = 0; y < 270; ++y) {
      for (int x = 0; x < 391; ++x) {
        const bool inside = x >= 100 && x < 301 && y >= 120 && y < 219;
        if (inside) continue;
        ASSERT_EQ(surface.pixelAt(x, y), before.pixelAt(x, y)) << x << ", " << y;
      }
    }
  }
}

TEST(Surface, AWholeTileOfOneValueBecomesUniform) {
  Surface surface(PixelFormat::rgba8Unorm, 200, 200);
  const std::vector<std::uint32_t> white(200 * 200, 0xFFFFFFFFU);
  surface.writeRect(surface.bounds(), reinterpret_cast<const std::byte*>(white.data()), 200 * 4);
  for (int index = 0; index < surface.tileCount(); ++index) EXPECT_TRUE(surface.tile(index).isUniform());
  EXPECT_EQ(surface.pixelAt(199, 199), 0xFFFFFFFFU);
}

TEST(Surface, CollapsingLooksOnlyAtPixelsInsideTheCanvas) {
  Surface surface(PixelFormat::rgba8Unorm, 130, 128);
  std::byte* bytes = surface.editTile(1);
  const std::uint32_t grey = 0xFF808080U;
  for (int y = 0; y < tileSide; ++y) {
    for (int x = 0; x < 2; ++x) std::memcpy(bytes + static_cast<std::size_t>(y * tileSide + x) * 4, &grey, 4);
  }
  surface.collapseIfUniform(1);
  ASSERT_TRUE(surface.tile(1).isUniform());
  EXPECT_EQ(surface.pixelAt(129, 50), grey);
}

TEST(Surface, CopyingByWholeTilesSharesThem) {
  std::mt19937 random(4);
  Surface source(PixelFormat::rgba8Unorm, 512, 512);
  for (int index = 0; index < source.tileCount(); ++index) fillRandomTile(source, index, random);
  Surface shifted(PixelFormat::rgba8Unorm, 512, 512);
  copyPixels(source, source.bounds(), shifted, 128, 256);
  EXPECT_EQ(shifted.tile(shifted.tileIndex(1, 2)), source.tile(0));
  EXPECT_EQ(shifted.pixelAt(127, 300), 0U);
}

TEST(Surface, CopyingAnywhereMovesPixelsAndClipsBothSides) {
  std::mt19937 random(5);
  const Surface source = randomSurface(PixelFormat::rg8Unorm, 300, 300, random);
  for (const auto& [x, y] : {std::pair{-37, 13}, std::pair{250, -299}, std::pair{500, 0}}) {
    Surface destination(PixelFormat::rg8Unorm, 280, 310);
    copyPixels(source, source.bounds(), destination, x, y);
    for (int row = 0; row < 310; ++row) {
      for (int column = 0; column < 280; ++column) {
        ASSERT_EQ(destination.pixelAt(column, row), source.pixelAt(column - x, row - y));
      }
    }
  }
}

TEST(Surface, CopyingARectangleLeavesAllOtherPixelsAlone) {
  std::mt19937 random(6);
  for (const PixelFormat format : {PixelFormat::r16Float, PixelFormat::rg16Unorm, PixelFormat::rgba16Float}) {
    const Surface source = randomSurface(format, 700, 650, random);
    const Surface before = randomSurface(format, 640, 700, random);
    // Across few tiles and many, lined up with them and not, over the edges and within.
    for (const auto& [rect, x, y] : {std::tuple{PixelRect{3, 7, 100, 100}, 90, 20},
                                     {PixelRect{0, 0, 700, 650}, 37, -45},
                                     {PixelRect{128, 128, 500, 400}, 128, 0},
                                     {PixelRect{200, 100, 450, 550}, 190, 150}}) {
      Surface destination = before;
      copyPixels(source, rect, destination, x, y);
      for (int row = 0; row < destination.height(); ++row) {
        for (int column = 0; column < destination.width(); ++column) {
          const int fromX = column - x + rect.x;
          const int fromY = row - y + rect.y;
          const bool isCopied =
              !PixelRect{fromX, fromY, 1, 1}.intersected(rect).isEmpty() && fromX < 700 && fromY < 650;
          ASSERT_EQ(destination.pixelAt(column, row),
                    isCopied ? source.pixelAt(fromX, fromY) : before.pixelAt(column, row))
              << column << ", " << row;
        }
      }
    }
  }
}

TEST(Surface, CopyingUniformPixelsTakesNoMemory) {
  Surface source(PixelFormat::rgba8Unorm, 640, 640);
  source.fill(0xFF336699U);
  Surface destination(PixelFormat::rgba8Unorm, 640, 640);
  copyPixels(source, source.bounds(), destination, -50, -70);
  EXPECT_EQ(destination.tile(0), Tile::uniform(0xFF336699U));
  EXPECT_EQ(destination.tile(destination.tileIndex(3, 3)), Tile::uniform(0xFF336699U));
  EXPECT_FALSE(destination.tile(destination.tileIndex(4, 4)).isUniform());
  // A part of a tile that already holds this pixel everywhere stays as it is.
  const std::size_t before = tileMemory::bytesInUse();
  copyPixels(source, {0, 0, 20, 20}, destination, 5, 5);
  EXPECT_EQ(tileMemory::bytesInUse(), before);
}

TEST(Surface, ACopyWithAUniformResultTakesNoMemory) {
  Surface source(PixelFormat::rgba16Float, 256, 128);
  const std::vector<std::uint64_t> white(64 * 128, 0x3C003C003C003C00ULL);
  source.writeRect({0, 0, 64, 128}, reinterpret_cast<const std::byte*>(white.data()), 64 * 8);
  Surface destination(PixelFormat::rgba16Float, 128, 128);
  copyPixels(source, source.bounds(), destination, -63, 0);
  EXPECT_FALSE(destination.tile(0).isUniform());
  copyPixels(source, source.bounds(), destination, -64, 0);
  EXPECT_EQ(destination.tile(0), Tile::uniform(0));
}

TEST(Surface, ACopyIsMarkedIrregularWhereItHoldsSuchPixels) {
  const std::uint64_t wild = 0x3C00000000007E00ULL;  // NaN
  Surface source(PixelFormat::rgba16Float, 256, 128);
  (void)source.editTile(0);
  source.writeRect({100, 50, 1, 1}, reinterpret_cast<const std::byte*>(&wild), 8);
  markIrregularTiles(source);
  source.setUniform(1, wild);
  const auto isMarked = [&](const PixelRect& rect, int x) {
    Surface destination(PixelFormat::rgba16Float, 256, 128);
    copyPixels(source, rect, destination, x, 0);
    return destination.tile(0).has(TileTrait::irregular);
  };
  EXPECT_TRUE(isMarked({0, 0, 110, 128}, 3));
  EXPECT_FALSE(isMarked({0, 0, 100, 128}, 3));
  EXPECT_TRUE(isMarked({110, 0, 20, 128}, 3));
  Surface destination(PixelFormat::rgba16Float, 128, 128);
  destination.setUniform(0, wild);
  copyPixels(source, {0, 0, 50, 50}, destination, 5, 5);
  EXPECT_TRUE(destination.tile(0).has(TileTrait::irregular));
}

TEST(Surface, UniformAndDataTilesWithEqualPixelsCompareEqual) {
  for (const PixelFormat format :
       {PixelFormat::r16Float, PixelFormat::rgba8Unorm, PixelFormat::rgba16Float}) {
    Surface even(format, 200, 150);
    even.fill(0x3400U);
    Surface spread = even;
    for (int index = 0; index < spread.tileCount(); ++index) (void)spread.editTile(index);
    Surface other = spread;
    // A tile's padding beyond the canvas is not part of the image.
    std::byte* bytes = other.editTile(3);
    bytes[static_cast<std::size_t>(72 * other.pixelBytes())] = std::byte{9};
    EXPECT_TRUE(even.equals(spread));
    EXPECT_TRUE(other.equals(even));
    EXPECT_TRUE(other.equals(spread));
    const std::uint64_t pixel = 0x3401U;
    other.writeRect({199, 149, 1, 1}, reinterpret_cast<const std::byte*>(&pixel), 8);
    EXPECT_FALSE(even.equals(other));
    EXPECT_FALSE(other.equals(spread));
    even.setUniform(0, pixel);
    EXPECT_FALSE(even.equals(spread));
    EXPECT_FALSE(even.equals(Surface(format, 200, 151)));
  }
}

TEST(Surface, AnyChangeResetsTheRecipe) {
  Surface surface(PixelFormat::rgba8Unorm, 256, 128);
  surface.rememberRecipes();
  surface.setRecipe(0, 77);
  surface.setRecipe(1, 78);
  (void)surface.editTile(0);
  EXPECT_EQ(surface.recipe(0), 0U);
  EXPECT_EQ(surface.recipe(1), 78U);
  surface.fill(0);
  EXPECT_EQ(surface.recipe(1), 0U);
}

}  // namespace
}  // namespace orvanel
