// Adding, applying and removing layer masks.
#include <gtest/gtest.h>

#include "model/PixelSupport.h"
#include "raster/TileMemory.h"

namespace orvanel {
namespace {

using namespace test;

class DocumentMaskTest : public testing::TestWithParam<ColorMode> {
 protected:
  [[nodiscard]] bool maskIs(const Surface& expected) const { return maskPixelsOf(*layer).equals(expected); }
  void giveThumbnail() const {
    put(layer->maskThumbnailImage, std::make_shared<const QImage>(2, 1, QImage::Format_RGBA8888));
  }

  std::mt19937 random{29};
  DocumentPtr document = makeRandomDocument(GetParam(), random);
  std::shared_ptr<Layer> layer = document->allLayers().front();
};

INSTANTIATE_TEST_SUITE_P(Modes, DocumentMaskTest, testing::ValuesIn(allColorModes), modeName);

TEST_P(DocumentMaskTest, WithoutASelectionTheNewMaskHidesNothing) {
  expectPixelCycle(*document, "Add Layer Mask", [&] { document->addLayerMask(layer); });
  document->redo();
  EXPECT_TRUE(maskIs(filledMask(pixelWidth, pixelHeight, 1.0F)));
  EXPECT_TRUE(layer->mask.value()->isEnabled.value());
  EXPECT_FALSE(layer->mask.value()->id.isNull());
  EXPECT_FALSE(layer->isMaskSelected.value());
  EXPECT_TRUE(layer->isMaskLinked.value());
}

TEST_P(DocumentMaskTest, TheNewMaskEqualsTheSelectionWhichIsKept) {
  selectRandomly(*document, random);
  const SelectionState before = selectionState(*document);
  expectPixelCycle(*document, "Add Layer Mask", [&] { document->addLayerMask(layer); });
  document->redo();
  EXPECT_TRUE(maskIs(selectionMask(*document)));
  EXPECT_EQ(difference(selectionState(*document), before), "");
}

TEST_P(DocumentMaskTest, TheNewMaskIsACopyOfTheSelection) {
  selectRandomly(*document, random);
  const Surface selected = selectionMask(*document);
  document->addLayerMask(layer);
  document->selectAll();
  EXPECT_TRUE(maskIs(selected));
  document->context().fillMask(writable(layer->mask.value()->maskTexture->texture), 0.5F);
  EXPECT_TRUE(selectionMask(*document).equals(filledMask(pixelWidth, pixelHeight, 1.0F)));
}

TEST_P(DocumentMaskTest, ALayerThatIsNotInTheTreeHasNoMaskCommands) {
  document->addLayer("removed");
  const std::shared_ptr<Layer> removed = document->activeLayer();
  addRandomMask(*removed, random);
  const std::shared_ptr<LayerMask> mask = removed->mask.value();
  document->removeNode(removed->id);
  const std::int64_t records = recordCount(*document);
  document->applyLayerMask(removed);
  document->removeLayerMask(removed);
  EXPECT_EQ(removed->mask.value(), mask);
  put(removed->mask, nullptr);
  document->addLayerMask(removed);
  EXPECT_EQ(removed->mask.value(), nullptr);
  EXPECT_EQ(recordCount(*document), records);
}

TEST_P(DocumentMaskTest, ANewMaskHasNoThumbnailYet) {
  giveThumbnail();
  put(layer->maskThumbnailDirty, false);
  document->addLayerMask(layer);
  EXPECT_EQ(layer->maskThumbnailImage.value(), nullptr);
  EXPECT_TRUE(layer->maskThumbnailDirty.value());
}

TEST_P(DocumentMaskTest, AnEmptySelectionGivesAMaskThatHidesNothing) {
  document->selectAll();
  document->deselect();
  document->addLayerMask(layer);
  EXPECT_TRUE(maskIs(filledMask(pixelWidth, pixelHeight, 1.0F)));
}

TEST_P(DocumentMaskTest, EachNewMaskHasItsOwnIdentity) {
  document->addLayerMask(layer);
  const QUuid first = layer->mask.value()->id;
  document->removeLayerMask(layer);
  document->addLayerMask(layer);
  EXPECT_NE(layer->mask.value()->id, first);
}

TEST_P(DocumentMaskTest, ALayerHasOnlyOneMask) {
  const std::shared_ptr<LayerMask> mask = addRandomMask(*layer, random);
  expectNothing(*document, [&] { document->addLayerMask(layer); });
  EXPECT_EQ(layer->mask.value(), mask);
}

TEST_P(DocumentMaskTest, NoMaskIsAddedIfItsSurfaceCannotBeMade) {
  for (const bool hasSelection : {false, true}) {
    if (hasSelection) selectRandomly(*document, random);
    const ChangeRecorder changes(*document);
    const tileMemory::ScopedSurfaceFailure failure(0);
    expectNothing(*document, [&] { document->addLayerMask(layer); });
    EXPECT_EQ(changes.count<change::ThumbnailsChanged>(), 0U);
  }
}

TEST_P(DocumentMaskTest, AnyLayerCanBeGivenAMask) {
  document->addLayer("Active");
  document->addLayerMask(layer);
  EXPECT_NE(layer->mask.value(), nullptr);
  EXPECT_EQ(document->activeLayer()->mask.value(), nullptr);
  EXPECT_EQ(activeName(*document), "Active");
}

TEST_P(DocumentMaskTest, ApplyingMultipliesAlphaAndRemovesTheMask) {
  addRandomMask(*layer, random);
  const Surface before = pixelsOf(*layer);
  const Surface mask = maskPixelsOf(*layer);
  expectPixelCycle(*document, "Apply Layer Mask", [&] { document->applyLayerMask(layer); });
  document->redo();
  EXPECT_EQ(layer->mask.value(), nullptr);
  reference::expectImage(pixelsOf(*layer),
                         mapped(before, mask, 1.0, [](const reference::Color& old, double m) {
                           return reference::Color{old[0], old[1], old[2], old[3] * m};
                         }));
}

TEST_P(DocumentMaskTest, ApplyingIgnoresTheSelectionAndDisabledState) {
  addRandomMask(*layer, random);
  document->applyLayerMask(layer);
  const Surface applied = pixelsOf(*layer);
  document->undo();
  put(layer->mask.value()->isEnabled, false);
  selectRect(*document, {1, 1, 5, 5});
  document->applyLayerMask(layer);
  EXPECT_TRUE(pixelsOf(*layer).equals(applied));
}

TEST_P(DocumentMaskTest, RemovingChangesNoPixelsAndUndoRestoresTheSameMask) {
  const std::shared_ptr<LayerMask> mask = addRandomMask(*layer, random);
  const Surface pixels = pixelsOf(*layer);
  expectPixelCycle(*document, "Remove Layer Mask", [&] { document->removeLayerMask(layer); });
  EXPECT_EQ(layer->mask.value(), mask);
  document->redo();
  EXPECT_EQ(layer->mask.value(), nullptr);
  EXPECT_TRUE(pixelsOf(*layer).equals(pixels));
}

TEST_P(DocumentMaskTest, RemovingTheSelectedMaskMakesThePixelsTheTarget) {
  for (const auto takeOff : {&Document::applyLayerMask, &Document::removeLayerMask}) {
    addRandomMask(*layer, random);
    put(layer->isMaskSelected, true);
    giveThumbnail();
    const ChangeRecorder changes(*document);
    ((*document).*takeOff)(layer);
    EXPECT_FALSE(layer->isMaskSelected.value());
    EXPECT_EQ(layer->activeEditTexture(), layer->texture.value());
    EXPECT_EQ(layer->maskThumbnailImage.value(), nullptr);
    EXPECT_EQ(changes.count<change::NodePropertyChanged>(NodeProperty::isMaskSelected), 1U);
    EXPECT_EQ(changes.count<change::NodePropertyChanged>(NodeProperty::mask), 1U);
    EXPECT_EQ(changes.count<change::ThumbnailsChanged>(), 1U);
    EXPECT_EQ(changes.batches, 1);
  }
}

TEST_P(DocumentMaskTest, RemovingAnUnselectedMaskDoesNotReportTheActiveLayer) {
  for (const auto takeOff : {&Document::applyLayerMask, &Document::removeLayerMask}) {
    addRandomMask(*layer, random);
    const ChangeRecorder changes(*document);
    ((*document).*takeOff)(layer);
    EXPECT_EQ(changes.count<change::NodePropertyChanged>(NodeProperty::isMaskSelected), 0U);
    EXPECT_EQ(changes.count<change::ActiveNodeChanged>(), 0U);
  }
}

TEST_P(DocumentMaskTest, AddingReportsNewThumbnails) {
  const ChangeRecorder changes(*document);
  document->addLayerMask(layer);
  EXPECT_EQ(changes.count<change::ThumbnailsChanged>(), 1U);
}

TEST_P(DocumentMaskTest, EveryCommandMarksTheDocument) {
  EXPECT_TRUE(marksEdited(*document, [&] { document->addLayerMask(layer); }));
  EXPECT_TRUE(marksEdited(*document, [&] { document->removeLayerMask(layer); }));
  document->addLayerMask(layer);
  EXPECT_TRUE(marksThumbnails(
      *layer, [&] { EXPECT_TRUE(marksEdited(*document, [&] { document->applyLayerMask(layer); })); }));
}

TEST_P(DocumentMaskTest, WithoutAMaskThereIsNothingToApplyOrRemove) {
  const ChangeRecorder changes(*document);
  expectNothing(*document, [&] {
    document->applyLayerMask(layer);
    document->removeLayerMask(layer);
  });
  EXPECT_EQ(changes.count<change::ThumbnailsChanged>(), 0U);
}

TEST_P(DocumentMaskTest, AMaskIsNotAppliedToALayerWithoutPixels) {
  addRandomMask(*layer, random);
  put(layer->texture, nullptr);
  expectNothing(*document, [&] { document->applyLayerMask(layer); });
}

TEST_P(DocumentMaskTest, AMaskIsNotAppliedWithoutASnapshot) {
  addRandomMask(*layer, random);
  put(layer->isMaskSelected, true);
  const tileMemory::ScopedSurfaceFailure failure(0);
  expectNothing(*document, [&] { document->applyLayerMask(layer); });
}

TEST_P(DocumentMaskTest, ALockDoesNotPreventMaskCommands) {
  put(layer->isLocked, true);
  document->addLayerMask(layer);
  document->removeLayerMask(layer);
  document->addLayerMask(layer);
  document->applyLayerMask(layer);
  EXPECT_EQ(recordCount(*document), 4);
}

}  // namespace
}  // namespace orvanel
