#include <gtest/gtest.h>

#include "model/PixelSupport.h"
#include "raster/TileMemory.h"

namespace orvanel {
namespace {

using namespace test;

constexpr Selection::Flags none{.hasSelection = false, .isFullSelection = false};
constexpr Selection::Flags partial{.hasSelection = true, .isFullSelection = false};
constexpr Selection::Flags all{.hasSelection = true, .isFullSelection = true};

class DocumentSelectionTest : public testing::TestWithParam<ColorMode> {
 protected:
  [[nodiscard]] Selection::Flags flags() const { return document->selection.value()->flags(); }
  [[nodiscard]] bool maskIs(const Surface& expected) const {
    return selectionMask(*document).equals(expected);
  }
  /// Runs a command on an existing selection that leaves one record of this name, then undo, redo and undo.
  /// Mask and flags must follow, pixels must stay, and the command must set no flag of the document.
  void expectSelectionCycle(const QString& actionName, const std::function<void()>& command) const {
    const PixelState pixels = pixelState(*document);
    const SelectionState before = selectionState(*document);
    const std::shared_ptr<const Selection> object = document->selection.value();
    const std::int64_t records = recordCount(*document);
    EXPECT_FALSE(marksEdited(*document, command));
    ASSERT_EQ(recordCount(*document), records + 1);
    EXPECT_EQ(document->undoStack.undoActionName(), actionName);
    const SelectionState after = selectionState(*document);
    document->undo();
    EXPECT_EQ(difference(selectionState(*document), before), "");
    document->redo();
    EXPECT_EQ(difference(selectionState(*document), after), "");
    document->undo();
    EXPECT_EQ(difference(selectionState(*document), before), "");
    EXPECT_EQ(document->selection.value(), object) << "the same object is kept";
    EXPECT_EQ(difference(pixelState(*document), pixels), "");
    document->redo();
  }

