#include "undo/TextureSnapshot.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <thread>
#include <vector>

#include "raster/RandomSurface.h"
#include "raster/TileMemory.h"
#include "undo/HeldBackground.h"

namespace orvanel {
namespace {

class TextureSnapshots : public testing::Test {
 protected:
  /// Smooth values, as in photographs.
  static Surface photo(PixelFormat format, int width, int height) {
    Surface surface(format, width, height);
    std::mt19937 random(9);
    const auto step = static_cast<std::size_t>(surface.pixelBytes());
    std::vector<std::byte> row(static_cast<std::size_t>(width) * step);
    for (int y = 0; y < height; ++y) {
      for (int x = 0; x < width; ++x) {
        std::array<std::uint16_t, 4> halves{};
        for (std::uint16_t& half : halves) {
          half = static_cast<std::uint16_t>(0x3800U + static_cast<unsigned>(x + y) % 512U + random() % 8U);
        }
        std::memcpy(row.data() + static_cast<std::size_t>(x) * step, halves.data(), step);
      }
      surface.writeRect({0, y, width, 1}, row.data(), row.size());
    }
    return surface;
  }

  /// A copy that shares no tile. Raw tiles that live on anywhere are restored without being decompressed.
  static Surface unshared(const Surface& surface) {
    const std::size_t stride =
        static_cast<std::size_t>(surface.width()) * static_cast<std::size_t>(surface.pixelBytes());
    std::vector<std::byte> rows(stride * static_cast<std::size_t>(surface.height()));
    surface.readRect(surface.bounds(), rows.data(), stride);
    Surface copy(surface.format(), surface.width(), surface.height());
    copy.writeRect(copy.bounds(), rows.data(), stride);
    return copy;
  }

