#include <gtest/gtest.h>

#include "model/DocumentCompositor.h"
#include "model/RandomDocument.h"
#include "model/ReferenceFlattener.h"

namespace orvanel {
namespace {

using namespace test;

/// All tiles of the composite, made from scratch by a new compositor.
Surface flattenedAnew(Document& document) {
  const Surface& kept = *document.compositedTexture.value();
  Surface fresh(kept.format(), kept.width(), kept.height());
  DocumentCompositor(document.context()).compositeDocument(document, fresh, CompositeScope::allTiles);
  return fresh;
}

class FlattenTest : public testing::TestWithParam<ColorMode> {};

TEST_P(FlattenTest, RemakingChangedTilesEqualsFlatteningEverything) {
  for (unsigned seed = 1; seed <= 6; ++seed) {
    std::mt19937 random(seed);
    const DocumentPtr document = randomDocument(GetParam(), FolderKinds::all, random);
    for (int step = 0; step < 40; ++step) {
      // The random edits bypass the document, so it can't know about them.
      put(document->needsCompositing, true);
      ASSERT_TRUE(document->composite()->equals(flattenedAnew(*document)))
          << "seed " << seed << ", step " << step;
      const int edits = 1 + static_cast<int>(random() % 3);
      for (int edit = 0; edit < edits; ++edit) editRandomly(*document, random);
    }
  }
}

TEST_P(FlattenTest, AgreesWithTheReferenceToHalfAUnitWithoutIsolation) {
  for (unsigned seed = 11; seed <= 14; ++seed) {
    std::mt19937 random(seed);
    const DocumentPtr document = randomDocument(GetParam(), FolderKinds::passThroughOnly, random);
    EXPECT_LE(largestExcess(*document->composite(), flattenReference(*document), 1.0), 0.0)
        << "seed " << seed;
  }
}

// A temporary may round differently from the reference by one unit, and the blend modes above it can at most
// double that.
TEST_P(FlattenTest, AgreesWithTheReferenceToAFewUnitsThroughIsolatingFolders) {
  for (unsigned seed = 21; seed <= 26; ++seed) {
    std::mt19937 random(seed);
    const DocumentPtr document = randomDocument(GetParam(), FolderKinds::all, random);
    EXPECT_LE(largestExcess(*document->composite(), flattenReference(*document), 4.0), 0.0)
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
