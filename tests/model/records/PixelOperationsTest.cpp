#include "model/records/PixelOperations.h"

#include <gtest/gtest.h>

#include "model/PixelSupport.h"
#include "raster/TileMemory.h"
#include "undo/HeldBackground.h"

namespace orvanel {
namespace {

using namespace test;

constexpr Color4 paint{0.2F, 0.4F, 0.6F, 0.8F};

class PixelOperationsTest : public testing::TestWithParam<ColorMode> {
 protected:
  void SetUp() override { addRandomMask(*layer, random); }

  static constexpr std::array bothKinds{SurfaceKind::pixels, SurfaceKind::mask};

  [[nodiscard]] const ConstTexture& texture() const { return layer->texture.value(); }
  [[nodiscard]] const ConstTexture& mask() const { return layer->mask.value()->maskTexture->texture; }
  [[nodiscard]] const ConstTexture& target(SurfaceKind kind) const {
    return kind == SurfaceKind::mask ? mask() : texture();
  }
  [[nodiscard]] const MetalContext& context() const { return document->context(); }
  [[nodiscard]] std::shared_ptr<TextureSnapshot> capture(const Surface& surface) const {
    return TextureSnapshot::capture(surface, context());
  }
  /// An edit of the target, which hasn't been changed yet.
  [[nodiscard]] PixelEdit edit(SurfaceKind kind = SurfaceKind::pixels,
                               const QString& actionName = QStringLiteral("Edit")) const {
    return {.actionName = actionName,
            .document = document,
            .layerID = layer->id,
            .snapshotBefore = capture(*target(kind))};
  }
  /// Changes the target in a way that no kernel here could.
  void scribble(SurfaceKind kind = SurfaceKind::pixels) {
    Surface& surface = writable(target(kind));
    surface = randomSurface(surface.format(), surface.width(), surface.height(), random);
  }
  /// Runs undo, redo and undo on a record whose "after" side the target currently shows.
  void expectSteps(UndoableOperation& record, const Surface& before,
                   SurfaceKind kind = SurfaceKind::pixels) const {
    const Surface after = *target(kind);
    ASSERT_FALSE(after.equals(before));
    for (int round = 0; round < 2; ++round) {
      EXPECT_TRUE(marksThumbnails(*layer, [&] { record.undo(); }));
      EXPECT_TRUE(target(kind)->equals(before));
      EXPECT_TRUE(marksThumbnails(*layer, [&] { record.redo(); }));
      EXPECT_TRUE(target(kind)->equals(after));
    }
    record.undo();
    EXPECT_TRUE(target(kind)->equals(before));
  }
  /// One record of each kind, for tests of common behaviour.
  [[nodiscard]] std::vector<std::shared_ptr<UndoableOperation>> oneOfEach() const {
    const auto withResult = [this](auto record) {
      record->setSnapshotAfter(capture(*texture()));
      return record;
    };
    return {withResult(std::make_shared<BrushStrokeOperation>(edit())),
            withResult(std::make_shared<EraserStrokeOperation>(edit())),
            std::make_shared<FillLayerOperation>(edit(), paint, GetParam()),
            std::make_shared<ClearLayerOperation>(edit(), GetParam()),
            withResult(std::make_shared<FillSelectionOperation>(edit(), SurfaceKind::pixels)),
            withResult(std::make_shared<LevelsOperation>(edit())),
            withResult(MoveLayerOperation::create(document, *layer, SurfaceKind::pixels)),
            std::make_shared<InvertLayerOperation>(edit(), GetParam(), nullptr, SurfaceKind::pixels)};
  }

