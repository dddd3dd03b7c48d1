// Fill, clear, invert and the pixel clipboard.
#include <gtest/gtest.h>

#include "model/PixelSupport.h"
#include "raster/TileMemory.h"

namespace orvanel {
namespace {

using namespace test;
using reference::Color;
using reference::expectImage;

constexpr DisplayColor glaze{0.75F, 0.25F, 0.5F, 0.5F};

/// The colour as shown in a mode: grey as r = g = b.
Color shown(const DisplayColor& color, ColorMode mode) {
  const std::array<double, 4> rgba{static_cast<double>(color.red), static_cast<double>(color.green),
                                   static_cast<double>(color.blue), static_cast<double>(color.alpha)};
  if (!isGrayscale(mode)) return rgba;
  const double grey = 0.299 * rgba[0] + 0.587 * rgba[1] + 0.114 * rgba[2];
  return {grey, grey, grey, rgba[3]};
}

class DocumentPixelsTest : public testing::TestWithParam<ColorMode> {
 protected:
  [[nodiscard]] ColorMode mode() const { return GetParam(); }
  [[nodiscard]] Surface pixels() const { return pixelsOf(*layer); }
  /// Adds a selected mask with random contents.
  void editMask() {
    addRandomMask(*layer, random);
    put(layer->isMaskSelected, true);
  }
  [[nodiscard]] PixelClipboard copied() const { return document->copyPixels().value(); }