  std::mt19937 random{23};
  DocumentPtr document = makeRandomDocument(GetParam(), random);
  std::shared_ptr<Layer> layer = document->allLayers().front();
  const Surface empty = filledMask(pixelWidth, pixelHeight, 0.0F);
  const Surface full = filledMask(pixelWidth, pixelHeight, 1.0F);
};

INSTANTIATE_TEST_SUITE_P(Modes, DocumentSelectionTest, testing::ValuesIn(allColorModes), modeName);

TEST_P(DocumentSelectionTest, IsMadeOnceAtCanvasSizeWhenFirstNeeded) {
  EXPECT_EQ(document->selection.value(), nullptr);
  document->ensureSelection();
  const std::shared_ptr<const Selection> made = document->selection.value();
  ASSERT_NE(made, nullptr);
  EXPECT_TRUE(maskIs(empty));
  EXPECT_EQ(flags(), none);
  document->selectAll();
  document->ensureSelection();
  EXPECT_EQ(document->selection.value(), made);
  EXPECT_EQ(flags(), all);
}

TEST_P(DocumentSelectionTest, OnlyANonEmptySelectionIsActive) {
  EXPECT_EQ(document->activeSelection(), nullptr);
  document->ensureSelection();
  EXPECT_EQ(document->activeSelection(), nullptr);
  document->selectAll();
  EXPECT_EQ(document->activeSelection(), document->selection.value());
}

TEST_P(DocumentSelectionTest, SelectAllCycle) {
  selectRandomly(*document, random);
  expectSelectionCycle("Select All", [&] { document->selectAll(); });
  EXPECT_TRUE(maskIs(full));
  EXPECT_EQ(flags(), all);
}

TEST_P(DocumentSelectionTest, UndoingTheFirstSelectionLeavesAnEmptyOne) {
  document->selectAll();
  EXPECT_EQ(recordCount(*document), 1);
  document->undo();
  ASSERT_NE(document->selection.value(), nullptr);
  EXPECT_TRUE(maskIs(empty));
  EXPECT_EQ(flags(), none);
}

TEST_P(DocumentSelectionTest, SelectingAllTwiceLeavesTwoRecords) {
  document->selectAll();
  document->selectAll();
  EXPECT_EQ(recordCount(*document), 2);
}

TEST_P(DocumentSelectionTest, DeselectCycle) {
  selectRandomly(*document, random);
  expectSelectionCycle("Deselect", [&] { document->deselect(); });
  EXPECT_TRUE(maskIs(empty));
  EXPECT_EQ(flags(), none);
}

TEST_P(DocumentSelectionTest, InvertCycleOfAPartialSelection) {
  selectRandomly(*document, random);
  const Surface before = selectionMask(*document);
  expectSelectionCycle("Invert Selection", [&] { document->invertSelection(); });
  EXPECT_EQ(flags(), partial);
  for (int y = 0; y < pixelHeight; ++y) {
    for (int x = 0; x < pixelWidth; ++x) {
      const float complement = 1.0F - reference::maskAt(before, x, y);
      ASSERT_EQ(selectionMask(*document).pixelAt(x, y), floatToHalf(complement)) << x << ", " << y;
    }
  }
}

TEST_P(DocumentSelectionTest, InvertCycleBetweenNoneAndAll) {
  document->ensureSelection();
  expectSelectionCycle("Invert Selection", [&] { document->invertSelection(); });
  EXPECT_TRUE(maskIs(full));
  EXPECT_EQ(flags(), all);
  expectSelectionCycle("Invert Selection", [&] { document->invertSelection(); });
  EXPECT_TRUE(maskIs(empty));
  EXPECT_EQ(flags(), none);
}

TEST_P(DocumentSelectionTest, WithoutASelectionDeselectAndInvertDoNothing) {
  expectNothing(*document, [&] {
    document->deselect();
    document->invertSelection();
  });
  EXPECT_EQ(document->selection.value(), nullptr);
  document->ensureSelection();
  expectNothing(*document, [&] { document->deselect(); });
}

TEST_P(DocumentSelectionTest, LayerTransparencyCycle) {
  selectRandomly(*document, random);
  expectSelectionCycle("Select Layer Transparency", [&] { document->selectLayerTransparency(*layer); });
  EXPECT_EQ(flags(), partial);
  const reference::Image image = reference::imageOf(pixelsOf(*layer));
  reference::Image expected(pixelWidth, pixelHeight);
  for (std::size_t i = 0; i < image.pixels.size(); ++i) expected.pixels[i].fill(image.pixels[i][3]);
  reference::expectImage(selectionMask(*document), expected);
}

TEST_P(DocumentSelectionTest, TheTransparencyOfAnyLayerCanBeSelected) {
  document->addLayer("Active and transparent");
  document->selectLayerTransparency(*layer);
  EXPECT_FALSE(maskIs(empty));
}

TEST_P(DocumentSelectionTest, ALayerOfAnotherSizeIsIgnored) {
  document->addLayer("removed");
  const std::shared_ptr<Layer> removed = document->activeLayer();
  document->removeNode(removed->id);
  document->resizeCanvas(pixelWidth + 5, pixelHeight, 0, 0);
  const std::int64_t records = recordCount(*document);
  document->selectLayerTransparency(*removed);
  EXPECT_EQ(recordCount(*document), records);
}

TEST_P(DocumentSelectionTest, ATransparentLayerGivesAnEmptySelection) {
  document->addLayer("Transparent");
  document->selectLayerTransparency(*document->activeLayer());
  EXPECT_TRUE(maskIs(empty));
  EXPECT_EQ(flags(), partial);
}

TEST_P(DocumentSelectionTest, AnOpaqueLayerGivesASelectionThatIsNotFlaggedFull) {
  document->fillSelection(DisplayColor::white());
  document->selectLayerTransparency(*layer);
  EXPECT_TRUE(maskIs(full));
  EXPECT_EQ(flags(), partial);
}

TEST_P(DocumentSelectionTest, ChannelCycleForEachChannelOfTheComposite) {
  const Surface& composite = *document->composite();
  const reference::Image image = reference::imageOf(composite);
  selectRandomly(*document, random);
  for (int channel = 0; channel < 4; ++channel) {
    expectSelectionCycle("Select Channel", [&] { document->selectChannel(channel); });
    EXPECT_EQ(flags(), partial);
    reference::Image expected(pixelWidth, pixelHeight);
    for (std::size_t i = 0; i < image.pixels.size(); ++i) {
      expected.pixels[i].fill(image.pixels[i][static_cast<std::size_t>(channel)]);
    }
    reference::expectImage(selectionMask(*document), expected);
  }
}

TEST_P(DocumentSelectionTest, MaskCycle) {
  const std::shared_ptr<LayerMask> mask = addRandomMask(*layer, random);
  document->ensureSelection();
  expectSelectionCycle("Select Mask", [&] { document->selectMask(*mask); });
  EXPECT_EQ(flags(), partial);
  EXPECT_TRUE(maskIs(maskPixelsOf(*layer)));
}

TEST_P(DocumentSelectionTest, SelectingAMaskCopiesIt) {
  const std::shared_ptr<LayerMask> mask = addRandomMask(*layer, random);
  document->selectMask(*mask);
  const Surface selected = selectionMask(*document);
  document->context().fillMask(writable(mask->maskTexture->texture), 0.5F);
  EXPECT_TRUE(maskIs(selected));
}

TEST_P(DocumentSelectionTest, AMaskOfAnotherSizeSetsTheFlagsButNotThePixels) {
  selectRandomly(*document, random);
  const Surface before = selectionMask(*document);
  writableSelection(*document).restoreFlags(none);
  const LayerMask other(QUuid::createUuid(), MaskTexture::create(9, 9, document->context()));
  document->selectMask(other);
  EXPECT_TRUE(maskIs(before));
  EXPECT_EQ(flags(), partial);
}

TEST_P(DocumentSelectionTest, WithoutASourceSurfaceNothingIsSelected) {
  put(layer->texture, nullptr);
  put(document->compositedTexture, nullptr);
  document->selectLayerTransparency(*layer);
  document->selectChannel(0);
  EXPECT_EQ(document->selection.value(), nullptr);
  EXPECT_EQ(recordCount(*document), 0);
}

TEST_P(DocumentSelectionTest, NoSelectionIsMadeWithoutMemory) {
  const std::shared_ptr<LayerMask> mask = addRandomMask(*layer, random);
  const tileMemory::ScopedSurfaceFailure failure(0);
  expectNothing(*document, [&] {
    document->ensureSelection();
    document->selectAll();
    document->selectLayerTransparency(*layer);
    document->selectChannel(0);
    document->selectMask(*mask);
  });
  EXPECT_EQ(document->selection.value(), nullptr);
}

TEST_P(DocumentSelectionTest, WithoutASnapshotTheSelectionChangesButCannotBeUndone) {
  document->ensureSelection();
  const tileMemory::ScopedSurfaceFailure failure(0);
  document->selectAll();
  EXPECT_TRUE(maskIs(full));
  EXPECT_EQ(flags(), all);
  document->deselect();
  EXPECT_TRUE(maskIs(empty));
  document->invertSelection();
  EXPECT_EQ(flags(), all);
  EXPECT_EQ(recordCount(*document), 0);
}

TEST_P(DocumentSelectionTest, AResultThatCannotBeCapturedCanBeUndoneButNotRedone) {
  selectRandomly(*document, random);
  const SelectionState before = selectionState(*document);
  {
    const tileMemory::ScopedSurfaceFailure failure(1);
    document->selectAll();
  }
  EXPECT_EQ(recordCount(*document), 1);
  document->undo();
  EXPECT_EQ(difference(selectionState(*document), before), "");
  document->redo();
  EXPECT_EQ(difference(selectionState(*document), before), "");
}

TEST_P(DocumentSelectionTest, ALongHistoryOfSelectionsIsUndoneAndRedoneExactly) {
  document->selectAll();
  std::vector<SelectionState> states{selectionState(*document)};
  const std::shared_ptr<LayerMask> mask = addRandomMask(*layer, random);
  const std::array<std::function<void()>, 6> commands{
      [&] { document->selectMask(*mask); },
      [&] { document->invertSelection(); },
      [&] { document->deselect(); },
      [&] { document->invertSelection(); },
      [&] { document->selectLayerTransparency(*layer); },
      [&] { document->selectAll(); },
  };
  for (const auto& command : commands) {
    command();
    states.push_back(selectionState(*document));
  }
  TextureSnapshot::waitForCompression();
  for (std::size_t i = states.size() - 1; i > 0; --i) {
    document->undo();
    EXPECT_EQ(difference(selectionState(*document), states[i - 1]), "") << "state " << i - 1;
  }
  for (std::size_t i = 1; i < states.size(); ++i) {
    document->redo();
    EXPECT_EQ(difference(selectionState(*document), states[i]), "") << "state " << i;
  }
}

}  // namespace
}  // namespace orvanel