  std::mt19937 random{41};
  DocumentPtr document = makeRandomDocument(GetParam(), random);
  std::shared_ptr<Layer> layer = document->allLayers().front();
};

INSTANTIATE_TEST_SUITE_P(Modes, PixelOperationsTest, testing::ValuesIn(allColorModes), modeName);

TEST_P(PixelOperationsTest, StrokesKeepTheirResult) {
  const Surface before = *texture();
  auto brush = std::make_shared<BrushStrokeOperation>(edit(SurfaceKind::pixels, "Brush"));
  EXPECT_EQ(brush->actionName(), "Brush");
  scribble();
  brush->setSnapshotAfter(capture(*texture()));
  expectSteps(*brush, before);

  EraserStrokeOperation eraser(edit(SurfaceKind::pixels, "Eraser"));
  EXPECT_EQ(eraser.actionName(), "Eraser");
  scribble();
  eraser.setSnapshotAfter(capture(*texture()));
  expectSteps(eraser, before);
}

TEST_P(PixelOperationsTest, AStrokeWithoutAResultCanBeUndoneButNotRedone) {
  const Surface before = *texture();
  BrushStrokeOperation record(edit());
  scribble();
  record.undo();
  record.redo();
  EXPECT_TRUE(texture()->equals(before));
  EXPECT_EQ(record.snapshotAfter(), nullptr) << "only lazy records read their result from the surface";
}

TEST_P(PixelOperationsTest, FillIsPerformedByItsFirstRedo) {
  const Surface before = *texture();
  Surface expected = before;
  context().clearTexture(expected, GetParam(), paint);
  const auto record =
      std::make_shared<FillLayerOperation>(edit(SurfaceKind::pixels, "Fill"), paint, GetParam());
  writableHistory(*document).pushAndRedo(record);
  EXPECT_TRUE(texture()->equals(expected));
  expectSteps(*record, before);
}

TEST_P(PixelOperationsTest, FillingTheMaskLeavesTheLayerUnchanged) {
  const Surface before = *mask();
  const Surface pixels = *texture();
  FillLayerOperation record(edit(SurfaceKind::mask), 0.25F);
  record.redo();
  EXPECT_TRUE(mask()->equals(filledMask(pixelWidth, pixelHeight, 0.25F)));
  expectSteps(record, before, SurfaceKind::mask);
  EXPECT_TRUE(texture()->equals(pixels));
}

TEST_P(PixelOperationsTest, RedoOfClearMakesTheLayerTransparentAgain) {
  const Surface before = *texture();
  ClearLayerOperation record(edit(SurfaceKind::pixels, "Clear"), GetParam());
  EXPECT_EQ(record.actionName(), "Clear");
  record.redo();
  EXPECT_TRUE(texture()->equals(Surface(texture()->format(), pixelWidth, pixelHeight)));
  expectSteps(record, before);
}

TEST_P(PixelOperationsTest, LazyResultsAreReadFromTheSurfaceAtTheFirstUndo) {
  for (const SurfaceKind kind : bothKinds) {
    const Surface before = *target(kind);
    FillSelectionOperation record(edit(kind), kind);
    scribble(kind);
    expectSteps(record, before, kind);
  }
  const Surface before = *texture();
  LevelsOperation record(edit());
  scribble();
  expectSteps(record, before);
}

TEST_P(PixelOperationsTest, TheSecondUndoCapturesNothing) {
  LevelsOperation record(edit());
  scribble();
  const Surface after = *texture();
  EXPECT_EQ(record.snapshotAfter(), nullptr);
  record.undo();
  const std::shared_ptr<TextureSnapshot> captured = record.snapshotAfter();
  ASSERT_NE(captured, nullptr);
  record.redo();
  scribble();
  record.undo();
  EXPECT_EQ(record.snapshotAfter(), captured);
  record.redo();
  EXPECT_TRUE(texture()->equals(after));
}

TEST_P(PixelOperationsTest, ALazyRecordThatWasNeverUndoneHasNothingToRedo) {
  FillSelectionOperation fill(edit(), SurfaceKind::pixels);
  LevelsOperation levels(edit());
  scribble();
  const Surface now = *texture();
  EXPECT_TRUE(marksThumbnails(*layer, [&] { fill.redo(); }));
  EXPECT_TRUE(marksThumbnails(*layer, [&] { levels.redo(); }));
  EXPECT_TRUE(texture()->equals(now));
}

TEST_P(PixelOperationsTest, ALazyResultThatCannotBeCapturedIsLostButUndoStillWorks) {
  const Surface before = *texture();
  LevelsOperation record(edit());
  scribble();
  {
    const tileMemory::ScopedSurfaceFailure failure(0);
    record.undo();
  }
  EXPECT_TRUE(texture()->equals(before));
  record.redo();
  EXPECT_TRUE(texture()->equals(before));
}

TEST_P(PixelOperationsTest, InvertStartsFromTheOriginalPixelsWhateverTheSurfaceHolds) {
  for (const SurfaceKind kind : bothKinds) {
    const Surface before = *target(kind);
    InvertLayerOperation record(edit(kind, "Invert"), GetParam(), nullptr, kind);
    if (kind == SurfaceKind::mask) {
      context().invertMask(writable(mask()));
    } else {
      context().invertColors(writable(texture()), GetParam(), nullptr);
    }
    const Surface after = *target(kind);
    expectSteps(record, before, kind);
    scribble(kind);
    record.redo();
    EXPECT_TRUE(target(kind)->equals(after));
    record.redo();
    EXPECT_TRUE(target(kind)->equals(after)) << "not inverted twice";
  }
}

TEST_P(PixelOperationsTest, InvertKeepsTheSelectionItWasMadeWith) {
  document->selectNode(layer->id);
  selectRandomly(*document, random);
  const Surface before = *texture();
  document->invertActive();
  const Surface after = *texture();
  writableSelection(*document).setRect({3, 3, 5, 5}, 0.0F, context());
  document->undo();
  EXPECT_TRUE(texture()->equals(before));
  document->redo();
  EXPECT_TRUE(texture()->equals(after));
  put(document->selection, nullptr);
  document->undo();
  document->redo();
  EXPECT_TRUE(texture()->equals(after));
}

TEST_P(PixelOperationsTest, MovesOfLayersAndOfMasks) {
  for (const SurfaceKind kind : bothKinds) {
    const Surface before = *target(kind);
    const Surface other = *target(kind == SurfaceKind::mask ? SurfaceKind::pixels : SurfaceKind::mask);
    const std::shared_ptr<MoveLayerOperation> record = MoveLayerOperation::create(document, *layer, kind);
    ASSERT_NE(record, nullptr);
    EXPECT_EQ(record->actionName(), "Move");
    scribble(kind);
    record->setSnapshotAfter(capture(*target(kind)));
    expectSteps(*record, before, kind);
    EXPECT_TRUE(target(kind == SurfaceKind::mask ? SurfaceKind::pixels : SurfaceKind::mask)->equals(other));
  }
}

TEST_P(PixelOperationsTest, AMoveCanBeGivenAnotherName) {
  const MoveLayerOperation record(edit(SurfaceKind::pixels, QStringLiteral("Rotate")), SurfaceKind::pixels);
  EXPECT_EQ(record.actionName(), "Rotate");
}

TEST_P(PixelOperationsTest, AMoveNeedsASurfaceAndItsSnapshot) {
  {
    const tileMemory::ScopedSurfaceFailure failure(0);
    EXPECT_EQ(MoveLayerOperation::create(document, *layer, SurfaceKind::pixels), nullptr);
    EXPECT_EQ(MoveLayerOperation::create(document, *layer, SurfaceKind::mask), nullptr);
  }
  put(layer->mask, nullptr);
  EXPECT_EQ(MoveLayerOperation::create(document, *layer, SurfaceKind::mask), nullptr);
  put(layer->texture, nullptr);
  EXPECT_EQ(MoveLayerOperation::create(document, *layer, SurfaceKind::pixels), nullptr);
}

TEST_P(PixelOperationsTest, AMoveWithoutAResultCanBeUndoneButNotRedone) {
  const Surface before = *texture();
  const std::shared_ptr<MoveLayerOperation> record =
      MoveLayerOperation::create(document, *layer, SurfaceKind::pixels);
  scribble();
  record->undo();
  record->redo();
  EXPECT_TRUE(texture()->equals(before));
}

// Memory.

TEST_P(PixelOperationsTest, AReplayedEditCostsOnlyItsSnapshotBefore) {
  const auto selection = std::make_shared<Surface>(filledMask(pixelWidth, pixelHeight, 0.5F));
  const FillLayerOperation fill(edit(), paint, GetParam());
  const ClearLayerOperation clear(edit(), GetParam());
  const InvertLayerOperation invert(edit(), GetParam(), selection, SurfaceKind::pixels);
  TextureSnapshot::waitForCompression();
  const auto alike = capture(*texture());
  TextureSnapshot::waitForCompression();
  for (const UndoableOperation* record :
       {static_cast<const UndoableOperation*>(&fill), static_cast<const UndoableOperation*>(&clear),
        static_cast<const UndoableOperation*>(&invert)}) {
    EXPECT_EQ(record->memoryCost(), alike->compressedSize());
  }
  // A uniform selection takes no memory; one with data counts for the record that keeps it.
  (void)selection->editTile(0);
  EXPECT_EQ(invert.memoryCost(), alike->compressedSize() + static_cast<std::int64_t>(selection->tileBytes()));
}

TEST_P(PixelOperationsTest, AStoredResultCostsBothSnapshots) {
  const PixelEdit begun = edit();
  BrushStrokeOperation record(begun);
  TextureSnapshot::waitForCompression();
  const std::int64_t alone = begun.snapshotBefore->compressedSize();
  EXPECT_EQ(record.memoryCost(), alone);
  scribble();
  const std::shared_ptr<TextureSnapshot> after = capture(*texture());
  record.setSnapshotAfter(after);
  TextureSnapshot::waitForCompression();
  EXPECT_EQ(record.memoryCost(), alone + after->compressedSize());
  EXPECT_GT(after->compressedSize(), 0);
}

TEST_P(PixelOperationsTest, EditsThatAreNeverUndoneDoNotPayForLazyResults) {
  const PixelEdit begun = edit();
  FillSelectionOperation record(begun, SurfaceKind::pixels);
  scribble();
  TextureSnapshot::waitForCompression();
  EXPECT_EQ(record.memoryCost(), begun.snapshotBefore->compressedSize());
  record.undo();
  TextureSnapshot::waitForCompression();
  EXPECT_EQ(record.memoryCost(),
            begun.snapshotBefore->compressedSize() + record.snapshotAfter()->compressedSize());
}

TEST_P(PixelOperationsTest, TheCostOfAPushedRecordFallsWhenCompressionIsFinished) {
  // Smooth pixels compress well.
  Surface& pixels = writable(texture());
  for (int index = 0; index < pixels.tileCount(); ++index) {
    std::byte* bytes = pixels.editTile(index);
    for (std::size_t i = 0; i < pixels.tileBytes(); ++i) bytes[i] = static_cast<std::byte>(i / 4096);
  }
  const std::int64_t raw = pixels.tileCount() * static_cast<std::int64_t>(pixels.tileBytes());
  const HeldBackground held;
  const auto record = std::make_shared<FillLayerOperation>(edit(), paint, GetParam());
  writableHistory(*document).pushAndRedo(record);
  EXPECT_EQ(record->memoryCost(), raw);
  // Only the newest record keeps raw tiles beside the compressed ones.
  document->rename(layer->id, "Later");
  EXPECT_EQ(record->memoryCost(), raw);
  held.letGo();
  TextureSnapshot::waitForCompression();
  EXPECT_LT(record->memoryCost(), raw);
  EXPECT_GT(record->memoryCost(), 0);
}

// Missing targets are skipped.

TEST_P(PixelOperationsTest, RecordsDoNotSetTheDocumentsFlags) {
  for (const std::shared_ptr<UndoableOperation>& record : oneOfEach()) {
    EXPECT_FALSE(marksEdited(*document, [&] {
      record->redo();
      record->undo();
    }));
  }
}

TEST_P(PixelOperationsTest, ALayerDeepInTheTreeIsFound) {
  document->addFolder("F");
  document->addFolder("G");
  document->moveNode(layer->id, document->activeNode()->id());
  ASSERT_EQ(treeText(*document), "F[G[Background]]");
  const Surface before = *texture();
  for (const std::shared_ptr<UndoableOperation>& record : oneOfEach()) {
    scribble();
    record->undo();
    EXPECT_TRUE(texture()->equals(before));
  }
}

TEST_P(PixelOperationsTest, AnAbsentLayerIsSkippedUntilItComesBack) {
  document->addLayer("Other");
  const std::vector<std::shared_ptr<UndoableOperation>> records = oneOfEach();
  const Surface before = *texture();
  document->removeNode(layer->id);
  scribble();
  const Surface scribbled = *texture();
  for (const std::shared_ptr<UndoableOperation>& record : records) {
    EXPECT_FALSE(marksThumbnails(*layer, [&] {
      record->redo();
      record->undo();
    }));
    EXPECT_TRUE(texture()->equals(scribbled));
  }
  document->undo();
  for (const std::shared_ptr<UndoableOperation>& record : records) {
    scribble();
    record->undo();
    EXPECT_TRUE(texture()->equals(before));
  }
}

TEST_P(PixelOperationsTest, NothingHappensIfTheTargetHasNoPixelsOrIsAFolder) {
  const std::vector<std::shared_ptr<UndoableOperation>> records = oneOfEach();
  document->addFolder("F");
  PixelEdit ofFolder = edit();
  ofFolder.layerID = document->activeNode()->id();
  FillLayerOperation onFolder(ofFolder, paint, GetParam());
  onFolder.redo();
  onFolder.undo();
  put(layer->texture, nullptr);
  for (const std::shared_ptr<UndoableOperation>& record : records) {
    EXPECT_FALSE(marksThumbnails(*layer, [&] {
      record->undo();
      record->redo();
    }));
  }
}

TEST_P(PixelOperationsTest, AFillOfAMissingMaskDoesNothingButTheHistoryMovesOn) {
  document->selectNode(layer->id);
  put(layer->isMaskSelected, true);
  document->fillSelection(DisplayColor::white());
  document->selectAll();
  document->fillSelection(DisplayColor::black());
  const PixelState filled = pixelState(*document);
  const std::shared_ptr<LayerMask> removed = layer->mask.value();
  put(layer->mask, nullptr);
  const Surface pixels = *texture();
  for (std::int64_t index = document->undoStack.currentIndex.value(); index >= 0; --index) {
    document->undo();
    EXPECT_EQ(document->undoStack.currentIndex.value(), index - 1);
  }
  for (int i = 0; i < 3; ++i) document->redo();
  EXPECT_EQ(document->undoStack.currentIndex.value(), 2);
  EXPECT_TRUE(texture()->equals(pixels)) << "an edit of the mask never reaches the layer";
  put(layer->mask, removed);
  EXPECT_EQ(difference(pixelState(*document), filled), "");
}

TEST_P(PixelOperationsTest, ARecordOfAMaskAppliesToTheLayersCurrentMask) {
  const Surface before = *mask();
  document->selectNode(layer->id);
  put(layer->isMaskSelected, true);
  document->fillSelection(DisplayColor::black());
  const std::shared_ptr<LayerMask> old = layer->mask.value();
  document->crop({0, 0, 20, 20}, "Crop");
  document->undo();
  ASSERT_NE(layer->mask.value(), old);
  document->undo();
  EXPECT_TRUE(mask()->equals(before));
}

TEST_P(PixelOperationsTest, StepsOfAClosedDocumentDoNothing) {
  const std::vector<std::shared_ptr<UndoableOperation>> records = oneOfEach();
  scribble();
  const Surface now = *texture();
  document.reset();
  for (const std::shared_ptr<UndoableOperation>& record : records) {
    record->undo();
    record->redo();
    EXPECT_TRUE(texture()->equals(now));
  }
}

}  // namespace
}  // namespace orvanel
