#include "model/records/CanvasOperations.h"

#include <gtest/gtest.h>

#include "model/PixelSupport.h"
#include "raster/TileMemory.h"

namespace orvanel {
namespace {

using namespace test;

class CanvasOperationsTest : public testing::TestWithParam<ColorMode> {
 protected:
  /// An unmasked layer, a masked one in a folder, and one with a disabled mask.
  void SetUp() override {
    document->addFolder("F");
    document->addLayer("inner");
    document->selectNode(idOf(*document, "F"));
    document->addLayer("top");
    layers = document->allLayers();
    ASSERT_EQ(treeText(*document), "Background, F[inner, top]");
    for (const std::shared_ptr<Layer>& layer : layers)
      writable(layer->texture.value()) = randomPixels(GetParam(), random);
    addRandomMask(*layers[1], random);
    addRandomMask(*layers[2], random);
    put(layers[2]->mask.value()->isEnabled, false);
  }
  [[nodiscard]] UndoableOperation& newest() const { return *document->undoStack.operations().back(); }
  [[nodiscard]] ColorMode otherMode() const {
    return GetParam() == ColorMode::grayscale16 ? ColorMode::rgb8 : ColorMode::grayscale16;
  }
  [[nodiscard]] static std::int64_t costOf(const SnapshotList& list) {
    std::int64_t cost = 0;
    for (const LayerSnapshot& entry : list) cost += entry.snapshot->compressedSize();
    return cost;
  }

