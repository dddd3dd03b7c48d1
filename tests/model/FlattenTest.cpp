#include <gtest/gtest.h>

#include "model/DocumentCompositor.h"
#include "model/RandomDocument.h"
#include "model/ReferenceFlattener.h"

namespace orvanel {
namespace {

using namespace test;

/// The composite of every tile, made from nothing by a compositor without a memory.
Surface flattenedAnew(Document& document) {
  const Texture kept = document.compositedTexture.value();
  const auto fresh = std::make_shared<Surface>(kept->format(), kept->width(), kept->height());
  put(document.compositedTexture, fresh);
  DocumentCompositor(document.context()).compositeDocument(document, CompositeScope::allTiles);
  put(document.compositedTexture, kept);
  return *fresh;
}

class FlattenTest : public testing::TestWithParam<ColorMode> {};

TEST_P(FlattenTest, RemakingChangedTilesEqualsFlatteningEverything) {
  for (unsigned seed = 1; seed <= 6; ++seed) {
    std::mt19937 random(seed);
    const DocumentPtr document = randomDocument(GetParam(), FolderKinds::all, random);
    DocumentCompositor compositor(document->context());
    for (int step = 0; step < 40; ++step) {
      compositor.compositeDocument(*document);
      ASSERT_TRUE(document->compositedTexture.value()->equals(flattenedAnew(*document)))
          << "seed " << seed << ", step " << step;
      const int edits = 1 + static_cast<int>(random() % 3);
      for (int edit = 0; edit < edits; ++edit) editRandomly(*document, random);
    }
  }
}

TEST_P(FlattenTest, AgreesWithTheTruthToHalfAUnitWithoutIsolation) {
  for (unsigned seed = 11; seed <= 14; ++seed) {
    std::mt19937 random(seed);
    const DocumentPtr document = randomDocument(GetParam(), FolderKinds::passThroughOnly, random);
    DocumentCompositor(document->context()).compositeDocument(*document);
    EXPECT_LE(largestExcess(*document->compositedTexture.value(), flattenReference(*document), 1.0), 0.0)
        << "seed " << seed;
  }
}

// A temporary's rounding may fall the other way than the truth's by one unit, and the blend modes above it
// at most double that.
TEST_P(FlattenTest, AgreesWithTheTruthToAFewUnitsThroughIsolatingFolders) {
  for (unsigned seed = 21; seed <= 26; ++seed) {
    std::mt19937 random(seed);
    const DocumentPtr document = randomDocument(GetParam(), FolderKinds::all, random);
    DocumentCompositor(document->context()).compositeDocument(*document);
    EXPECT_LE(largestExcess(*document->compositedTexture.value(), flattenReference(*document), 4.0), 0.0)
        << "seed " << seed;
  }
}

std::string modeName(const testing::TestParamInfo<ColorMode>& tested) {
  constexpr std::array names{"grayscale8", "grayscale16", "rgb8", "rgb16"};
  return names[rawValue(tested.param)];
}

INSTANTIATE_TEST_SUITE_P(Modes, FlattenTest, testing::ValuesIn(allColorModes), modeName);

}  // namespace
}  // namespace orvanel