  std::mt19937 random{17};
  DocumentPtr document = makeRandomDocument(GetParam(), random);
  std::shared_ptr<Layer> layer = document->allLayers().front();
};

INSTANTIATE_TEST_SUITE_P(Modes, DocumentPixelsTest, testing::ValuesIn(allColorModes), modeName);

// Fill.

TEST_P(DocumentPixelsTest, FillsTheWholeLayerWithoutASelection) {
  const Surface before = pixels();
  expectPixelCycle(*document, "Fill", [&] { document->fillSelection(glaze); });
  document->redo();
  expectImage(pixels(), plainImage(shown(glaze, mode())));
}

TEST_P(DocumentPixelsTest, FillsTheSelectionWithPremultipliedBlending) {
  selectRandomly(*document, random);
  const Surface before = pixels();
  expectPixelCycle(*document, "Fill", [&] { document->fillSelection(glaze); });
  document->redo();
  const Color fill = shown(glaze, mode());
  expectImage(pixels(), mapped(before, selectionMask(*document), 0.0, [&](const Color& old, double s) {
                Color mixed{};
                mixed[3] = old[3] + (fill[3] - old[3]) * s;
                if (mixed[3] <= 0.0) return Color{};
                for (std::size_t c = 0; c < 3; ++c) {
                  mixed[c] = (old[c] * old[3] * (1.0 - s) + fill[c] * fill[3] * s) / mixed[3];
                }
                return mixed;
              }));
}

TEST_P(DocumentPixelsTest, FillingUnderAFullSelectionEqualsFillingEverything) {
  document->fillSelection(glaze);
  const Surface everything = pixels();
  document->undo();
  document->selectAll();
  document->fillSelection(glaze);
  EXPECT_TRUE(pixels().equals(everything));
}

TEST_P(DocumentPixelsTest, AnEmptySelectionLimitsNothing) {
  document->selectAll();
  document->deselect();
  ASSERT_NE(document->selection.value(), nullptr);
  document->fillSelection(DisplayColor::white());
  expectImage(pixels(), plainImage({1.0, 1.0, 1.0, 1.0}));
}

TEST_P(DocumentPixelsTest, FillsTheMaskWithTheFirstColourComponent) {
  editMask();
  const Surface layerBefore = pixels();
  expectPixelCycle(*document, "Fill", [&] { document->fillSelection(glaze); });
  document->redo();
  EXPECT_TRUE(pixels().equals(layerBefore));
  const double value = shown(glaze, mode())[0];
  expectImage(maskPixelsOf(*layer), plainImage({value, value, value, value}));
}

TEST_P(DocumentPixelsTest, FillsTheMaskWithinTheSelection) {
  editMask();
  selectRandomly(*document, random);
  const Surface before = maskPixelsOf(*layer);
  expectPixelCycle(*document, "Fill", [&] { document->fillSelection(glaze); });
  document->redo();
  const double value = shown(glaze, mode())[0];
  expectImage(maskPixelsOf(*layer),
              mapped(before, selectionMask(*document), 0.0, [&](const Color& old, double s) {
                const double mixed = old[0] + (value - old[0]) * s;
                return Color{mixed, mixed, mixed, mixed};
              }));
}

TEST_P(DocumentPixelsTest, AFillCarriesTheGivenName) {
  document->fillSelection(glaze, QStringLiteral("Pour"));
  EXPECT_EQ(document->undoStack.undoActionName(), "Pour");
  document->selectAll();
  document->fillSelection(glaze, QStringLiteral("Pour"));
  EXPECT_EQ(document->undoStack.undoActionName(), "Pour");
}

TEST_P(DocumentPixelsTest, TheLayerIsTheTargetIfTheSelectedMaskIsMissing) {
  put(layer->isMaskSelected, true);
  document->fillSelection(DisplayColor::black());
  expectImage(pixels(), plainImage({0.0, 0.0, 0.0, 1.0}));
}

TEST_P(DocumentPixelsTest, AnUnselectedMaskIsUnchanged) {
  addRandomMask(*layer, random);
  const Surface mask = maskPixelsOf(*layer);
  document->fillSelection(glaze);
  document->clearActive();
  document->invertActive();
  EXPECT_TRUE(maskPixelsOf(*layer).equals(mask));
}

// Clear.

TEST_P(DocumentPixelsTest, ClearMakesTheLayerTransparent) {
  expectPixelCycle(*document, "Clear", [&] { document->clearActive(); });
  document->redo();
  EXPECT_TRUE(pixels().equals(Surface(layerPixelFormat(mode()), pixelWidth, pixelHeight)));
}

TEST_P(DocumentPixelsTest, ClearWithinASelectionFadesByItsWeight) {
  selectRandomly(*document, random);
  const Surface before = pixels();
  expectPixelCycle(*document, "Clear", [&] { document->clearActive(); });
  document->redo();
  expectImage(pixels(), mapped(before, selectionMask(*document), 0.0, [](const Color& old, double s) {
                return Color{old[0], old[1], old[2], old[3] * (1.0 - s)};
              }));
}

TEST_P(DocumentPixelsTest, ClearTurnsASelectedMaskWhite) {
  editMask();
  expectPixelCycle(*document, "Clear", [&] { document->clearActive(); });
  document->redo();
  EXPECT_TRUE(maskPixelsOf(*layer).equals(filledMask(pixelWidth, pixelHeight, 1.0F)));
}

TEST_P(DocumentPixelsTest, ClearRevealsTheMaskWithinTheSelection) {
  editMask();
  selectRect(*document, {10, 20, 120, 30});
  const Surface before = maskPixelsOf(*layer);
  expectPixelCycle(*document, "Clear", [&] { document->clearActive(); });
  document->redo();
  const Surface after = maskPixelsOf(*layer);
  for (const auto& [x, y] : {std::pair{10, 20}, std::pair{129, 49}})
    EXPECT_EQ(reference::maskAt(after, x, y), 1.0F);
  for (const auto& [x, y] : {std::pair{9, 20}, std::pair{130, 49}, std::pair{60, 50}}) {
    EXPECT_EQ(after.pixelAt(x, y), before.pixelAt(x, y));
  }
}

// Invert.

TEST_P(DocumentPixelsTest, InvertsColoursButNotAlpha) {
  const Surface before = pixels();
  expectPixelCycle(*document, "Invert", [&] { document->invertActive(); });
  document->redo();
  reference::Image expected = reference::imageOf(before);
  for (Color& pixel : expected.pixels) pixel = {1.0 - pixel[0], 1.0 - pixel[1], 1.0 - pixel[2], pixel[3]};
  expectImage(pixels(), expected);
}

TEST_P(DocumentPixelsTest, InvertsWithinASelectionByItsWeight) {
  selectRandomly(*document, random);
  const Surface before = pixels();
  expectPixelCycle(*document, "Invert", [&] { document->invertActive(); });
  document->redo();
  const Surface& weight = selectionMask(*document);
  reference::Image expected = reference::imageOf(before);
  for (int y = 0; y < expected.height; ++y) {
    for (int x = 0; x < expected.width; ++x) {
      const auto s = static_cast<double>(reference::maskAt(weight, x, y));
      for (std::size_t c = 0; c < 3; ++c) expected.at(x, y)[c] += (1.0 - 2.0 * expected.at(x, y)[c]) * s;
    }
  }
  expectImage(pixels(), expected);
}

TEST_P(DocumentPixelsTest, InvertsTheWholeMaskRegardlessOfTheSelection) {
  editMask();
  selectRect(*document, {10, 20, 30, 40});
  const Surface before = maskPixelsOf(*layer);
  const Surface layerBefore = pixels();
  expectPixelCycle(*document, "Invert", [&] { document->invertActive(); });
  document->redo();
  EXPECT_TRUE(pixels().equals(layerBefore));
  expectImage(maskPixelsOf(*layer), mapped(before, before, -1.0, [](const Color& old, double) {
                return Color{1.0 - old[0], 1.0 - old[0], 1.0 - old[0], 1.0 - old[0]};
              }));
}

// Preconditions and flags.

TEST_P(DocumentPixelsTest, EveryCommandMarksTheDocumentAndTheThumbnails) {
  const std::array<std::function<void()>, 3> commands{[&] { document->fillSelection(glaze); },
                                                      [&] { document->clearActive(); },
                                                      [&] { document->invertActive(); }};
  for (int round = 0; round < 2; ++round) {
    for (const auto& command : commands) {
      EXPECT_TRUE(marksThumbnails(*layer, [&] { EXPECT_TRUE(marksEdited(*document, command)); }));
      EXPECT_TRUE(marksThumbnails(*layer, [&] { document->undo(); }));
      EXPECT_TRUE(marksThumbnails(*layer, [&] { document->redo(); }));
    }
    selectRandomly(*document, random);
  }
}

TEST_P(DocumentPixelsTest, NoCommandChangesTheSelection) {
  selectRandomly(*document, random);
  const SelectionState before = selectionState(*document);
  document->fillSelection(glaze);
  document->invertActive();
  const auto clipboard = document->cutPixels();
  ASSERT_TRUE(clipboard);
  document->clearActive();
  document->pastePixels(*clipboard);
  EXPECT_EQ(difference(selectionState(*document), before), "");
  while (document->undoStack.currentIndex.value() >= 0) document->undo();
  EXPECT_EQ(difference(selectionState(*document), before), "");
}

TEST_P(DocumentPixelsTest, ALockDoesNotPreventThem) {
  put(layer->isLocked, true);
  const Surface before = pixels();
  document->invertActive();
  EXPECT_FALSE(pixels().equals(before));
  EXPECT_EQ(recordCount(*document), 1);
  document->fillSelection(glaze);
  document->clearActive();
  EXPECT_EQ(recordCount(*document), 3);
}

TEST_P(DocumentPixelsTest, NothingHappensWithoutAnActiveLayerWithPixels) {
  document->selectAll();
  const auto expectQuiet = [&] {
    expectNothing(*document, [&] {
      document->fillSelection(glaze);
      document->clearActive();
      document->invertActive();
      EXPECT_FALSE(document->copyPixels());
      EXPECT_FALSE(document->cutPixels());
    });
  };
  document->addFolder("F");
  expectQuiet();
  document->selectNode(std::nullopt);
  expectQuiet();
  document->selectNode(layer->id);
  put(layer->texture, nullptr);
  expectQuiet();
}

TEST_P(DocumentPixelsTest, WithoutASnapshotNothingIsEditedOrRecorded) {
  for (const bool hasSelection : {false, true}) {
    if (hasSelection) selectRandomly(*document, random);
    const tileMemory::ScopedSurfaceFailure failure(0);
    expectNothing(*document, [&] {
      document->fillSelection(glaze);
      document->clearActive();
      document->invertActive();
    });
  }
}

// Copy and cut.

TEST_P(DocumentPixelsTest, CopyTakesTheSelectionsBoundsMaskedByItsWeight) {
  Surface weight = reference::randomMask(pixelWidth, pixelHeight, random);
  const Surface outside = reference::maskOf(pixelWidth, pixelHeight, [](int x, int y) {
    return x >= 5 && x < 140 && y >= 7 && y < 130 ? 1.0F : 0.0F;
  });
  document->context().intersectMasks(weight, outside);
  select(*document, weight);
  const std::optional<PixelRect> bounds = document->context().selectionBounds(weight);
  ASSERT_TRUE(bounds);

  const PixelClipboard clipboard = copied();
  EXPECT_EQ(clipboard.originX, bounds->x);
  EXPECT_EQ(clipboard.originY, bounds->y);
  EXPECT_EQ(clipboard.width, bounds->width);
  EXPECT_EQ(clipboard.height, bounds->height);
  EXPECT_EQ(clipboard.pixelFormat, layerPixelFormat(mode()));
  EXPECT_EQ(clipboard.snapshot->region(), (PixelRect{0, 0, bounds->width, bounds->height}));

  Surface held(clipboard.pixelFormat, bounds->width, bounds->height);
  clipboard.snapshot->restore(held, document->context());
  const reference::Image extracted = mapped(pixels(), weight, 1.0, [](const Color& old, double s) {
    return Color{old[0], old[1], old[2], old[3] * s};
  });
  reference::Image expected(bounds->width, bounds->height);
  for (int y = 0; y < bounds->height; ++y) {
    for (int x = 0; x < bounds->width; ++x) expected.at(x, y) = extracted.at(x + bounds->x, y + bounds->y);
  }
  expectImage(held, expected);
}

TEST_P(DocumentPixelsTest, CopyChangesNothing) {
  selectRandomly(*document, random);
  expectNothing(*document, [&] { EXPECT_TRUE(document->copyPixels()); });
}

TEST_P(DocumentPixelsTest, WithoutASelectionThereIsNothingToCopyOrCut) {
  const auto expectQuiet = [&] {
    expectNothing(*document, [&] {
      EXPECT_FALSE(document->copyPixels());
      EXPECT_FALSE(document->cutPixels());
    });
  };
  expectQuiet();
  document->ensureSelection();
  expectQuiet();
  // A selection flagged as present that selects no pixel.
  select(*document, filledMask(pixelWidth, pixelHeight, 0.0F));
  expectQuiet();
}

TEST_P(DocumentPixelsTest, CopyTakesThePixelsEvenIfTheMaskIsSelected) {
  document->selectAll();
  editMask();
  Surface held(layerPixelFormat(mode()), pixelWidth, pixelHeight);
  copied().snapshot->restore(held, document->context());
  expectImage(held, reference::imageOf(pixels()));
}

TEST_P(DocumentPixelsTest, CutIsCopyFollowedByAFillUnderItsName) {
  selectRandomly(*document, random);
  const Surface before = pixels();
  const PixelClipboard plain = copied();
  std::optional<PixelClipboard> cut;
  expectPixelCycle(*document, "Fill", [&] { cut = document->cutPixels(); });
  ASSERT_TRUE(cut);
  EXPECT_EQ(cut->snapshot->decompressedData(), plain.snapshot->decompressedData());
  EXPECT_EQ(cut->snapshot->region(), plain.snapshot->region());
  EXPECT_TRUE(pixels().equals(before)) << "after undo";
  document->redo();
  const Surface after = pixels();
  document->undo();
  document->clearActive();
  EXPECT_TRUE(pixels().equals(after)) << "the same effect as clearing";
}

TEST_P(DocumentPixelsTest, CutHidesTheSelectionInASelectedMask) {
  editMask();
  selectRect(*document, {10, 20, 30, 40});
  const Surface layerBefore = pixels();
  ASSERT_TRUE(document->cutPixels());
  EXPECT_TRUE(pixels().equals(layerBefore));
  EXPECT_EQ(reference::maskAt(maskPixelsOf(*layer), 10, 20), 0.0F);
  EXPECT_EQ(reference::maskAt(maskPixelsOf(*layer), 39, 59), 0.0F);
}

TEST_P(DocumentPixelsTest, CutDoesNothingWithoutAClipboardSnapshot) {
  selectRandomly(*document, random);
  // The copy's surface can be made, its snapshot can't.
  const tileMemory::ScopedSurfaceFailure failure(1);
  expectNothing(*document, [&] { EXPECT_FALSE(document->cutPixels()); });
}

TEST_P(DocumentPixelsTest, CutStillCopiesWithoutASnapshotForTheEdit) {
  selectRandomly(*document, random);
  const tileMemory::ScopedSurfaceFailure failure(2);
  expectNothing(*document, [&] { EXPECT_TRUE(document->cutPixels()); });
}

TEST(DocumentPixelsDeathTest, ACopyWhoseSurfaceCannotBeMadeIsFatal) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const auto copyWithout = [] {
    const DocumentPtr document = makeDocument();
    document->selectAll();
    const tileMemory::ScopedSurfaceFailure failure(0);
    (void)document->copyPixels();
  };
  EXPECT_DEATH(copyWithout(), "Failed to create layer texture");
}

// Paste.

TEST_P(DocumentPixelsTest, PasteAddsALayerAtTheOriginalPosition) {
  selectRect(*document, {17, 23, 120, 99});
  const PixelClipboard clipboard = copied();
  const Surface source = pixels();
  const QUuid oldActive = layer->id;
  expectPixelCycle(*document, "Add Layer", [&] { document->pastePixels(clipboard); });
  EXPECT_EQ(document->selectedNodeID.value(), oldActive);
  document->redo();
  ASSERT_EQ(treeText(*document), "Background, Pasted Layer");
  const std::shared_ptr<Layer> pasted = document->activeLayer();
  EXPECT_EQ(pasted->name.value(), "Pasted Layer");
  EXPECT_EQ(pasted->opacity.value(), 1.0F);
  EXPECT_EQ(pasted->blendMode.value(), BlendMode::normal);
  EXPECT_TRUE(pasted->isVisible.value());
  EXPECT_FALSE(pasted->isLocked.value());
  EXPECT_EQ(pasted->mask.value(), nullptr);
  const Surface inside = reference::maskOf(pixelWidth, pixelHeight, [](int x, int y) {
    return x >= 17 && x < 137 && y >= 23 && y < 122 ? 1.0F : 0.0F;
  });
  expectImage(pixelsOf(*pasted), mapped(source, inside, 1.0, [](const Color& old, double s) {
                return Color{old[0], old[1], old[2], old[3] * s};
              }));
}

TEST_P(DocumentPixelsTest, PasteInsertsLikeANewLayer) {
  document->selectAll();
  const PixelClipboard clipboard = copied();
  document->addLayer("Top");
  document->selectNode(layer->id);
  EXPECT_TRUE(marksEdited(*document, [&] { document->pastePixels(clipboard); }));
  EXPECT_EQ(treeText(*document), "Background, Pasted Layer, Top") << "above the active layer";
  document->addFolder("F");
  document->pastePixels(clipboard);
  document->pastePixels(clipboard);
  EXPECT_EQ(treeText(*document), "Background, Pasted Layer, F[Pasted Layer 2, Pasted Layer 3], Top");
  document->selectNode(std::nullopt);
  document->pastePixels(clipboard);
  EXPECT_EQ(activeName(*document), "Pasted Layer 4");
  EXPECT_EQ(document->rootNodes.value().back().id(), document->selectedNodeID.value());
}

TEST_P(DocumentPixelsTest, TheClipboardOutlivesItsDocumentAndWorksInAnother) {
  selectRect(*document, {17, 23, 40, 50});
  const PixelClipboard clipboard = copied();
  document->pastePixels(clipboard);
  const Surface here = pixelsOf(*document->activeLayer());
  const DocumentPtr other = makeDocument(pixelWidth, pixelHeight, mode());
  layer.reset();
  document.reset();
  other->pastePixels(clipboard);
  EXPECT_TRUE(pixelsOf(*other->activeLayer()).equals(here));
}

TEST_P(DocumentPixelsTest, PasteIsClippedToASmallerCanvas) {
  selectRect(*document, {10, 10, 60, 60});
  const PixelClipboard clipboard = copied();
  document->pastePixels(clipboard);
  const Surface here = pixelsOf(*document->activeLayer());
  const DocumentPtr small = makeDocument(32, 24, mode());
  small->pastePixels(clipboard);
  Surface expected(layerPixelFormat(mode()), 32, 24);
  copyPixels(here, {0, 0, 32, 24}, expected, 0, 0);
  EXPECT_TRUE(pixelsOf(*small->activeLayer()).equals(expected));
}

TEST_P(DocumentPixelsTest, PasteOutsideASmallerCanvasGivesAnEmptyLayer) {
  selectRect(*document, {100, 100, 20, 20});
  const DocumentPtr small = makeDocument(50, 100, mode());
  small->pastePixels(copied());
  EXPECT_EQ(treeText(*small), "Background, Pasted Layer");
  EXPECT_TRUE(pixelsOf(*small->activeLayer()).equals(Surface(layerPixelFormat(mode()), 50, 100)));
  EXPECT_EQ(small->undoStack.undoActionName(), "Add Layer");
}

TEST_P(DocumentPixelsTest, PasteConvertsLikeAChangeOfMode) {
  document->selectAll();
  const PixelClipboard clipboard = copied();
  document->pastePixels(clipboard);
  const QUuid pasted = document->activeLayer()->id;
  for (const ColorMode to : allColorModes) {
    const DocumentPtr other = makeDocument(pixelWidth, pixelHeight, to);
    other->pastePixels(clipboard);
    document->changeColorMode(to);
    EXPECT_TRUE(pixelsOf(*other->activeLayer()).equals(pixelsOf(*document->findNode(pasted)->layer())));
    if (to != mode()) document->undo();
  }
}

TEST_P(DocumentPixelsTest, PasteWithoutATemporarySurfaceLeavesNoLayer) {
  document->selectAll();
  const PixelClipboard clipboard = copied();
  // The new layer's surface can be made, the one for the clipboard's pixels can't.
  const tileMemory::ScopedSurfaceFailure failure(1);
  expectNothing(*document, [&] { document->pastePixels(clipboard); });
  EXPECT_EQ(treeText(*document), "Background");
}

}  // namespace
}  // namespace orvanel