  std::mt19937 random{47};
  DocumentPtr document = makeRandomDocument(GetParam(), random);
  std::vector<std::shared_ptr<Layer>> layers;
};

INSTANTIATE_TEST_SUITE_P(Modes, CanvasOperationsTest, testing::ValuesIn(allColorModes), modeName);

TEST_P(CanvasOperationsTest, SnapshotsAreInTreeOrder) {
  const SnapshotList pixels = snapshotsOfLayers(*document);
  ASSERT_EQ(pixels.size(), 3U);
  for (std::size_t i = 0; i < 3; ++i) EXPECT_EQ(pixels[i].layerID, layers[i]->id);
  const SnapshotList masks = snapshotsOfMasks(*document);
  ASSERT_EQ(masks.size(), 2U);
  EXPECT_EQ(masks[0].layerID, layers[1]->id);
  EXPECT_EQ(masks[1].layerID, layers[2]->id);
  EXPECT_EQ(masks[0].snapshot->pixelFormat(), maskPixelFormat);
}

TEST_P(CanvasOperationsTest, SurfacesThatAreMissingOrCannotBeCapturedAreOmitted) {
  put(layers[1]->texture, nullptr);
  EXPECT_EQ(snapshotsOfLayers(*document).size(), 2U);
  EXPECT_EQ(snapshotsOfMasks(*document).size(), 2U);
  const tileMemory::ScopedSurfaceFailure failure(1);
  EXPECT_EQ(snapshotsOfLayers(*document).size(), 1U);
  EXPECT_TRUE(snapshotsOfMasks(*document).empty());
}

TEST_P(CanvasOperationsTest, CropIsUndoneExactly) {
  const PixelState before = pixelState(*document);
  document->crop({31, 17, 100, 101}, "Crop");
  EXPECT_EQ(newest().actionName(), "Crop");
  const PixelState after = pixelState(*document);
  TextureSnapshot::waitForCompression();
  for (int round = 0; round < 3; ++round) {
    newest().undo();
    EXPECT_EQ(difference(pixelState(*document), before), "");
    newest().redo();
    EXPECT_EQ(difference(pixelState(*document), after), "");
  }
}

TEST_P(CanvasOperationsTest, EachStepMakesNewSurfaces) {
  document->crop({31, 17, 100, 101}, "Crop");
  const ConstTexture cropped = layers[0]->texture.value();
  const Surface contents = *cropped;
  const ConstTexture composite = document->compositedTexture.value();
  const std::shared_ptr<const Selection> selection = document->selection.value();
  newest().undo();
  EXPECT_NE(layers[0]->texture.value(), cropped);
  EXPECT_TRUE(cropped->equals(contents));
  EXPECT_NE(document->compositedTexture.value(), composite);
  EXPECT_NE(document->selection.value(), selection);
}

TEST_P(CanvasOperationsTest, MasksKeepTheirStateUnderNewIdentities) {
  std::vector<QUuid> seen{layers[2]->mask.value()->id};
  document->crop({31, 17, 100, 101}, "Crop");
  for (const auto step : {&UndoableOperation::undo, &UndoableOperation::redo, &UndoableOperation::undo}) {
    (newest().*step)();
    EXPECT_TRUE(layers[1]->mask.value()->isEnabled.value());
    EXPECT_FALSE(layers[2]->mask.value()->isEnabled.value());
    const QUuid id = layers[2]->mask.value()->id;
    EXPECT_EQ(std::count(seen.begin(), seen.end(), id), 0);
    seen.push_back(id);
  }
}

TEST_P(CanvasOperationsTest, AMaskKeepsItsCurrentEnabledState) {
  document->crop({31, 17, 100, 101}, "Crop");
  put(layers[1]->mask.value()->isEnabled, false);
  put(layers[2]->mask.value()->isEnabled, true);
  newest().undo();
  EXPECT_FALSE(layers[1]->mask.value()->isEnabled.value());
  EXPECT_TRUE(layers[2]->mask.value()->isEnabled.value());
}

TEST_P(CanvasOperationsTest, AStepIsReportedOnce) {
  document->resizeCanvas(70, 80, 0, 0);
  const ChangeRecorder changes(*document);
  newest().undo();
  EXPECT_EQ(changes.batches, 1);
  EXPECT_EQ(changes.count<change::CanvasChanged>(), 1U);
  EXPECT_EQ(changes.count<change::SelectionChanged>(), 1U);
  EXPECT_EQ(changes.count<change::PixelsChanged>(), layers.size());
}

TEST_P(CanvasOperationsTest, RecordsDoNotSetTheDocumentsFlags) {
  document->crop({31, 17, 100, 101}, "Crop");
  UndoableOperation& crop = newest();
  EXPECT_FALSE(marksEdited(*document, [&] { crop.undo(); }));
  document->changeColorMode(otherMode());
  EXPECT_FALSE(marksEdited(*document, [&] { newest().undo(); }));
}

TEST_P(CanvasOperationsTest, LayersThatHaveLeftTheTreeAreSkipped) {
  document->crop({31, 17, 100, 101}, "Crop");
  UndoableOperation& record = newest();
  const Surface cropped = pixelsOf(*layers[1]);
  document->removeNode(layers[1]->id);
  put(layers[2]->mask, nullptr);
  record.undo();
  EXPECT_TRUE(pixelsOf(*layers[1]).equals(cropped));
  EXPECT_EQ(layers[2]->mask.value(), nullptr) << "a record makes no mask where there is none";
  EXPECT_EQ(pixelsOf(*layers[2]).width(), pixelWidth);
}

TEST_P(CanvasOperationsTest, AFolderWithALayersIdentityIsSkipped) {
  CanvasState before = CanvasState::of(*document);
  before.layers.front().layerID = idOf(*document, "F");
  before.masks.front().layerID = idOf(*document, "F");
  CropOperation record("Crop", document, before, CanvasState::of(*document));
  const ConstTexture pixels = layers[0]->texture.value();
  record.undo();
  EXPECT_EQ(layers[0]->texture.value(), pixels);
}

TEST_P(CanvasOperationsTest, ALayerThatIsNotListedKeepsItsSurface) {
  document->crop({31, 17, 100, 101}, "Crop");
  UndoableOperation& record = newest();
  document->addLayer("Later");
  const ConstTexture later = document->activeLayer()->texture.value();
  record.undo();
  EXPECT_EQ(document->activeLayer()->texture.value(), later);
  EXPECT_EQ(later->width(), 100);
}

TEST_P(CanvasOperationsTest, ASideWithoutSnapshotsStillChangesTheCanvas) {
  const CanvasState before{.width = 20, .height = 10, .layers = {}, .masks = {}};
  CanvasSizeOperation record("Canvas Size", document, before, CanvasState::of(*document));
  const PixelState after = pixelState(*document);
  record.undo();
  EXPECT_EQ(document->canvasWidth.value(), 20);
  EXPECT_EQ(document->compositedTexture.value()->height(), 10);
  EXPECT_EQ(document->selection.value()->maskTexture->width, 20);
  EXPECT_EQ(pixelsOf(*layers[0]).width(), pixelWidth);
  record.redo();
  EXPECT_EQ(difference(pixelState(*document), after), "");
}

TEST_P(CanvasOperationsTest, SurfacesHaveTheModeOfTheRecord) {
  const PixelState before = pixelState(*document);
  document->crop({31, 17, 100, 101}, "Crop");
  UndoableOperation& record = newest();
  document->changeColorMode(otherMode());
  record.undo();
  EXPECT_TRUE(pixelsOf(*layers[0]).equals(*before.layers[0].pixels));
}

TEST_P(CanvasOperationsTest, SurfacesOfAModeChangeHaveTheSizeOfTheRecord) {
  const PixelState before = pixelState(*document);
  document->changeColorMode(otherMode());
  UndoableOperation& record = newest();
  document->crop({31, 17, 100, 101}, "Crop");
  record.undo();
  EXPECT_TRUE(pixelsOf(*layers[0]).equals(*before.layers[0].pixels));
}

TEST_P(CanvasOperationsTest, UndoingAModeChangeRestoresFormatAndBytes) {
  const PixelState before = pixelState(*document);
  const SelectionState selectionBefore = selectionState(*document);
  const std::shared_ptr<LayerMask> mask = layers[1]->mask.value();
  document->changeColorMode(otherMode());
  EXPECT_EQ(newest().actionName(), "Change Color Mode");
  const PixelState after = pixelState(*document);
  TextureSnapshot::waitForCompression();
  for (int round = 0; round < 2; ++round) {
    newest().undo();
    EXPECT_EQ(pixelsOf(*layers[0]).format(), layerPixelFormat(GetParam()));
    EXPECT_EQ(difference(pixelState(*document), before), "");
    newest().redo();
    EXPECT_EQ(pixelsOf(*layers[0]).format(), layerPixelFormat(otherMode()));
    EXPECT_EQ(difference(pixelState(*document), after), "");
  }
  EXPECT_EQ(layers[1]->mask.value(), mask);
  EXPECT_EQ(difference(selectionState(*document), selectionBefore), "");
}

TEST_P(CanvasOperationsTest, EveryStepMarksAllThumbnails) {
  document->crop({31, 17, 100, 101}, "Crop");
  document->changeColorMode(otherMode());
  const auto marksAll = [this](void (Document::*step)()) {
    return marksThumbnails(*layers[0], [&] {
      EXPECT_TRUE(marksThumbnails(
          *layers[1], [&] { EXPECT_TRUE(marksThumbnails(*layers[2], [&] { ((*document).*step)(); })); }));
    });
  };
  for (const auto step : {&Document::undo, &Document::undo, &Document::redo, &Document::redo}) {
    EXPECT_TRUE(marksAll(step));
  }
}

TEST_P(CanvasOperationsTest, CostIsTheSumOfAllSnapshots) {
  CanvasState before = CanvasState::of(*document);
  for (const std::shared_ptr<Layer>& layer : layers)
    writable(layer->texture.value()) = randomPixels(GetParam(), random);
  CanvasState after = CanvasState::of(*document);
  const CropOperation crop("Crop", document, before, after);
  TextureSnapshot::waitForCompression();
  EXPECT_EQ(crop.memoryCost(),
            costOf(before.layers) + costOf(before.masks) + costOf(after.layers) + costOf(after.masks));
  EXPECT_GT(costOf(before.masks), 0);
  const ChangeColorModeOperation change(document, {.colorMode = GetParam(), .layers = before.layers},
                                        {.colorMode = GetParam(), .layers = after.layers});
  EXPECT_EQ(change.memoryCost(), costOf(before.layers) + costOf(after.layers));
}

TEST_P(CanvasOperationsTest, ARecordLargerThanTheBudgetEvictsOlderOnesAndStays) {
  writableHistory(*document).memoryBudget = 1;
  document->crop({31, 17, 100, 101}, "Crop");
  ASSERT_EQ(document->undoStack.operations().size(), 1U);
  EXPECT_EQ(newest().actionName(), "Crop");
  document->undo();
  EXPECT_EQ(document->canvasWidth.value(), pixelWidth);
}

TEST_P(CanvasOperationsTest, ALayerWhoseSurfaceCannotBeMadeIsFatal) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  document->crop({31, 17, 100, 101}, "Crop");
  EXPECT_DEATH(
      {
        const tileMemory::ScopedSurfaceFailure failure(0);
        newest().undo();
      },
      "Failed to create layer texture");
}

TEST_P(CanvasOperationsTest, StepsOfAClosedDocumentDoNothing) {
  const auto crop = std::make_shared<CropOperation>("Crop", document, CanvasState::of(*document),
                                                    CanvasState::of(*document));
  const auto change =
      std::make_shared<ChangeColorModeOperation>(document, ChangeColorModeOperation::State::of(*document),
                                                 ChangeColorModeOperation::State::of(*document));
  const ConstTexture pixels = layers[0]->texture.value();
  document.reset();
  for (const std::shared_ptr<UndoableOperation>& record :
       {std::shared_ptr<UndoableOperation>(crop), std::shared_ptr<UndoableOperation>(change)}) {
    record->undo();
    record->redo();
  }
  EXPECT_EQ(layers[0]->texture.value(), pixels);
}

}  // namespace
}  // namespace orvanel
