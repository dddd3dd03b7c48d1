#include "tools/transform/LayerTransform.h"

#include <gtest/gtest.h>

#include <numbers>

#include "model/ModelSupport.h"
#include "raster/HalfFloat.h"

namespace orvanel {
namespace {

using namespace test;

class LayerTransforms : public testing::TestWithParam<ColorMode> {
 protected:
  void SetUp() override {
    document->addLayer(QStringLiteral("Box"));
    layer = document->activeLayer();
    document->ensureSelection();
    writableSelection(*document).setRect(box, 0.0F, document->context());
    document->fillSelection({0.2F, 0.5F, 0.8F, 1.0F});
    writableSelection(*document).clear(document->context());
    before = *layer->texture.value();
  }
  [[nodiscard]] std::optional<PixelRect> content() const {
    document->settle();
    return document->context().layerContentBounds(*layer->texture.value(), document->colorMode.value(),
                                                  false);
  }
  [[nodiscard]] std::unique_ptr<LayerTransform> begin(const char* name) const {
    return LayerTransform::begin(document, QString::fromUtf8(name));
  }

  static constexpr PixelRect box{10, 8, 12, 6};
  DocumentPtr document = makeDocument(40, 30, GetParam());
  std::shared_ptr<Layer> layer;
  std::optional<Surface> before;
};

TEST_P(LayerTransforms, ContentRectIsTheBoundsOfTheContent) {
  EXPECT_EQ(begin("Move")->contentRect(), box);
}

TEST_P(LayerTransforms, AMoveShiftsByWholePixelsUnderOneRecord) {
  const std::size_t records = document->undoStack.operations().size();
  const auto move = begin("Move");
  move->translate(100, 100);
  move->translate(3, -2);
  move->commit();
  EXPECT_EQ(content(), (PixelRect{13, 6, 12, 6}));
  EXPECT_EQ(layer->texture.value()->pixelAt(13, 6), before->pixelAt(10, 8));
  ASSERT_EQ(document->undoStack.operations().size(), records + 1);
  EXPECT_EQ(document->undoStack.undoActionName(), "Move");
  const Surface after = *layer->texture.value();
  document->undo();
  EXPECT_TRUE(layer->texture.value()->equals(*before));
  document->redo();
  EXPECT_TRUE(layer->texture.value()->equals(after));
}

TEST_P(LayerTransforms, ContentBeyondTheEdgeCanComeBackWhileTheTransformIsOpen) {
  const auto move = begin("Move");
  move->translate(-500, 0);
  EXPECT_EQ(content(), std::nullopt);
  move->translate(0, 0);
  document->settle();
  EXPECT_TRUE(layer->texture.value()->equals(*before));
}

TEST_P(LayerTransforms, AScaleFillsTheGivenBox) {
  const auto scale = begin("Scale");
  scale->scaleTo({4.0, 4.0, 24.0, 12.0});
  scale->commit();
  EXPECT_EQ(content(), (PixelRect{4, 4, 24, 12}));
  EXPECT_EQ(layer->texture.value()->pixelAt(16, 10), before->pixelAt(15, 10));
  EXPECT_EQ(document->undoStack.undoActionName(), "Scale");
}

TEST_P(LayerTransforms, AQuarterTurnIsClockwiseAboutTheCentreOfTheBox) {
  const auto rotate = begin("Rotate");
  rotate->rotate(std::numbers::pi_v<float> / 2.0F);
  // 12 x 6 centred at (16, 11) becomes 6 x 12.
  const PixelRect turned = content().value();
  EXPECT_NEAR(turned.x, 13, 1);
  EXPECT_NEAR(turned.y, 5, 1);
  EXPECT_NEAR(turned.width, 6, 2);
  EXPECT_NEAR(turned.height, 12, 2);
  EXPECT_EQ(layer->texture.value()->pixelAt(16, 8), before->pixelAt(15, 10));
}

TEST_P(LayerTransforms, AMatrixMapsForwardAndActsOnRowVectors) {
  const auto transform = begin("Free Transform");
  // x' = y, y' = x: the box with width and height swapped.
  transform->transform(QTransform(0.0, 1.0, 1.0, 0.0, 2.0, 3.0));
  EXPECT_EQ(content(), (PixelRect{8 + 2, 10 + 3, 6, 12}));
}

TEST_P(LayerTransforms, StrongReductionsAreInvertibleAndSingularMatricesAreNot) {
  EXPECT_TRUE(LayerTransform::canInvert(QTransform(1e-7, 0.0, 0.0, 1e-7, 3.0, 4.0)));
  EXPECT_FALSE(LayerTransform::canInvert(QTransform(1.0, 1.0, 1.0, 1.0, 0.0, 0.0)));
  EXPECT_FALSE(LayerTransform::canInvert(QTransform(0.0, 0.0, 0.0, 0.0, 0.0, 0.0)));
  EXPECT_FALSE(LayerTransform::canInvert(QTransform(1e-30, 0.0, 0.0, 1.0, 1e30, 0.0)));
}

TEST_P(LayerTransforms, CommittingWithoutADragLeavesARecordThatChangesNothing) {
  const auto transform = begin("Free Transform");
  transform->commit();
  EXPECT_EQ(document->undoStack.undoActionName(), "Free Transform");
  EXPECT_TRUE(layer->texture.value()->equals(*before));
  EXPECT_TRUE(document->isDirty.value());
}

TEST_P(LayerTransforms, CancelRestoresTheOriginalAndLeavesNoRecord) {
  const std::size_t records = document->undoStack.operations().size();
  const auto transform = begin("Free Transform");
  transform->rotate(1.0F);
  transform->cancel();
  EXPECT_TRUE(layer->texture.value()->equals(*before));
  EXPECT_EQ(document->undoStack.operations().size(), records);
}

TEST_P(LayerTransforms, TheMaskIsTransformedIfSelected) {
  const std::shared_ptr<LayerMask> mask = addMask(*layer);
  document->context().fillRectMask(writable(mask->maskTexture->texture), {5, 5, 4, 4}, 0.0F);
  put(layer->isMaskSelected, true);
  const auto move = begin("Move");
  EXPECT_EQ(move->contentRect(), (PixelRect{5, 5, 4, 4}));
  move->translate(2, 1);
  move->commit();
  EXPECT_EQ(document->context().selectionBounds(*mask->maskTexture->texture), (PixelRect{7, 6, 4, 4}));
  EXPECT_TRUE(layer->texture.value()->equals(*before));
  document->undo();
  EXPECT_EQ(document->context().selectionBounds(*mask->maskTexture->texture), (PixelRect{5, 5, 4, 4}));
}

TEST_P(LayerTransforms, ALinkedMaskIsCarriedAlongUnderTheSameRecord) {
  const std::shared_ptr<LayerMask> mask = addMask(*layer);
  const Surface& masked = *mask->maskTexture->texture;
  document->context().fillRectMask(writable(mask->maskTexture->texture), {12, 9, 4, 3}, 0.0F);
  const Surface maskBefore = masked;
  const std::size_t records = document->undoStack.operations().size();
  const auto move = begin("Move");
  move->translate(6, 2);
  move->commit();
  EXPECT_EQ(content(), (PixelRect{16, 10, 12, 6}));
  EXPECT_EQ(document->context().selectionBounds(masked), (PixelRect{18, 11, 4, 3}));
  ASSERT_EQ(document->undoStack.operations().size(), records + 1);
  EXPECT_EQ(document->undoStack.undoActionName(), "Move");
  const Surface maskAfter = masked;
  document->undo();
  EXPECT_TRUE(layer->texture.value()->equals(*before));
  EXPECT_TRUE(masked.equals(maskBefore));
  document->redo();
  EXPECT_EQ(content(), (PixelRect{16, 10, 12, 6}));
  EXPECT_TRUE(masked.equals(maskAfter));
  document->undo();
  EXPECT_TRUE(masked.equals(maskBefore));
}

TEST_P(LayerTransforms, ALinkedMaskIsScaledAndTurnedByTheSameMatrix) {
  const std::shared_ptr<LayerMask> mask = addMask(*layer);
  const Surface& masked = *mask->maskTexture->texture;
  document->context().fillRectMask(writable(mask->maskTexture->texture), box, 0.0F);
  const auto scale = begin("Scale");
  scale->scaleTo({4.0, 4.0, 24.0, 12.0});
  document->settle();
  // The mask's box is that of the content, and stays so but for its soft rim.
  EXPECT_EQ(masked.pixelAt(5, 5), halfOne);
  EXPECT_EQ(masked.pixelAt(26, 14), halfOne);
  EXPECT_EQ(masked.pixelAt(2, 10), 0U);
  EXPECT_EQ(masked.pixelAt(29, 10), 0U);
  scale->rotate(std::numbers::pi_v<float> / 2.0F);
  document->settle();
  const PixelRect turned = document->context().selectionBounds(masked).value();
  EXPECT_EQ(content(), turned);
}

TEST_P(LayerTransforms, CancellingPutsALinkedMaskBack) {
  const std::shared_ptr<LayerMask> mask = addMask(*layer);
  document->context().fillRectMask(writable(mask->maskTexture->texture), box, 0.0F);
  const Surface maskBefore = *mask->maskTexture->texture;
  const auto move = begin("Move");
  move->translate(3, 3);
  document->settle();
  EXPECT_FALSE(mask->maskTexture->texture->equals(maskBefore));
  move->translate(5, 5);
  move->cancel();
  EXPECT_TRUE(mask->maskTexture->texture->equals(maskBefore));
  EXPECT_TRUE(layer->texture.value()->equals(*before));
}

TEST_P(LayerTransforms, WhatAMaskTakesFromOutsideTheCanvasHides) {
  const std::shared_ptr<LayerMask> mask = addMask(*layer);
  const Surface& masked = *mask->maskTexture->texture;
  document->context().fillMask(writable(mask->maskTexture->texture), 1.0F);
  Surface hole(maskPixelFormat, 40, 30);
  document->context().fillRectMask(hole, {0, 0, 2, 2}, 0.0F);
  document->context().subtractMasks(writable(mask->maskTexture->texture), hole);
  const auto move = begin("Move");
  move->translate(4, 0);
  move->commit();
  EXPECT_EQ(masked.pixelAt(3, 20), 0U);
  EXPECT_EQ(masked.pixelAt(4, 20), halfOne);
}

TEST_P(LayerTransforms, AMaskThatIsTheSameEverywhereOrNotLinkedStays) {
  const std::shared_ptr<LayerMask> mask = addMask(*layer);
  const Surface& masked = *mask->maskTexture->texture;
  document->context().fillMask(writable(mask->maskTexture->texture), 1.0F);
  const auto moveOn = [&] {
    const auto move = begin("Move");
    move->translate(4, 1);
    move->commit();
  };
  moveOn();
  EXPECT_EQ(masked.pixelAt(0, 0), halfOne) << "it reveals what is painted here later";
  document->context().fillRectMask(writable(mask->maskTexture->texture), {5, 5, 4, 4}, 0.0F);
  document->setMaskLinked(layer->id, false);
  const Surface unlinked = masked;
  moveOn();
  EXPECT_TRUE(masked.equals(unlinked));
  EXPECT_EQ(content(), (PixelRect{18, 10, 12, 6}));
}

TEST_P(LayerTransforms, EverybodySeesWhatIsShownWhileATransformIsOpen) {
  const auto move = begin("Move");
  move->translate(3, -2);
  EXPECT_TRUE(layer->texture.value()->equals(*before)) << "shown, but not written";
  const auto shownAt = [&](const Surface& surface) { return surface.pixelAt(13, 6); };
  const std::uint64_t box0 = before->pixelAt(10, 8);
  EXPECT_NE(document->composite()->pixelAt(14, 7), document->composite()->pixelAt(11, 8));
  EXPECT_EQ(shownAt(*layer->texture.value()), box0) << "flattening writes it";

  move->translate(0, 0);
  move->translate(3, -2);
  document->duplicateNode(layer->id);
  EXPECT_EQ(shownAt(*document->activeLayer()->texture.value()), box0);
  document->selectNode(layer->id);

  move->translate(1, 1);
  move->translate(3, -2);
  EXPECT_NE(document->freezeComposite(), nullptr);
  EXPECT_EQ(shownAt(*layer->texture.value()), box0);

  move->translate(1, 1);
  move->translate(3, -2);
  document->selectAll();
  const std::optional<PixelClipboard> copied = document->copyPixels();
  Surface pixels(copied->pixelFormat, 40, 30);
  copied->snapshot->restore(pixels, document->context());
  EXPECT_EQ(shownAt(pixels), box0);

  move->translate(1, 1);
  move->translate(3, -2);
  document->selectLayerTransparency(*layer);
  EXPECT_EQ(document->context().selectionBounds(*document->selection.value()->maskTexture->texture),
            (PixelRect{13, 6, 12, 6}));
  EXPECT_TRUE(move->isOpen());
  move->cancel();
  EXPECT_TRUE(layer->texture.value()->equals(*before));
}

TEST_P(LayerTransforms, AStepTellsOfItsPreview) {
  const auto move = begin("Move");
  const ChangeRecorder changes(*document);
  move->translate(3, -2);
  EXPECT_EQ(changes.count<change::PreviewChanged>(), 1U);
  EXPECT_EQ(changes.count<change::PixelsChanged>(), 0U);
  move->commit();
  EXPECT_EQ(changes.count<change::PixelsChanged>(), 1U);
}

TEST_P(LayerTransforms, LockedLayersFoldersAndEmptyLayersAreNotTransformed) {
  put(layer->isLocked, true);
  EXPECT_EQ(begin("Move"), nullptr);
  document->addFolder(QStringLiteral("Folder"));
  EXPECT_EQ(begin("Move"), nullptr);
  document->addLayer(QStringLiteral("Empty"));
  EXPECT_EQ(begin("Move"), nullptr);
}

INSTANTIATE_TEST_SUITE_P(Modes, LayerTransforms, testing::ValuesIn(allColorModes));

}  // namespace
}  // namespace orvanel
