// Commands that replace every surface: image size, canvas size, crop, trim and colour mode.
#include <gtest/gtest.h>

#include "model/DocumentCompositor.h"
#include "model/PixelSupport.h"
#include "raster/TileMemory.h"

namespace orvanel {
namespace {

using namespace test;
using reference::Color;

/// The expected result of a blit to a surface filled with `ground`: old pixel (x, y) at (x + dx, y + dy).
Surface blitted(const Surface& old, int width, int height, int dx, int dy, std::uint64_t ground = 0) {
  Surface result(old.format(), width, height);
  result.fill(ground);
  const auto step = static_cast<std::size_t>(old.pixelBytes());
  for (int y = 0; y < old.height(); ++y) {
    for (int x = 0; x < old.width(); ++x) {
      const PixelRect place{x + dx, y + dy, 1, 1};
      if (place.intersected(result.bounds()).isEmpty()) continue;
      const std::uint64_t pixel = old.pixelAt(x, y);
      result.writeRect(place, reinterpret_cast<const std::byte*>(&pixel), step);
    }
  }
  return result;
}

const std::uint64_t showing = floatToHalf(1.0F);

class DocumentCanvasTest : public testing::TestWithParam<ColorMode> {
 protected:
  /// A masked layer, a layer inside a folder, and a disabled mask.
  void SetUp() override {
    addRandomMask(*masked, random);
    document->addFolder("F");
    document->addLayer("inner");
    inner = document->activeLayer();
    writable(inner->texture.value()) = randomPixels(GetParam(), random);
    addRandomMask(*inner, random);
    put(inner->mask.value()->isEnabled, false);
    selectRandomly(*document, random);
  }
  /// Expects every layer and mask to be shifted onto a canvas of the new size; new pixels are transparent and
  /// shown by masks.
  void expectShifted(const PixelState& before, int width, int height, int dx, int dy) const {
    const PixelState after = pixelState(*document);
    ASSERT_EQ(after.layers.size(), before.layers.size());
    for (std::size_t i = 0; i < before.layers.size(); ++i) {
      EXPECT_TRUE(after.layers[i].pixels->equals(blitted(*before.layers[i].pixels, width, height, dx, dy)));
      EXPECT_TRUE(
          after.layers[i].mask->equals(blitted(*before.layers[i].mask, width, height, dx, dy, showing)));
      EXPECT_EQ(after.layers[i].isMaskEnabled, before.layers[i].isMaskEnabled);
    }
    expectFreshCanvas(width, height);
  }
  /// Expects the new size, matching display surfaces and an empty selection, as after every change of size.
  void expectFreshCanvas(int width, int height) const {
    EXPECT_EQ(document->canvasWidth.value(), width);
    EXPECT_EQ(document->canvasHeight.value(), height);
    const PixelRect canvas{0, 0, width, height};
    EXPECT_EQ(document->compositedTexture.value()->bounds(), canvas);
    EXPECT_EQ(document->checkerboardTexture.value()->bounds(), canvas);
    const SelectionState selection = selectionState(*document);
    ASSERT_TRUE(selection.mask);
    EXPECT_TRUE(selection.mask->equals(filledMask(width, height, 0.0F)));
    EXPECT_EQ(selection.flags, Selection::Flags{});
  }

