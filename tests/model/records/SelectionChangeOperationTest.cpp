#include "model/records/SelectionChangeOperation.h"

#include <gtest/gtest.h>

#include "model/PixelSupport.h"
#include "raster/TileMemory.h"

namespace orvanel {
namespace {

using namespace test;

class SelectionChangeOperationTest : public testing::Test {
 protected:
  void SetUp() override { selectRandomly(*document, random); }
  [[nodiscard]] SelectionState now() const { return selectionState(*document); }
  [[nodiscard]] std::shared_ptr<SelectionChangeOperation> begin() const {
    return SelectionChangeOperation::create(QStringLiteral("Lasso"), document);
  }

  std::mt19937 random{43};
  DocumentPtr document = makeDocument(pixelWidth, pixelHeight);
};

TEST_F(SelectionChangeOperationTest, RestoresMaskAndFlagsOfBothSides) {
  const SelectionState before = now();
  const auto record = begin();
  EXPECT_EQ(record->actionName(), "Lasso");
  writableSelection(*document).selectAll(document->context());
  const SelectionState after = now();
  record->captureAfter();
  for (int round = 0; round < 2; ++round) {
    record->undo();
    EXPECT_EQ(difference(now(), before), "");
    record->redo();
    EXPECT_EQ(difference(now(), after), "");
  }
}

TEST_F(SelectionChangeOperationTest, RewritesTheSelectionInPlaceAndSetsNoFlagOfTheDocument) {
  const std::shared_ptr<const Selection> selection = document->selection.value();
  const ConstTexture surface = selection->maskTexture->texture;
  const auto record = begin();
  record->captureAfter();
  EXPECT_FALSE(marksEdited(*document, [&] {
    record->undo();
    record->redo();
  }));
  EXPECT_EQ(document->selection.value(), selection);
  EXPECT_EQ(selection->maskTexture->texture, surface);
}

TEST_F(SelectionChangeOperationTest, WithoutAStateAfterRedoChangesNothing) {
  const SelectionState before = now();
  const auto record = begin();
  writableSelection(*document).clear(document->context());
  const SelectionState changed = now();
  record->redo();
  EXPECT_EQ(difference(now(), changed), "");
  record->undo();
  EXPECT_EQ(difference(now(), before), "");
}

TEST_F(SelectionChangeOperationTest, ALaterStateAfterReplacesAnEarlierOne) {
  const auto record = begin();
  writableSelection(*document).selectAll(document->context());
  record->captureAfter();
  selectRect(*document, {3, 4, 50, 60});
  const SelectionState last = now();
  record->captureAfter();
  record->undo();
  record->redo();
  EXPECT_EQ(difference(now(), last), "");
}

TEST_F(SelectionChangeOperationTest, NeedsASelectionAndItsSnapshot) {
  {
    const tileMemory::ScopedSurfaceFailure failure(0);
    EXPECT_EQ(begin(), nullptr);
  }
  put(document->selection, nullptr);
  EXPECT_EQ(begin(), nullptr);
}

TEST_F(SelectionChangeOperationTest, NothingHappensWithoutASelection) {
  const auto record = begin();
  const std::shared_ptr<const Selection> selection = document->selection.value();
  writableSelection(*document).selectAll(document->context());
  record->captureAfter();
  const SelectionState all = now();
  put(document->selection, nullptr);
  record->captureAfter();
  record->undo();
  record->redo();
  EXPECT_EQ(document->selection.value(), nullptr);
  put(document->selection, selection);
  EXPECT_EQ(difference(now(), all), "");
  record->undo();
  record->redo();
  EXPECT_EQ(difference(now(), all), "") << "the state after is still the captured one";
}

TEST_F(SelectionChangeOperationTest, AppliesToTheCurrentSelection) {
  const SelectionState before = now();
  const auto record = begin();
  document->crop({0, 0, 40, 50}, "Crop");
  record->undo();
  Surface part(maskPixelFormat, 40, 50);
  copyPixels(*before.mask, part.bounds(), part, 0, 0);
  EXPECT_TRUE(selectionMask(*document).equals(part));
  EXPECT_EQ(document->selection.value()->flags(), before.flags);
}

TEST_F(SelectionChangeOperationTest, StepsOfAClosedDocumentDoNothing) {
  const auto record = begin();
  const std::shared_ptr<const Selection> selection = document->selection.value();
  writableSelection(*document).selectAll(document->context());
  record->captureAfter();
  document.reset();
  record->captureAfter();
  record->undo();
  EXPECT_TRUE(selection->isFullSelection.value());
  std::const_pointer_cast<Selection>(selection)->restoreFlags({});
  record->redo();
  EXPECT_FALSE(selection->isFullSelection.value());
}

TEST_F(SelectionChangeOperationTest, CostIsThatOfItsSnapshots) {
  const auto record = begin();
  const auto before = TextureSnapshot::capture(selectionMask(*document), document->context());
  TextureSnapshot::waitForCompression();
  EXPECT_EQ(record->memoryCost(), before->compressedSize());
  EXPECT_GT(record->memoryCost(), 0);
  selectRandomly(*document, random);
  record->captureAfter();
  record->setReady(false);
  const auto after = TextureSnapshot::capture(selectionMask(*document), document->context());
  TextureSnapshot::waitForCompression();
  EXPECT_EQ(record->memoryCost(), before->compressedSize() + after->compressedSize());
}

}  // namespace
}  // namespace orvanel
