// What moving a layer asks for: the tiles that its pixels can come to, not the canvas.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "model/MemorySupport.h"
#include "model/OpenSurfaceEdit.h"
#include "raster/HalfFloat.h"

namespace orvanel {
namespace {

using namespace test;

SurfaceChange shiftedBy(int dx, int dy) {
  return {OffsetParams{dx, dy}};
}

SurfaceChange turnedBy(float angle, float centerX, float centerY) {
  RotateParams turn;
  turn.centerX = centerX;
  turn.centerY = centerY;
  turn.angle = angle;
  return {turn};
}

SurfaceChange enlarged(float factor) {
  AffineParams affine;
  affine.matrix = {1.0F / factor, 0.0F, 0.0F, 1.0F / factor, 0.0F, 0.0F};
  return {affine};
}

class MovesOfASmallLayer : public testing::Test {
 protected:
  static constexpr int across = 12;

  /// A photo, and 100 x 100 pixels above it.
  void SetUp() override {
    paintAllTiles(writable(document->activeLayer()->texture.value()), TileTrait::opaque);
    document->addLayer(QStringLiteral("Small"));
    layer = document->activeLayer();
    Surface& pixels = writable(layer->texture.value());
    const std::vector<std::uint32_t> row(100, 0x80FF4020U);
    for (int y = 0; y < 100; ++y) {
      pixels.writeRect({140, 140 + y, 100, 1}, reinterpret_cast<const std::byte*>(row.data()), 400);
    }
    ASSERT_FALSE(pixels.tile(across + 1).isUniform());
    put(document->needsCompositing, true);
    static_cast<void>(document->composite());
  }

  [[nodiscard]] std::unique_ptr<OpenSurfaceEdit> begin(SurfaceKind kind = SurfaceKind::pixels) const {
    return OpenSurfaceEdit::begin(document, layer, kind, OpenSurfaceEdit::Purpose::transform,
                                  QStringLiteral("Move"));
  }
  [[nodiscard]] std::uint64_t askedToBegin(SurfaceKind kind = SurfaceKind::pixels) const {
    return askedBy(*document, [&] { EXPECT_EQ(begin(kind), nullptr); });
  }
  void showAndFlatten(OpenSurfaceEdit& edit, const SurfaceChange& change) const {
    EXPECT_TRUE(edit.show(change));
    static_cast<void>(document->composite());
  }

