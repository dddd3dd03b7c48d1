// Fills with every colour and alpha, and edits while a missing mask is selected.
#include <gtest/gtest.h>

#include "model/LevelsAdjustment.h"
#include "model/PixelSupport.h"

namespace orvanel {
namespace {

using namespace test;

class DocumentFillTest : public testing::TestWithParam<ColorMode> {
 protected:
  [[nodiscard]] Surface pixels() const { return pixelsOf(*layer); }
  /// Runs an edit on fresh pixels, with or without the missing mask selected, and returns the result.
  [[nodiscard]] Surface edited(bool isMaskSelected, const std::function<void()>& edit) const {
    put(layer->isMaskSelected, isMaskSelected);
    edit();
    Surface result = pixels();
    document->undo();
    return result;
  }

  std::mt19937 random{93};
  DocumentPtr document = makeRandomDocument(GetParam(), random);
  std::shared_ptr<Layer> layer = document->allLayers().front();
};

INSTANTIATE_TEST_SUITE_P(Modes, DocumentFillTest, testing::ValuesIn(allColorModes), modeName);

TEST_P(DocumentFillTest, FillingEverythingEqualsFillingAFullSelection) {
  for (const DisplayColor color :
       {DisplayColor{0.75F, 0.25F, 0.5F, 0.5F}, DisplayColor{0.3F, 0.1F, 0.7F, 0.6F},
        DisplayColor{1.0F, 0.5F, 0.0F, 0.0F}, DisplayColor{1.0F, 0.5F, 0.0F, 0.001F},
        DisplayColor{1.0F, 0.5F, 0.0F, 1e-5F}, DisplayColor{1.0F, 0.5F, 0.0F, 6e-8F},
        DisplayColor{0.9F, 0.9F, 0.9F, 1e-30F}, DisplayColor{0.3F, 0.3F, 0.3F, 1.0F}}) {
    document->deselect();
    document->fillSelection(color);
    const Surface everything = pixels();
    document->undo();
    document->selectAll();
    document->fillSelection(color);
    EXPECT_TRUE(pixels().equals(everything)) << color.red << ", alpha " << color.alpha;
    document->undo();
  }
}

TEST_P(DocumentFillTest, AnAlphaThatRoundsToZeroLeavesTransparentPixels) {
  document->fillSelection({1.0F, 0.5F, 0.0F, 1e-8F});
  EXPECT_EQ(document->context().layerContentBounds(pixels(), GetParam(), false), std::nullopt);
  for (int index = 0; index < pixels().tileCount(); ++index)
    EXPECT_EQ(pixels().tile(index), Tile::uniform(0));
}

TEST_P(DocumentFillTest, EveryEditGoesToThePixelsIfTheSelectedMaskIsMissing) {
  const std::vector<std::function<void()>> edits{
      [&] {
        document->fillSelection({0.2F, 0.4F, 0.6F, 0.8F});
      },
      [&] { document->clearActive(); },
      [&] { document->invertActive(); },
      [&] { EXPECT_TRUE(document->cutPixels()); },
      [&] {
        LevelsAdjustment adjustment = LevelsAdjustment::begin(document).value();
        adjustment.apply({.blackPoint = 20.0F, .whitePoint = 200.0F, .gamma = 1.5F});
        adjustment.commit();
      },
  };
  selectRandomly(*document, random);
  const Surface before = pixels();
  for (const auto& edit : edits) {
    const Surface expected = edited(false, edit);
    EXPECT_FALSE(expected.equals(before));
    EXPECT_TRUE(pixels().equals(before));
    EXPECT_TRUE(edited(true, edit).equals(expected));
    EXPECT_TRUE(pixels().equals(before));
    EXPECT_TRUE(layer->isMaskSelected.value()) << "an edit doesn't change its target";
  }
}

TEST_P(DocumentFillTest, ARecordOfThePixelsIgnoresAMaskAddedLater) {
  put(layer->isMaskSelected, true);
  document->fillSelection(DisplayColor::black());
  const Surface filled = pixels();
  document->addLayerMask(layer);
  writableHistory(*document).undo();
  put(layer->mask, addRandomMask(*layer, random));
  put(layer->isMaskSelected, true);
  const Surface mask = maskPixelsOf(*layer);
  document->undo();
  document->redo();
  EXPECT_TRUE(pixels().equals(filled));
  EXPECT_TRUE(maskPixelsOf(*layer).equals(mask));
}

}  // namespace
}  // namespace orvanel