  std::mt19937 random{31};
  DocumentPtr document = makeRandomDocument(GetParam(), random);
  std::shared_ptr<Layer> masked = document->allLayers().front();
  std::shared_ptr<Layer> inner;
};

INSTANTIATE_TEST_SUITE_P(Modes, DocumentCanvasTest, testing::ValuesIn(allColorModes), modeName);

// Canvas size.

TEST_P(DocumentCanvasTest, AnchorsDetermineWhereTheOldCanvasStays) {
  struct Case {
    int anchor;
    int growth;
    int offset;
  };
  // Halves truncate toward zero.
  for (const Case& one : {Case{-1, 7, 0}, Case{0, 7, 3}, Case{1, 7, 7}, Case{-1, -3, 0}, Case{0, -3, -1},
                          Case{1, -3, -3}, Case{0, -4, -2}, Case{5, 7, 3}}) {
    const PixelState before = pixelState(*document);
    document->resizeCanvas(pixelWidth + one.growth, pixelHeight, one.anchor, -1);
    expectShifted(before, pixelWidth + one.growth, pixelHeight, one.offset, 0);
    document->undo();
    document->resizeCanvas(pixelWidth, pixelHeight + one.growth, 1, one.anchor);
    expectShifted(before, pixelWidth, pixelHeight + one.growth, 0, one.offset);
    document->undo();
    EXPECT_EQ(difference(pixelState(*document), before), "");
  }
}

TEST_P(DocumentCanvasTest, CanvasSizeCycle) {
  expectPixelCycle(*document, "Canvas Size", [&] { document->resizeCanvas(300, 100, 0, 0); });
}

TEST_P(DocumentCanvasTest, TheNewAreaOfAMaskedLayerIsTransparentAndUnmasked) {
  document->resizeCanvas(pixelWidth + 200, pixelHeight, -1, -1);
  EXPECT_EQ(masked->texture.value()->pixelAt(pixelWidth + 199, 0), 0U);
  EXPECT_EQ(maskPixelsOf(*masked).pixelAt(pixelWidth + 199, 0), showing);
  EXPECT_EQ(maskPixelsOf(*masked).pixelAt(pixelWidth, pixelHeight - 1), showing);
}

TEST_P(DocumentCanvasTest, TheSameSizeKeepsThePixelsDropsTheSelectionAndLeavesARecord) {
  const PixelState before = pixelState(*document);
  const std::int64_t records = recordCount(*document);
  document->resizeCanvas(pixelWidth, pixelHeight, 0, 0);
  EXPECT_EQ(difference(pixelState(*document), before), "");
  expectFreshCanvas(pixelWidth, pixelHeight);
  EXPECT_EQ(recordCount(*document), records + 1);
}

// Image size.

TEST_P(DocumentCanvasTest, ImageSizeIsRecordedAsCanvasSize) {
  for (const ResampleMethod method :
       {ResampleMethod::bicubic, ResampleMethod::bilinear, ResampleMethod::nearestNeighbor}) {
    expectPixelCycle(*document, "Canvas Size", [&] { document->resizeImage(301, 70, method); });
  }
}

TEST_P(DocumentCanvasTest, NearestNeighbourTakesThePixelUnderEachCentre) {
  const PixelState before = pixelState(*document);
  document->resizeImage(301, 70, ResampleMethod::nearestNeighbor);
  const PixelState after = pixelState(*document);
  const auto expectNearest = [](const Surface& from, const Surface& to) {
    for (int y = 0; y < to.height(); ++y) {
      const int sourceY = static_cast<int>(std::floor((y + 0.5) * from.height() / to.height()));
      for (int x = 0; x < to.width(); ++x) {
        const int sourceX = static_cast<int>(std::floor((x + 0.5) * from.width() / to.width()));
        ASSERT_EQ(to.pixelAt(x, y), from.pixelAt(sourceX, sourceY)) << x << ", " << y;
      }
    }
  };
  for (std::size_t i = 0; i < before.layers.size(); ++i) {
    expectNearest(*before.layers[i].pixels, *after.layers[i].pixels);
    expectNearest(*before.layers[i].mask, *after.layers[i].mask);
  }
  expectFreshCanvas(301, 70);
}

TEST_P(DocumentCanvasTest, EveryMethodPreservesAUniformColourAndMask) {
  writableSelection(*document).clear(document->context());
  document->selectNode(masked->id);
  document->fillSelection({0.25F, 0.25F, 0.25F, 1.0F});
  document->context().fillMask(writable(masked->mask.value()->maskTexture->texture), 0.25F);
  const std::uint64_t colour = pixelsOf(*masked).pixelAt(0, 0);
  for (const ResampleMethod method :
       {ResampleMethod::bicubic, ResampleMethod::bilinear, ResampleMethod::nearestNeighbor}) {
    for (const auto& [width, height] : {std::pair{211, 300}, std::pair{13, 9}, std::pair{1, 1}}) {
      document->resizeImage(width, height, method);
      Surface plain(layerPixelFormat(GetParam()), width, height);
      plain.fill(colour);
      EXPECT_TRUE(pixelsOf(*masked).equals(plain));
      EXPECT_TRUE(maskPixelsOf(*masked).equals(filledMask(width, height, 0.25F)));
      document->undo();
    }
  }
}

TEST_P(DocumentCanvasTest, BilinearHalvingAveragesWithATriangleFilter) {
  // Halving widens the triangle to four pixels, with weights 1/8, 3/8, 3/8 and 1/8.
  const DocumentPtr row = makeDocument(8, 1, GetParam());
  const std::shared_ptr<Layer> layer = row->allLayers().front();
  row->context().clearTexture(writable(layer->texture.value()), GetParam(), {0.0F, 0.0F, 0.0F, 1.0F});
  selectRect(*row, {4, 0, 4, 1});
  row->fillSelection(DisplayColor::white());
  row->resizeImage(4, 1, ResampleMethod::bilinear);
  reference::Image expected(4, 1);
  expected.at(0, 0) = {0.0, 0.0, 0.0, 1.0};
  expected.at(1, 0) = {0.125, 0.125, 0.125, 1.0};
  expected.at(2, 0) = {0.875, 0.875, 0.875, 1.0};
  expected.at(3, 0) = {1.0, 1.0, 1.0, 1.0};
  reference::expectImage(pixelsOf(*layer), expected);
}

// Crop and trim.

TEST_P(DocumentCanvasTest, CropTakesTheRectangle) {
  const PixelState before = pixelState(*document);
  expectPixelCycle(*document, "Cut out", [&] { document->crop({11, 13, 131, 40}, "Cut out"); });
  EXPECT_EQ(difference(pixelState(*document), before), "") << "including the pixels outside the rectangle";
  document->redo();
  expectShifted(before, 131, 40, -11, -13);
}

TEST_P(DocumentCanvasTest, CropsToTheBoundsOfTheSelection) {
  selectRect(*document, {20, 30, 64, 5});
  const PixelState before = pixelState(*document);
  expectPixelCycle(*document, "Crop", [&] { document->cropToSelection(); });
  document->redo();
  expectShifted(before, 64, 5, -20, -30);
}

TEST_P(DocumentCanvasTest, EverySelectedPixelCountsTowardsTheBounds) {
  select(*document, reference::maskOf(pixelWidth, pixelHeight, [](int x, int y) {
    return (x == 7 && y == 100) || (x == 140 && y == 3) ? 1.0F / 1024.0F : 0.0F;
  }));
  document->cropToSelection();
  expectFreshCanvas(134, 98);
}

TEST_P(DocumentCanvasTest, CropDoesNothingWithoutSelectedPixels) {
  select(*document, filledMask(pixelWidth, pixelHeight, 0.0F));
  expectNothing(*document, [&] { document->cropToSelection(); });
  writableSelection(*document).clear(document->context());
  expectNothing(*document, [&] { document->cropToSelection(); });
  put(document->selection, nullptr);
  expectNothing(*document, [&] { document->cropToSelection(); });
}

/// Fills the topmost layer with white around a black rectangle.
void drawFramed(Document& document, const PixelRect& rect) {
  Surface& pixels = writable(document.allLayers().back()->texture.value());
  const ColorMode mode = document.colorMode.value();
  document.context().clearTexture(pixels, mode, {1.0F, 1.0F, 1.0F, 1.0F});
  Surface inside(maskPixelFormat, pixels.width(), pixels.height());
  document.context().fillRectMask(inside, rect, 0.0F);
  document.context().fillWithSelection(pixels, inside, mode, {0.0F, 0.0F, 0.0F, 1.0F});
  put(document.needsCompositing, true);
  static_cast<void>(document.composite());
}

TEST_P(DocumentCanvasTest, TrimRemovesUniformEdgesOfTheComposite) {
  drawFramed(*document, {12, 8, 100, 90});
  const PixelState before = pixelState(*document);
  expectPixelCycle(*document, "Trim", [&] { EXPECT_TRUE(document->trim()); });
  document->redo();
  expectShifted(before, 100, 90, -12, -8);
}

TEST_P(DocumentCanvasTest, TrimDoesNothingWithoutAUniformEdge) {
  writable(inner->texture.value()) = randomPixels(GetParam(), random);
  put(document->needsCompositing, true);
  static_cast<void>(document->composite());
  expectNothing(*document, [&] { EXPECT_FALSE(document->trim()); });
  drawFramed(*document, {0, 0, pixelWidth, pixelHeight});
  expectNothing(*document, [&] { EXPECT_FALSE(document->trim()); });
}

TEST_P(DocumentCanvasTest, TrimDoesNothingWithoutAComposite) {
  const ConstTexture composite = document->compositedTexture.value();
  put(document->compositedTexture, nullptr);
  const std::int64_t records = recordCount(*document);
  EXPECT_FALSE(marksEdited(*document, [&] { EXPECT_FALSE(document->trim()); }));
  EXPECT_EQ(recordCount(*document), records);
  EXPECT_EQ(document->canvasWidth.value(), pixelWidth);
}

// Common to all changes of size.

TEST_P(DocumentCanvasTest, EverySizeCommandMarksTheDocumentAndAllThumbnails) {
  const std::array<std::function<void()>, 3> commands{
      [&] { document->resizeImage(50, 60, ResampleMethod::bilinear); },
      [&] { document->resizeCanvas(70, 80, 0, 0); },
      [&] {
        document->crop({3, 4, 40, 50}, "Crop");
      },
  };
  for (const auto& command : commands) {
    EXPECT_TRUE(marksThumbnails(*masked, [&] {
      EXPECT_TRUE(marksThumbnails(*inner, [&] { EXPECT_TRUE(marksEdited(*document, command)); }));
    }));
    for (const auto move : {&Document::undo, &Document::redo}) {
      EXPECT_TRUE(marksThumbnails(
          *masked, [&] { EXPECT_TRUE(marksThumbnails(*inner, [&] { ((*document).*move)(); })); }));
    }
  }
}

TEST_P(DocumentCanvasTest, ObserversAreNotifiedOnceWhenEverythingHasItsNewSize) {
  int told = 0;
  const auto subscription = document->changes().observe([&](const DocumentChanges& changes) {
    ++told;
    EXPECT_TRUE(contains<change::CanvasChanged>(changes));
    EXPECT_TRUE(contains<change::SelectionChanged>(changes));
    EXPECT_EQ(document->canvasWidth.value(), 70);
    EXPECT_EQ(masked->texture.value()->width(), 70);
    EXPECT_EQ(inner->texture.value()->width(), 70);
    EXPECT_EQ(document->selection.value()->maskTexture->width, 70);
  });
  document->resizeCanvas(70, 80, 0, 0);
  EXPECT_EQ(told, 1);
}

TEST_P(DocumentCanvasTest, ASelectionExistsAfterwardsEvenIfThereWasNone) {
  put(document->selection, nullptr);
  document->resizeCanvas(70, 80, 0, 0);
  expectFreshCanvas(70, 80);
}

TEST_P(DocumentCanvasTest, UndoAndRedoLeaveAnEmptySelectionOfTheRightSize) {
  document->crop({3, 4, 40, 50}, "Crop");
  document->selectAll();
  document->undo();
  document->undo();
  expectFreshCanvas(pixelWidth, pixelHeight);
  selectRandomly(*document, random);
  document->redo();
  expectFreshCanvas(40, 50);
}

TEST_P(DocumentCanvasTest, ALayerWithoutPixelsIsSkipped) {
  put(inner->texture, nullptr);
  expectPixelCycle(*document, "Canvas Size", [&] { document->resizeCanvas(70, 80, 0, 0); });
  EXPECT_EQ(inner->texture.value(), nullptr);
}

TEST_P(DocumentCanvasTest, ADocumentWithoutLayersCanBeResized) {
  const DocumentPtr empty = Document::create(
      {.name = "Empty", .width = 30, .height = 20, .colorMode = GetParam()}, MetalContext::shared());
  expectPixelCycle(*empty, "Canvas Size", [&] { empty->resizeCanvas(70, 80, 0, 0); });
  empty->redo();
  EXPECT_EQ(empty->canvasWidth.value(), 70);
  EXPECT_EQ(empty->compositedTexture.value()->height(), 80);
}

TEST_P(DocumentCanvasTest, AMaskWhoseSurfaceCannotBeMadeStaysAsItIs) {
  const DocumentPtr single = makeRandomDocument(GetParam(), random);
  const std::shared_ptr<Layer> layer = single->allLayers().front();
  const std::shared_ptr<LayerMask> mask = addRandomMask(*layer, random);
  const PixelState before = pixelState(*single);
  {
    // Two snapshots and the layer's new surface can be made; the mask's can't.
    const tileMemory::ScopedSurfaceFailure failure(3, 1);
    single->resizeCanvas(70, 80, -1, -1);
  }
  EXPECT_EQ(layer->mask.value(), mask);
  EXPECT_EQ(mask->maskTexture->width, pixelWidth);
  EXPECT_EQ(pixelsOf(*layer).width(), 70);
  EXPECT_EQ(recordCount(*single), 1);
  static_cast<void>(single->composite());
  single->undo();
  EXPECT_EQ(difference(pixelState(*single), before), "");
  single->redo();
  EXPECT_TRUE(maskPixelsOf(*layer).equals(blitted(*before.layers[0].mask, 70, 80, 0, 0)));
}

TEST_P(DocumentCanvasTest, ASelectionWhoseSurfaceCannotBeMadeIsDropped) {
  const auto withoutSelectionSurface = [this](int madeBefore, const std::function<void()>& command) {
    const tileMemory::ScopedSurfaceFailure failure(madeBefore, 1);
    command();
    EXPECT_EQ(document->selection.value(), nullptr);
  };
  // Four layers and masks are captured and remade, then two display surfaces.
  withoutSelectionSurface(4 + 4 + 2, [&] { document->resizeCanvas(70, 80, 0, 0); });
  document->ensureSelection();
  withoutSelectionSurface(4 + 2, [&] { document->undo(); });
  EXPECT_EQ(document->canvasWidth.value(), pixelWidth);
}

TEST_P(DocumentCanvasTest, ALayerWhoseSurfaceCannotBeMadeIsFatal) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const std::array<std::function<void()>, 3> commands{
      [&] { document->resizeImage(50, 60, ResampleMethod::bilinear); },
      [&] { document->resizeCanvas(70, 80, 0, 0); },
      [&] {
        document->crop({3, 4, 40, 50}, "Crop");
      },
  };
  for (const auto& command : commands) {
    EXPECT_DEATH(
        {
          const tileMemory::ScopedSurfaceFailure failure(0);
          command();
        },
        "Failed to create layer texture");
  }
}

// Colour mode.

/// A pixel as shown in a mode.
Color converted(const Color& pixel, ColorMode from, ColorMode to) {
  if (!isGrayscale(to) || isGrayscale(from)) return pixel;
  const double grey = 0.299 * pixel[0] + 0.587 * pixel[1] + 0.114 * pixel[2];
  return {grey, grey, grey, pixel[3]};
}

TEST_P(DocumentCanvasTest, ColourModeCycle) {
  for (const ColorMode to : allColorModes) {
    if (to == GetParam()) continue;
    const PixelState before = pixelState(*document);
    const SelectionState selectionBefore = selectionState(*document);
    expectPixelCycle(*document, "Change Color Mode", [&] { document->changeColorMode(to); });
    document->redo();
    const PixelState after = pixelState(*document);
    EXPECT_EQ(after.mode, to);
    EXPECT_EQ(after.compositeFormat, compositePixelFormat(to));
    EXPECT_EQ(document->checkerboardTexture.value()->format(), compositePixelFormat(to));
    for (std::size_t i = 0; i < before.layers.size(); ++i) {
      EXPECT_EQ(after.layers[i].pixels->format(), layerPixelFormat(to));
      EXPECT_TRUE(after.layers[i].mask->equals(*before.layers[i].mask));
      reference::Image expected = reference::imageOf(*before.layers[i].pixels);
      for (Color& pixel : expected.pixels) pixel = converted(pixel, GetParam(), to);
      reference::expectImage(*after.layers[i].pixels, expected);
    }
    EXPECT_EQ(difference(selectionState(*document), selectionBefore), "");
    document->undo();
  }
}

TEST_P(DocumentCanvasTest, MasksAndSelectionKeepTheirIdentityWhenTheModeChanges) {
  const std::shared_ptr<LayerMask> mask = masked->mask.value();
  const std::shared_ptr<const Selection> selection = document->selection.value();
  const ColorMode to = GetParam() == ColorMode::rgb8 ? ColorMode::grayscale16 : ColorMode::rgb8;
  document->changeColorMode(to);
  document->undo();
  document->redo();
  EXPECT_EQ(masked->mask.value(), mask);
  EXPECT_EQ(document->selection.value(), selection);
}

TEST_P(DocumentCanvasTest, ChangingToTheCurrentModeLeavesNoRecord) {
  expectNothing(*document, [&] { document->changeColorMode(GetParam()); });
}

TEST_P(DocumentCanvasTest, AChangeOfModeMarksTheDocumentAndAllThumbnails) {
  const ColorMode to = GetParam() == ColorMode::rgb8 ? ColorMode::grayscale16 : ColorMode::rgb8;
  EXPECT_TRUE(marksThumbnails(*masked, [&] {
    EXPECT_TRUE(marksThumbnails(
        *inner, [&] { EXPECT_TRUE(marksEdited(*document, [&] { document->changeColorMode(to); })); }));
  }));
  EXPECT_TRUE(
      marksThumbnails(*masked, [&] { EXPECT_TRUE(marksThumbnails(*inner, [&] { document->undo(); })); }));
}

}  // namespace
}  // namespace orvanel