  DocumentPtr document = makeDocument(across * tileSide, across* tileSide);
  std::shared_ptr<Layer> layer;
};

TEST_F(MovesOfASmallLayer, AskForTheTilesThatItCanReach) {
  const std::uint64_t asked = askedToBegin();
  EXPECT_LE(asked, (4 + 2 * 4 + 1) * tileBytes)
      << "the layer's, and the image's there, before that and at first";
  const ScopedMemoryLimit limit(asked);
  const auto edit = begin();
  ASSERT_NE(edit, nullptr);
  const std::uint64_t before = tileMemory::bytesInUse();
  for (const auto& [dx, dy] : {std::pair{60, 60}, {700, 500}, {-20, 1300}, {128, 256}, {-5000, 0}, {1, 1}}) {
    showAndFlatten(*edit, shiftedBy(dx, dy));
    EXPECT_LE(tileMemory::bytesInUse(), before + asked) << dx << ", " << dy;
  }
  edit->keep();
  static_cast<void>(document->composite());
  EXPECT_LE(tileMemory::bytesInUse(), before + asked);
  EXPECT_EQ(document->undoStack.undoActionName(), "Move");
}

TEST_F(MovesOfASmallLayer, FlattenTheImageOnceForALinkedMask) {
  const std::uint64_t alone = askedToBegin();
  addMask(*layer);
  Surface& mask = writable(layer->mask.value()->maskTexture->texture);
  mask.fill(floatToHalf(1.0F));
  const std::uint16_t half = floatToHalf(0.5F);
  mask.writeRect({150, 150, 1, 1}, reinterpret_cast<const std::byte*>(&half), sizeof(half));
  put(document->needsCompositing, true);
  static_cast<void>(document->composite());
  // The mask's own tiles: around the data tile, and along two edges of the canvas, where nothing comes in.
  const std::uint64_t maskTiles = 4 + 4 * (across + 1);
  const std::uint64_t asked = askedToBegin();
  EXPECT_LE(asked, alone + maskTiles * tileBytes / 2);
  const ScopedMemoryLimit limit(asked);
  const auto edit = begin();
  ASSERT_NE(edit, nullptr);
  const std::uint64_t before = tileMemory::bytesInUse();
  for (const int distance : {60, -300, 700}) {
    showAndFlatten(*edit, shiftedBy(distance, distance));
    EXPECT_LE(tileMemory::bytesInUse(), before + asked) << distance;
  }
}

TEST_F(MovesOfASmallLayer, AloneAMaskIsSeenWhereTheLayerHasPixels) {
  paintTile(writable(layer->texture.value()), 50, TileTrait::none);
  addMask(*layer);
  Surface& mask = writable(layer->mask.value()->maskTexture->texture);
  mask.fill(floatToHalf(1.0F));
  const std::uint16_t half = floatToHalf(0.5F);
  mask.writeRect({700, 700, 1, 1}, reinterpret_cast<const std::byte*>(&half), sizeof(half));
  put(document->needsCompositing, true);
  static_cast<void>(document->composite());
  const std::uint64_t maskTiles = 4 + 4 * (across + 1);
  EXPECT_LE(askedToBegin(SurfaceKind::mask), 2 * tileBytes + maskTiles * tileBytes / 2);
}

TEST_F(MovesOfASmallLayer, AFilledLayerLeavesDataAlongTheEdges) {
  document->fillSelection({0.2F, 0.4F, 0.6F, 1.0F});
  static_cast<void>(document->composite());
  const std::uint64_t asked = askedToBegin();
  const auto edit = begin();
  const std::int64_t taken = takenBy(*document, [&] { edit->show(shiftedBy(10, 10)); });
  EXPECT_GE(taken, static_cast<std::int64_t>(2 * (2 * across - 1) * tileBytes));
  EXPECT_LE(taken, static_cast<std::int64_t>(asked));
}

TEST_F(MovesOfASmallLayer, AColorUnderTheDataOfAMaskBecomesDataToo) {
  document->removeNode(document->rootNodes.value().front().id());
  ASSERT_EQ(document->activeLayer(), layer);
  document->fillSelection({0.2F, 0.4F, 0.6F, 1.0F});
  addMask(*layer);
  Surface& mask = writable(layer->mask.value()->maskTexture->texture);
  mask.fill(floatToHalf(1.0F));
  std::vector<std::uint16_t> row;
  for (int x = 0; x < 360; ++x) row.push_back(floatToHalf(static_cast<float>(x) / 400.0F));
  for (int y = 40; y < 400; ++y) {
    mask.writeRect({40, y, 360, 1}, reinterpret_cast<const std::byte*>(row.data()), row.size() * 2);
  }
  put(document->needsCompositing, true);
  static_cast<void>(document->composite());
  std::unique_ptr<OpenSurfaceEdit> edit;
  {
    const ScopedMemoryLimit limit(250 * tileBytes);
    edit = begin();
  }
  ASSERT_NE(edit, nullptr);
  const auto enlarge = [&] { return edit->show(enlarged(4.0F)); };
  const std::uint64_t asked = askedBy(*document, [&] { EXPECT_FALSE(enlarge()); });
  const std::int64_t taken = takenBy(*document, [&] { EXPECT_TRUE(enlarge()); });
  EXPECT_GE(taken, static_cast<std::int64_t>(150 * tileBytes));
  EXPECT_LE(taken, static_cast<std::int64_t>(asked));
}

TEST_F(MovesOfASmallLayer, OtherTransformsAskForWhatTheyMakeWhenTheyAreShown) {
  const ChangeRecorder changes(*document);
  const ScopedMemoryLimit limit(40 * tileBytes);
  const auto edit = begin();
  ASSERT_NE(edit, nullptr);
  const std::uint64_t before = tileMemory::bytesInUse();
  for (const SurfaceChange& change :
       {turnedBy(0.7F, 190.0F, 190.0F), enlarged(2.0F), turnedBy(2.0F, 700.0F, 700.0F), enlarged(0.01F)}) {
    showAndFlatten(*edit, change);
    EXPECT_LE(tileMemory::bytesInUse(), before + 40 * tileBytes);
  }
  showAndFlatten(*edit, enlarged(2.0F));
  const Surface shown = *layer->texture.value();
  EXPECT_FALSE(edit->show(enlarged(6.0F)));
  EXPECT_FALSE(edit->show(enlarged(7.0F)));
  EXPECT_EQ(changes.count<change::EditRefused>(), 1U) << "told once";
  EXPECT_TRUE(layer->texture.value()->equals(shown));
  EXPECT_TRUE(edit->show(enlarged(1.5F))) << "a smaller one fits";
  EXPECT_FALSE(edit->show(enlarged(6.0F)));
  EXPECT_EQ(changes.count<change::EditRefused>(), 2U) << "told anew";
  edit->keep();
  EXPECT_EQ(document->undoStack.undoActionName(), "Move");
}

TEST_F(MovesOfASmallLayer, ATransformThatWasRefusedAltogetherLeavesNoRecord) {
  const std::size_t records = document->undoStack.operations().size();
  const Surface before = *layer->texture.value();
  const ScopedMemoryLimit limit(20 * tileBytes);
  const auto edit = begin();
  ASSERT_NE(edit, nullptr);
  EXPECT_FALSE(edit->show(enlarged(8.0F)));
  edit->keep();
  EXPECT_FALSE(edit->isOpen());
  EXPECT_EQ(document->undoStack.operations().size(), records);
  EXPECT_TRUE(layer->texture.value()->equals(before));
}

TEST_F(MovesOfASmallLayer, WithoutTheMemoryForAShiftDoNotBegin) {
  const std::uint64_t asked = askedToBegin();
  const ChangeRecorder changes(*document);
  const ScopedMemoryLimit limit(asked - 1);
  EXPECT_EQ(begin(), nullptr);
  EXPECT_EQ(changes.count<change::EditRefused>(), 1U);
}

}  // namespace
}  // namespace orvanel
