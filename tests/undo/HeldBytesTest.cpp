#include "undo/HeldBytes.h"

#include <gtest/gtest.h>

#include <vector>

#include "undo/HeldBackground.h"
#include "undo/TextureSnapshot.h"
#include "undo/UndoStack.h"

namespace orvanel {
namespace {

constexpr std::int64_t rawTile = 128 * 128 * 8;
constexpr int large = 16384;
constexpr int small = 1024;

/// A canvas with `tiles` tiles of data; the others are uniform.
Surface canvasWith(int tiles, int side = large) {
  Surface canvas(PixelFormat::rgba16Float, side, side);
  for (int index = 0; index < tiles; ++index) {
    std::byte* bytes = canvas.editTile(index);
    std::fill_n(bytes, canvas.tileBytes(), static_cast<std::byte>(index + 1));
  }
  return canvas;
}

class HeldBytes : public testing::Test {
 protected:
  [[nodiscard]] std::shared_ptr<TextureSnapshot> capture(const Surface& surface) const {
    return TextureSnapshot::capture(surface, context);
  }

  MetalContext context{ShaderLibrary::standard()};
};

TEST_F(HeldBytes, AUniformSurfaceHoldsNone) {
  Surface canvas(PixelFormat::rgba16Float, large, large);
  canvas.fill(0x3C003C003C003C00U);
  EXPECT_EQ(heldBytes(canvas), 0);
  EXPECT_EQ(capture(canvas)->compressedSize(), 0);
}

TEST_F(HeldBytes, SurfacesShareTheirCommonTilesEqually) {
  Surface first = canvasWith(6);
  EXPECT_EQ(heldBytes(first), 6 * rawTile);
  const Surface second = first;
  EXPECT_EQ(heldBytes(first), 3 * rawTile);
  EXPECT_EQ(heldBytes(second), 3 * rawTile);
  (void)first.editTile(0);
  EXPECT_EQ(heldBytes(first), rawTile + 5 * rawTile / 2);
  const Surface third = second;
  EXPECT_EQ(heldBytes(third), rawTile / 2 + 5 * (rawTile / 3));
}

TEST_F(HeldBytes, ASnapshotAddsNothingToASurfaceThatStillHoldsTheTiles) {
  const HeldBackground held;
  Surface canvas = canvasWith(6);
  const auto snapshot = capture(canvas);
  EXPECT_EQ(snapshot->compressedSize(), 0);
  EXPECT_EQ(heldBytes(canvas), 6 * rawTile);
  // The edit copies two tiles, so that two exist for the snapshot alone.
  (void)canvas.editTile(0);
  (void)canvas.editTile(1);
  EXPECT_EQ(snapshot->compressedSize(), 2 * rawTile);
  EXPECT_EQ(heldBytes(canvas), 6 * rawTile);
}

TEST_F(HeldBytes, SnapshotsShareRawTilesUntilTheCompressedFormReplacesThem) {
  std::shared_ptr<TextureSnapshot> first;
  std::shared_ptr<TextureSnapshot> second;
  {
    const HeldBackground held;
    Surface canvas = canvasWith(6);
    first = capture(canvas);
    second = capture(canvas);
    canvas.fill(0);
    EXPECT_EQ(first->compressedSize(), 3 * rawTile);
    EXPECT_EQ(second->compressedSize(), 3 * rawTile);
  }
  TextureSnapshot::waitForCompression();
  const std::int64_t share = first->compressedSize();
  EXPECT_GT(share, 0);
  EXPECT_LT(share, rawTile / 8);
  EXPECT_EQ(second->compressedSize(), share);
  second.reset();
  EXPECT_NEAR(static_cast<double>(first->compressedSize()), static_cast<double>(2 * share), 12.0);
}

TEST_F(HeldBytes, RawTilesThatAreKeptReadyCountBesideTheCompressedOnes) {
  Surface canvas = canvasWith(6, small);
  const auto snapshot = TextureSnapshot::captureReady(canvas, context);
  TextureSnapshot::waitForCompression();
  const std::int64_t compressed = snapshot->compressedSize();
  EXPECT_LT(compressed, rawTile);
  canvas.fill(0);
  EXPECT_EQ(snapshot->compressedSize(), compressed + 6 * rawTile);
  snapshot->setReady(false);
  EXPECT_EQ(snapshot->compressedSize(), compressed);
}

TEST_F(HeldBytes, HelpingCompressesWhatTheBackgroundHasNotBegun) {
  const HeldBackground held;
  std::vector<std::shared_ptr<TextureSnapshot>> snapshots;
  for (int round = 0; round < 3; ++round) snapshots.push_back(capture(canvasWith(5)));
  TextureSnapshot::helpCompression(std::chrono::minutes(1), [] { return false; });
  for (const auto& snapshot : snapshots) EXPECT_TRUE(snapshot->isCompressed());
}

TEST_F(HeldBytes, HelpingEndsAtItsTimeLimitOrWhenEnoughIsSaved) {
  const HeldBackground held;
  const auto snapshot = capture(canvasWith(5));
  TextureSnapshot::helpCompression(std::chrono::milliseconds(0), [] { return false; });
  EXPECT_FALSE(snapshot->isCompressed());
  TextureSnapshot::helpCompression(std::chrono::minutes(1), [] { return true; });
  EXPECT_FALSE(snapshot->isCompressed());
}

/// A change of a whole surface, of which the record holds what was there before.
class ReplacedPixels : public UndoableOperation {
 public:
  ReplacedPixels(Surface& canvas, const MetalContext& context)
      : snapshot_(TextureSnapshot::captureReady(canvas, context)) {
    canvas = canvasWith(40, small);
  }
  [[nodiscard]] QString actionName() const override { return QStringLiteral("Replace"); }
  void redo() override {}
  void undo() override {}
  [[nodiscard]] std::int64_t memoryCost() const override { return snapshot_->compressedSize(); }
  void setReady(bool isReady) override { snapshot_->setReady(isReady); }

 private:
  std::shared_ptr<TextureSnapshot> snapshot_;
};

TEST_F(HeldBytes, NothingIsEvictedForBytesThatAreAboutToShrink) {
  const HeldBackground held;
  UndoStack history;
  history.memoryBudget = 60 * rawTile;
  Surface canvas = canvasWith(40, small);
  for (int round = 0; round < 8; ++round) history.push(std::make_shared<ReplacedPixels>(canvas, context));
  EXPECT_EQ(history.operations().size(), 8U);
  EXPECT_LE(history.totalMemoryCost(), history.memoryBudget.value());
}

TEST_F(HeldBytes, RawTilesKeptForQuickStepsGoBeforeAnyRecord) {
  UndoStack history;
  Surface canvas = canvasWith(40, small);
  for (int round = 0; round < 2; ++round) history.push(std::make_shared<ReplacedPixels>(canvas, context));
  TextureSnapshot::waitForCompression();
  EXPECT_GE(history.totalMemoryCost(), 40 * rawTile);
  history.memoryBudget = 20 * rawTile;
  history.enforceLimits();
  EXPECT_EQ(history.operations().size(), 2U);
  EXPECT_LE(history.totalMemoryCost(), history.memoryBudget.value());
}

}  // namespace
}  // namespace orvanel
