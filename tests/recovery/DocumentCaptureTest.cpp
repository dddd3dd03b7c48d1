#include "recovery/DocumentCapture.h"

#include "io/document/SaveSnapshot.h"
#include "model/LevelsAdjustment.h"
#include "recovery/RecoveryFixture.h"

namespace orvanel {
namespace {

using testing::changePixels;
using testing::unsavedDocument;

class DocumentCaptureTest : public ::testing::Test {
 protected:
  DocumentCaptureTest()
      : document(unsavedDocument()),
        capture(*document),
        subscription(
            document->changes().observe([this](const DocumentChanges& changes) { capture.note(changes); })) {}

  Capture all() { return *capture.advance(std::chrono::hours(1)); }
  [[nodiscard]] std::string activePath() const {
    return layerEntryPath(uuidText(document->activeLayer()->id)).toStdString();
  }

  DocumentPtr document;
  DocumentCapture capture;
  Subscription subscription;
};

TEST_F(DocumentCaptureTest, beginsWithEverything) {
  EXPECT_TRUE(capture.hasChanges());
  const Capture first = all();
  EXPECT_TRUE(first.isComplete);
  EXPECT_TRUE(first.manifest.has_value());
  EXPECT_EQ(first.surfaces.size(), 4U) << "two layers with pixels, two masks";
  for (const auto& [path, surface] : first.surfaces) {
    EXPECT_TRUE(surface.isWhole);
    EXPECT_EQ(surface.tiles.size(), 9U);
  }
  EXPECT_FALSE(capture.hasChanges());
}

TEST_F(DocumentCaptureTest, thenHoldsTheTilesThatChanged) {
  static_cast<void>(all());
  changePixels(*document);
  const Capture second = all();
  EXPECT_FALSE(second.isComplete);
  ASSERT_EQ(second.surfaces.size(), 1U);
  EXPECT_EQ(second.surfaces.begin()->first, activePath());
  EXPECT_FALSE(second.surfaces.begin()->second.isWhole);
}

TEST_F(DocumentCaptureTest, viewsSelectionsAndPointersAreNoChanges) {
  static_cast<void>(all());
  document->selectAll();
  document->zoomIn();
  document->setCursorDocumentPosition(QPointF(3, 4));
  EXPECT_FALSE(capture.hasChanges());
}

TEST_F(DocumentCaptureTest, isTheDocumentOfItsLastMomentHoweverManyItTakes) {
  // With no time at all each call makes one step; edits come in between.
  std::optional<Capture> done;
  int steps = 0;
  for (; !done; ++steps) {
    done = capture.advance(std::chrono::nanoseconds(0));
    if (!done && steps < 3) {
      changePixels(*document);
      document->addLayer(QStringLiteral("Between"));
      document->removeNode(document->activeLayer()->id);
    }
  }
  EXPECT_GT(steps, 3);
  for (const std::shared_ptr<Layer>& layer : document->allLayers()) {
    if (layer->texture.value() == nullptr) continue;
    const auto found = done->surfaces.find(layerEntryPath(uuidText(layer->id)).toStdString());
    ASSERT_NE(found, done->surfaces.end());
    Surface gathered(found->second.format, 300, 270);
    for (const auto& [index, tile] : found->second.tiles) gathered.setTile(index, tile);
    EXPECT_TRUE(gathered.equals(*layer->texture.value()));
  }
  EXPECT_EQ(done->surfaces.size(), 4U) << "what came and went isn't among them";
}

TEST_F(DocumentCaptureTest, openEditsAreNotSettled) {
  static_cast<void>(all());
  auto adjustment = LevelsAdjustment::begin(document);
  ASSERT_TRUE(adjustment.has_value());
  adjustment->apply({.blackPoint = 100.0F, .whitePoint = 200.0F, .gamma = 2.0F});
  EXPECT_FALSE(document->isSettled());
  EXPECT_FALSE(capture.hasChanges());
  adjustment->commit();
  EXPECT_TRUE(capture.hasChanges());
}

}  // namespace
}  // namespace orvanel
