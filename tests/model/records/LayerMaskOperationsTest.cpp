#include "model/records/LayerMaskOperations.h"

#include <gtest/gtest.h>

#include "model/records/RecordSupport.h"

namespace orvanel {
namespace {

using namespace test;

constexpr std::int64_t maskBytes = 128 * 128 * 2;

class LayerMaskOperationsTest : public testing::Test {
 protected:
  void SetUp() override {
    mask = addMask(*layer);
    Surface& pixels = writable(mask->maskTexture->texture);
    MetalContext::shared().fillMask(pixels, 0.5F);
    (void)pixels.editTile(0);
    put(layer->maskThumbnailImage, std::make_shared<const QImage>(2, 1, QImage::Format_RGBA8888));
    put(layer->maskThumbnailDirty, false);
  }
  /// Does what the command does before it pushes the record.
  void takeMaskOff() {
    put(layer->mask, nullptr);
    put(layer->isMaskSelected, false);
  }
  void expectDetached() const {
    EXPECT_EQ(layer->mask.value(), nullptr);
    EXPECT_EQ(layer->maskThumbnailImage.value(), nullptr);
    EXPECT_TRUE(layer->maskThumbnailDirty.value());
    EXPECT_FALSE(layer->isMaskSelected.value());
  }

  DocumentPtr document = makeDocument();
  std::shared_ptr<Layer> layer = document->allLayers().front();
  std::shared_ptr<LayerMask> mask;
};

TEST_F(LayerMaskOperationsTest, AddCycle) {
  writableHistory(*document).push(std::make_shared<AddLayerMaskOperation>(document, layer, mask));
  EXPECT_EQ(document->undoStack.undoActionName(), "Add Layer Mask");
  EXPECT_EQ(newestCost(*document), 0) << "the layer holds the mask";
  for (int round = 0; round < 2; ++round) {
    document->undo();
    EXPECT_EQ(newestCost(*document), maskBytes);
    expectDetached();
    document->redo();
    EXPECT_EQ(layer->mask.value(), mask);
  }
}

TEST_F(LayerMaskOperationsTest, RemoveCycle) {
  takeMaskOff();
  writableHistory(*document).push(std::make_shared<RemoveLayerMaskOperation>(document, layer, mask));
  EXPECT_EQ(document->undoStack.undoActionName(), "Remove Layer Mask");
  EXPECT_EQ(newestCost(*document), maskBytes);
  for (int round = 0; round < 2; ++round) {
    document->undo();
    EXPECT_EQ(newestCost(*document), 0);
    EXPECT_EQ(layer->mask.value(), mask);
    put(layer->isMaskSelected, true);
    document->redo();
    expectDetached();
  }
}

TEST_F(LayerMaskOperationsTest, TheMaskKeepsItsPixels) {
  const Surface before = *mask->maskTexture->texture;
  writableHistory(*document).push(std::make_shared<AddLayerMaskOperation>(document, layer, mask));
  document->undo();
  document->redo();
  EXPECT_TRUE(layer->mask.value()->maskTexture->texture->equals(before));
}

TEST_F(LayerMaskOperationsTest, UndoingAddWithTheMaskSelectedReportsTheActiveLayerOnce) {
  put(layer->isMaskSelected, true);
  AddLayerMaskOperation record(document, layer, mask);
  const ChangeRecorder changes(*document);
  const auto targetsTold = [&] {
    return changes.count<change::NodePropertyChanged>(NodeProperty::isMaskSelected);
  };
  record.undo();
  EXPECT_FALSE(layer->isMaskSelected.value());
  EXPECT_EQ(targetsTold(), 1U);
  EXPECT_EQ(changes.count<change::ThumbnailsChanged>(), 1U);
  record.redo();
  record.undo();
  EXPECT_EQ(targetsTold(), 1U) << "the mask was no longer selected";
  EXPECT_EQ(changes.count<change::ThumbnailsChanged>(), 3U);
}

TEST_F(LayerMaskOperationsTest, EveryStepMakesTheDocumentDirty) {
  AddLayerMaskOperation record(document, layer, mask);
  document->setDirty(false);
  record.undo();
  EXPECT_TRUE(document->isDirty.value());
  document->setDirty(false);
  record.redo();
  EXPECT_TRUE(document->isDirty.value());
}

TEST_F(LayerMaskOperationsTest, ApplyCycleRestoresPixelsAndMask) {
  const ConstTexture pixels = layer->texture.value();
  const Surface before = *pixels;
  auto snapshot = TextureSnapshot::capture(*pixels, MetalContext::shared());
  MetalContext::shared().applyLayerMask(writable(pixels), *mask->maskTexture->texture, ColorMode::rgb8);
  const Surface after = *pixels;
  ASSERT_FALSE(after.equals(before));
  takeMaskOff();
  writableHistory(*document).push(
      std::make_shared<ApplyLayerMaskOperation>(document, layer, mask, snapshot, ColorMode::rgb8));
  EXPECT_EQ(document->undoStack.undoActionName(), "Apply Layer Mask");
  for (int round = 0; round < 2; ++round) {
    put(layer->thumbnailDirty, false);
    put(layer->channelThumbnailsDirty, false);
    document->undo();
    EXPECT_TRUE(pixels->equals(before));
    EXPECT_EQ(layer->mask.value(), mask);
    EXPECT_TRUE(layer->thumbnailDirty.value());
    EXPECT_TRUE(layer->channelThumbnailsDirty.value());
    put(layer->isMaskSelected, true);
    document->redo();
    EXPECT_TRUE(pixels->equals(after));
    expectDetached();
  }
  TextureSnapshot::waitForCompression();
  EXPECT_EQ(newestCost(*document), snapshot->compressedSize() + maskBytes);
}

TEST_F(LayerMaskOperationsTest, ApplyingToALayerWithoutPixelsDoesNothing) {
  auto snapshot = TextureSnapshot::capture(*layer->texture.value(), MetalContext::shared());
  ApplyLayerMaskOperation record(document, layer, mask, snapshot, ColorMode::rgb8);
  put(layer->texture, nullptr);
  record.redo();
  EXPECT_EQ(layer->mask.value(), mask);
}

TEST_F(LayerMaskOperationsTest, StepsOfAClosedDocumentDoNothing) {
  AddLayerMaskOperation add(document, layer, mask);
  RemoveLayerMaskOperation removal(document, layer, mask);
  document.reset();
  add.undo();
  removal.redo();
  EXPECT_EQ(layer->mask.value(), mask);
}

}  // namespace
}  // namespace orvanel