  MetalContext context{ShaderLibrary::standard()};
  std::mt19937 random{17};
};

TEST_F(TextureSnapshots, ASnapshotRestoresTheSameBytesBeforeAndAfterItsCompression) {
  for (const PixelFormat format : {PixelFormat::r16Float, PixelFormat::rg8Unorm, PixelFormat::rg16Unorm,
                                   PixelFormat::rgba8Unorm, PixelFormat::rgba16Float}) {
    Surface surface = randomSurface(format, 391, 259, random);
    const Surface original = unshared(surface);
    const HeldBackground held;
    const auto snapshot = TextureSnapshot::capture(surface, context);
    ASSERT_NE(snapshot, nullptr);
    surface.fill(0);
    EXPECT_FALSE(snapshot->isCompressed());
    snapshot->restore(surface, context);
    EXPECT_TRUE(surface.equals(original));
    held.letGo();
    TextureSnapshot::waitForCompression();
    EXPECT_TRUE(snapshot->isCompressed());
    surface.fill(0);
    snapshot->restore(surface, context);
    EXPECT_TRUE(surface.equals(original));
  }
}

TEST_F(TextureSnapshots, RestoresFromCompressedBytesOnceTheTilesAreGone) {
  const Surface original = photo(PixelFormat::rgba16Float, 300, 200);
  std::shared_ptr<TextureSnapshot> snapshot;
  {
    Surface surface = photo(PixelFormat::rgba16Float, 300, 200);
    snapshot = TextureSnapshot::capture(surface, context);
    TextureSnapshot::waitForCompression();
  }
  Surface restored(PixelFormat::rgba16Float, 300, 200);
  snapshot->restore(restored, context);
  EXPECT_TRUE(restored.equals(original));
}

TEST_F(TextureSnapshots, ASubRegionGoesBackToItsPlaceAndLeavesTheRestAlone) {
  const Surface original = randomSurface(PixelFormat::rgba8Unorm, 400, 300, random);
  const PixelRect region{100, 90, 201, 150};
  for (const bool waits : {false, true}) {
    std::shared_ptr<TextureSnapshot> snapshot;
    {
      const Surface captured = unshared(original);
      snapshot = TextureSnapshot::capture(captured, region, context);
      if (waits) TextureSnapshot::waitForCompression();
    }
    EXPECT_EQ(snapshot->uncompressedSize(), 201LL * 4 * 150);
    Surface other = randomSurface(PixelFormat::rgba8Unorm, 400, 300, random);
    const Surface before = other;
    snapshot->restore(other, context);
    for (int y = 0; y < 300; ++y) {
      for (int x = 0; x < 400; ++x) {
        const bool inside = x >= 100 && x < 301 && y >= 90 && y < 240;
        ASSERT_EQ(other.pixelAt(x, y), (inside ? original : before).pixelAt(x, y)) << x << ", " << y;
      }
    }
  }
}

TEST_F(TextureSnapshots, DecompressedDataArePackedRows) {
  Surface surface = randomSurface(PixelFormat::rg16Unorm, 300, 140, random);
  const PixelRect region{1, 2, 299, 138};
  std::vector<std::byte> expected(299 * 4 * 138);
  surface.readRect(region, expected.data(), 299 * 4);
  const HeldBackground held;
  const auto snapshot = TextureSnapshot::capture(surface, region, context);
  surface.fill(0);
  EXPECT_EQ(snapshot->decompressedData(), expected);
  held.letGo();
  TextureSnapshot::waitForCompression();
  EXPECT_EQ(snapshot->decompressedData(), expected);
}

TEST_F(TextureSnapshots, OnePixelWideOrHighWorksTheSameWay) {
  for (const PixelRect region :
       {PixelRect{130, 0, 1, 200}, PixelRect{0, 131, 300, 1}, PixelRect{127, 127, 1, 1}}) {
    Surface surface = photo(PixelFormat::rgba16Float, 300, 200);
    const Surface original = unshared(surface);
    const auto snapshot = TextureSnapshot::capture(surface, region, context);
    EXPECT_EQ(snapshot->uncompressedSize(), 8LL * region.width * region.height);
    surface.fill(0);
    TextureSnapshot::waitForCompression();
    snapshot->restore(surface, context);
    for (int y = 0; y < 200; ++y) {
      for (int x = 0; x < 300; ++x) {
        const bool isInside = !region.intersected({x, y, 1, 1}).isEmpty();
        ASSERT_EQ(surface.pixelAt(x, y), isInside ? original.pixelAt(x, y) : 0U) << x << ", " << y;
      }
    }
  }
}

TEST_F(TextureSnapshots, RandomNoiseIsKeptAndRestoresExactly) {
  Surface noise(PixelFormat::rgba8Unorm, 256, 256);
  for (int index = 0; index < 4; ++index) {
    std::byte* bytes = noise.overwriteTile(index);
    for (std::size_t i = 0; i < noise.tileBytes(); ++i) bytes[i] = static_cast<std::byte>(random());
  }
  const Surface original = unshared(noise);
  const auto snapshot = TextureSnapshot::capture(noise, context);
  noise.fill(1);
  TextureSnapshot::waitForCompression();
  EXPECT_GE(snapshot->compressedSize(), snapshot->uncompressedSize() * 99 / 100);
  snapshot->restore(noise, context);
  EXPECT_TRUE(noise.equals(original));
}

TEST_F(TextureSnapshots, TheCostFallsWithCompression) {
  Surface surface = photo(PixelFormat::rgba16Float, 512, 512);
  const HeldBackground held;
  const auto snapshot = TextureSnapshot::capture(surface, context);
  surface.fill(0);
  EXPECT_FALSE(snapshot->isCompressed());
  EXPECT_EQ(snapshot->compressedSize(), 512LL * 512 * 8);
  held.letGo();
  TextureSnapshot::waitForCompression();
  EXPECT_LT(snapshot->compressedSize(), 512LL * 512 * 8 * 3 / 4);
  EXPECT_GT(snapshot->compressedSize(), 0);
}

TEST_F(TextureSnapshots, ARestoredTileIsNotCompressedAgain) {
  Surface surface = photo(PixelFormat::rgba16Float, 512, 512);
  const auto first = TextureSnapshot::capture(surface, context);
  TextureSnapshot::waitForCompression();
  const std::int64_t alone = first->compressedSize();
  surface.fill(0);
  first->restore(surface, context);
  const auto second = TextureSnapshot::capture(surface, context);
  TextureSnapshot::waitForCompression();
  EXPECT_NEAR(static_cast<double>(first->compressedSize() + second->compressedSize()),
              static_cast<double>(alone), 64.0);
}

TEST_F(TextureSnapshots, AnotherFormatIsLeftAlone) {
  const Surface surface = randomSurface(PixelFormat::rgba8Unorm, 100, 100, random);
  const auto snapshot = TextureSnapshot::capture(surface, context);
  Surface deep = randomSurface(PixelFormat::rgba16Float, 100, 100, random);
  const Surface before = deep;
  snapshot->restore(deep, context);
  EXPECT_TRUE(deep.equals(before));
}

TEST_F(TextureSnapshots, TilesHeldByManySnapshotsAreCompressedOnceAndTheirCostIsShared) {
  Surface surface = photo(PixelFormat::rgba16Float, 512, 512);
  const auto first = TextureSnapshot::capture(surface, context);
  TextureSnapshot::waitForCompression();
  const std::int64_t alone = first->compressedSize();
  (void)surface.editTile(0);
  const auto second = TextureSnapshot::capture(surface, context);
  TextureSnapshot::waitForCompression();
  const std::int64_t together = first->compressedSize() + second->compressedSize();
  EXPECT_LT(together, alone + alone / 8);
  EXPECT_GT(together, alone);
}

TEST_F(TextureSnapshots, CompressionReleasesTheRawTiles) {
  Surface surface = photo(PixelFormat::rgba16Float, 512, 512);
  const std::size_t held = tileMemory::bytesInUse();
  const auto snapshot = TextureSnapshot::capture(surface, context);
  surface.fill(0);
  TextureSnapshot::waitForCompression();
  EXPECT_EQ(tileMemory::bytesInUse(), held - 16 * surface.tileBytes());
}

TEST_F(TextureSnapshots, RestoringUnchangedTilesKeepsThemAndTheirVersions) {
  Surface surface = photo(PixelFormat::rgba16Float, 512, 512);
  const auto snapshot = TextureSnapshot::capture(surface, context);
  TextureSnapshot::waitForCompression();
  const Surface before = surface;
  (void)surface.editTile(3);
  snapshot->restore(surface, context);
  for (int index = 0; index < surface.tileCount(); ++index)
    EXPECT_EQ(surface.tile(index), before.tile(index));
}

TEST_F(TextureSnapshots, EditsAfterTheCaptureDoNotReachIt) {
  Surface surface = photo(PixelFormat::rgba16Float, 300, 300);
  const Surface original = surface;
  for (int round = 0; round < 20; ++round) {
    const auto snapshot = TextureSnapshot::capture(surface, context);
    // Deliberately races with the compression.
    for (int index = 0; index < surface.tileCount(); ++index) {
      std::byte* bytes = surface.editTile(index);
      std::memset(bytes, round, surface.tileBytes());
    }
    snapshot->restore(surface, context);
    ASSERT_TRUE(surface.equals(original));
  }
}

TEST_F(TextureSnapshots, ASnapshotDroppedWhileItsCompressionRunsEndsQuietly) {
  TextureSnapshot::waitForCompression();
  const std::size_t before = tileMemory::bytesInUse();
  {
    Surface surface = photo(PixelFormat::rgba16Float, 600, 600);
    for (int round = 0; round < 50; ++round) {
      auto snapshot = TextureSnapshot::capture(surface, context);
      if (round % 3 == 0) std::this_thread::yield();
      snapshot.reset();
    }
  }
  TextureSnapshot::waitForCompression();
  EXPECT_EQ(tileMemory::bytesInUse(), before);
}

TEST_F(TextureSnapshots, NothingIsCapturedOfAnEmptyOrStrayRegionOrWhenMemoryIsRefused) {
  const Surface surface(PixelFormat::rgba8Unorm, 100, 100);
  EXPECT_EQ(TextureSnapshot::capture(surface, {0, 0, 0, 5}, context), nullptr);
  EXPECT_EQ(TextureSnapshot::capture(surface, {90, 0, 11, 5}, context), nullptr);
  const tileMemory::ScopedSurfaceFailure refusal(0);
  EXPECT_EQ(TextureSnapshot::capture(surface, context), nullptr);
}

TEST_F(TextureSnapshots, ALargerDestinationGetsTheRegionAndKeepsTheRest) {
  const Surface original = randomSurface(PixelFormat::rgba8Unorm, 200, 200, random);
  const auto snapshot = TextureSnapshot::capture(original, context);
  Surface larger(PixelFormat::rgba8Unorm, 500, 220);
  larger.fill(0x11223344U);
  snapshot->restore(larger, context);
  EXPECT_EQ(larger.pixelAt(199, 199), original.pixelAt(199, 199));
  EXPECT_EQ(larger.pixelAt(200, 199), 0x11223344U);
  EXPECT_EQ(larger.pixelAt(10, 200), 0x11223344U);
}

TEST_F(TextureSnapshots, AReadySnapshotRestoresTheIdenticalTiles) {
  Surface surface = photo(PixelFormat::rgba16Float, 200, 150);
  const std::uint64_t version = surface.tile(0).version();
  const auto snapshot = TextureSnapshot::captureReady(surface, context);
  TextureSnapshot::waitForCompression();
  EXPECT_TRUE(snapshot->isCompressed());
  context.clearTexture(surface, ColorMode::rgb16, {});
  const std::size_t whileReady = tileMemory::bytesInUse();
  snapshot->setReady(false);
  EXPECT_LT(tileMemory::bytesInUse(), whileReady);
  snapshot->setReady(true);
  snapshot->restore(surface, context);
  EXPECT_EQ(surface.tile(0).version(), version);
  EXPECT_TRUE(surface.equals(photo(PixelFormat::rgba16Float, 200, 150)));
  // Tiles decompressed once are kept from then on.
  context.clearTexture(surface, ColorMode::rgb16, {});
  EXPECT_EQ(tileMemory::bytesInUse(), whileReady);
}

}  // namespace
}  // namespace orvanel
