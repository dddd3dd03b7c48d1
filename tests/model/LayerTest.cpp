#include "model/Layer.h"

#include <gtest/gtest.h>

#include "model/ModelSupport.h"
#include "raster/TileMemory.h"

namespace orvanel {
namespace {

using namespace test;

std::shared_ptr<MaskTexture> filledMask(int width, int height, float value) {
  auto mask = MaskTexture::create(width, height, MetalContext::shared());
  MetalContext::shared().fillMask(mask->pixels(), value);
  return mask;
}

TEST(MaskTextureTest, HoldsHalfFloatsInitiallyZero) {
  const auto mask = MaskTexture::create(7, 5, MetalContext::shared());
  ASSERT_NE(mask, nullptr);
  EXPECT_EQ(mask->texture->format(), PixelFormat::r16Float);
  EXPECT_EQ(mask->width, 7);
  EXPECT_EQ(mask->height, 5);
  EXPECT_EQ(mask->texture->pixelAt(6, 4), 0U);
}

TEST(MaskTextureTest, CannotBeMadeWithoutASurface) {
  const tileMemory::ScopedSurfaceFailure failure(0);
  EXPECT_EQ(MaskTexture::create(7, 5, MetalContext::shared()), nullptr);
}

TEST(MaskTextureTest, CopiesContentsOfTheSameSize) {
  const auto source = filledMask(7, 5, 1.0F);
  const auto destination = MaskTexture::create(7, 5, MetalContext::shared());
  destination->copyContents(*source);
  EXPECT_TRUE(destination->texture->equals(*source->texture));
  MetalContext::shared().fillMask(source->pixels(), 0.5F);
  EXPECT_FALSE(destination->texture->equals(*source->texture));
}

TEST(MaskTextureTest, KeepsItsContentsIfSizesDiffer) {
  const auto destination = filledMask(7, 5, 0.25F);
  const Surface before = *destination->texture;
  for (const auto& [width, height] : {std::pair{7, 6}, {7, 4}, {8, 5}, {6, 5}, {5, 7}}) {
    destination->copyContents(*filledMask(width, height, 1.0F));
    EXPECT_TRUE(destination->texture->equals(before)) << width << " x " << height;
  }
}

TEST(LayerTest, BeginsVisibleOpaqueAndUnlocked) {
  const Layer layer("L");
  EXPECT_EQ(layer.name.value(), "L");
  EXPECT_FALSE(layer.id.isNull());
  EXPECT_EQ(layer.texture.value(), nullptr);
  EXPECT_EQ(layer.opacity.value(), 1.0F);
  EXPECT_EQ(layer.blendMode.value(), BlendMode::normal);
  EXPECT_TRUE(layer.isVisible.value());
  EXPECT_FALSE(layer.isLocked.value());
  EXPECT_EQ(layer.mask.value(), nullptr);
  EXPECT_TRUE(layer.isMaskLinked.value());
  EXPECT_FALSE(layer.isMaskSelected.value());
  EXPECT_TRUE(layer.thumbnailDirty.value());
  EXPECT_TRUE(layer.maskThumbnailDirty.value());
  EXPECT_TRUE(layer.channelThumbnailsDirty.value());
  EXPECT_TRUE(layer.channelThumbnails.value().empty());
}

TEST(LayerTest, EditsGoToTheMaskOnlyIfThereIsOne) {
  Layer layer("L");
  EXPECT_EQ(layer.activeEditTexture(), nullptr);
  put(layer.texture, MetalContext::shared().makeTexture(PixelFormat::rgba8Unorm, 7, 5));
  put(layer.isMaskSelected, true);
  EXPECT_EQ(layer.activeEditTexture(), layer.texture.value());
  const auto mask = addMask(layer);
  EXPECT_EQ(layer.activeEditTexture(), mask->maskTexture->texture);
  put(layer.isMaskSelected, false);
  EXPECT_EQ(layer.activeEditTexture(), layer.texture.value());
}

TEST(LayerTest, SelectingTheMaskIsReportedOnce) {
  const DocumentPtr document = makeDocument();
  const std::shared_ptr<Layer> layer = document->allLayers().front();
  const ChangeRecorder changes(*document);
  document->setMaskSelected(layer->id, false);
  EXPECT_EQ(changes.batches, 0);
  document->setMaskSelected(layer->id, true);
  document->setMaskSelected(layer->id, true);
  EXPECT_EQ(changes.count<change::NodePropertyChanged>(NodeProperty::isMaskSelected), 1U);
}

TEST(LayerNodeTest, AccessesPropertiesOfBothKinds) {
  const auto layer = std::make_shared<Layer>("L");
  const auto folder = std::make_shared<LayerFolder>("F");
  const LayerNode layerNode(layer);
  const LayerNode folderNode(folder);
  EXPECT_EQ(layerNode.id(), layer->id);
  EXPECT_EQ(folderNode.id(), folder->id);
  EXPECT_EQ(layerNode.layer(), layer);
  EXPECT_EQ(layerNode.folder(), nullptr);
  EXPECT_EQ(folderNode.folder(), folder);
  EXPECT_EQ(folderNode.layer(), nullptr);
  put(folderNode.opacity(), 0.5F);
  put(folderNode.name(), QStringLiteral("G"));
  put(folderNode.blendMode(), BlendMode::screen);
  put(folderNode.isVisible(), false);
  put(folderNode.isLocked(), true);
  EXPECT_EQ(folder->opacity.value(), 0.5F);
  EXPECT_EQ(folder->name.value(), "G");
  EXPECT_EQ(folder->blendMode.value(), BlendMode::screen);
  EXPECT_FALSE(folder->isVisible.value());
  EXPECT_TRUE(folder->isLocked.value());
  EXPECT_TRUE(folder->isExpanded.value());
  EXPECT_EQ(layerNode, LayerNode(layer));
  EXPECT_NE(layerNode, folderNode);
}

TEST(TreeWalkTest, VisitsAFolderBeforeItsChildren) {
  const auto inner = std::make_shared<Layer>("inner");
  const auto folder = std::make_shared<LayerFolder>("folder");
  const auto top = std::make_shared<Layer>("top");
  put(folder->children, LayerNodeList{inner});
  const LayerNodeList list{folder, top};
  std::vector<std::shared_ptr<Layer>> layers;
  collectLayers(list, layers);
  ASSERT_EQ(layers.size(), 2U);
  EXPECT_EQ(layers[0], inner);
  EXPECT_EQ(layers[1], top);
  EXPECT_EQ(findNode(folder->id, list), LayerNode(folder));
  EXPECT_EQ(findNode(inner->id, list), LayerNode(inner));
  EXPECT_EQ(findNode(QUuid::createUuid(), list), std::nullopt);
}

TEST(UuidTextTest, IsUpperCaseAndReadInEitherCase) {
  const QUuid id = QUuid::createUuid();
  const QString text = uuidText(id);
  EXPECT_EQ(text.size(), 36);
  EXPECT_EQ(text, text.toUpper());
  EXPECT_EQ(uuidFromText(text), id);
  EXPECT_EQ(uuidFromText(text.toLower()), id);
}

TEST(UuidTextTest, OnlyTheCanonicalFormIsRead) {
  const QString text = uuidText(QUuid::createUuid());
  for (const QString& bad : {QString(), text.chopped(1), text + QChar(u'0'), QChar(u'{') + text + QChar(u'}'),
                             QString(text).remove(QChar(u'-')), QString(text).replace(0, 1, QChar(u'G'))}) {
    EXPECT_TRUE(uuidFromText(bad).isNull()) << bad.toStdString();
  }
}

}  // namespace
}  // namespace orvanel
