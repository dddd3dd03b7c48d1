#include "raster/TileRowWriter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

#include "raster/RandomSurface.h"

namespace orvanel {
namespace {

std::vector<std::byte> packedRows(const Surface& surface) {
  std::vector<std::byte> rows(static_cast<std::size_t>(surface.byteSize()));
  surface.readRect(surface.bounds(), rows.data(), rows.size() / static_cast<std::size_t>(surface.height()));
  return rows;
}

/// Writes all rows into the surface, in strips of at most `mostRows`.
void writeInStrips(Surface& surface, const std::vector<std::byte>& rows, int mostRows, std::mt19937& random) {
  const std::size_t rowBytes = rows.size() / static_cast<std::size_t>(surface.height());
  const std::byte* next = rows.data();
  for (int tileY = 0; tileY < surface.tilesDown(); ++tileY) {
    TileRowWriter writer(surface, tileY);
    for (int left = std::min(tileSide, surface.height() - tileY * tileSide); left > 0;) {
      const int count = std::min(left, std::uniform_int_distribution(1, mostRows)(random));
      writer.write(next, count);
      next += static_cast<std::size_t>(count) * rowBytes;
      left -= count;
    }
  }
}

TEST(TileRowWriter, StripsOfAnyHeightGiveTheRowsThatWereWritten) {
  std::mt19937 random(1);
  for (const PixelFormat format : {PixelFormat::r16Float, PixelFormat::rg8Unorm, PixelFormat::rg16Unorm,
                                   PixelFormat::rgba8Unorm, PixelFormat::rgba16Float}) {
    for (const int mostRows : {1, 7, 64, tileSide}) {
      const Surface expected = randomSurface(format, 391, 270, random);
      // What stood there before must not show through, nor change for those who share it.
      Surface written = randomSurface(format, 391, 270, random);
      const Surface before = written;
      const std::vector<std::byte> rowsBefore = packedRows(before);
      writeInStrips(written, packedRows(expected), mostRows, random);
      EXPECT_TRUE(written.equals(expected));
      EXPECT_EQ(packedRows(before), rowsBefore);
    }
  }
}

TEST(TileRowWriter, TilesOfOneValueBecomeUniformAlsoAtTheEdge) {
  std::mt19937 random(2);
  Surface plain(PixelFormat::rgba16Float, 391, 270);
  plain.fill(0x3C00'1111'2222'3333U);
  Surface written = randomSurface(PixelFormat::rgba16Float, 391, 270, random);
  writeInStrips(written, packedRows(plain), 9, random);
  for (int index = 0; index < written.tileCount(); ++index) {
    EXPECT_TRUE(written.tile(index).isUniform());
    EXPECT_EQ(written.tile(index).pixel(), 0x3C00'1111'2222'3333U);
  }
}

TEST(TileRowWriter, ATileMayDifferOnlyInItsLastPixel) {
  std::mt19937 random(3);
  Surface expected(PixelFormat::rgba8Unorm, 391, 270);
  expected.fill(0xFF102030U);
  const std::uint32_t other = 0xFF102031U;
  for (const auto& [x, y] : {std::pair{127, 127}, {390, 127}, {127, 269}, {390, 269}})
    expected.writeRect({x, y, 1, 1}, reinterpret_cast<const std::byte*>(&other), 4);
  Surface written(PixelFormat::rgba8Unorm, 391, 270);
  writeInStrips(written, packedRows(expected), 9, random);
  EXPECT_TRUE(written.equals(expected));
  EXPECT_TRUE(written.tile(1).isUniform());
  EXPECT_FALSE(written.tile(0).isUniform());
}

}  // namespace
}  // namespace orvanel
