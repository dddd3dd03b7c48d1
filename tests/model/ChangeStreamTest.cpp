#include "model/ChangeStream.h"

#include <gtest/gtest.h>

#include <vector>

#include "model/ModelSupport.h"
#include "raster/HalfFloat.h"

namespace orvanel {
namespace {

using namespace test;

TEST(ChangeStreamTest, AnEditIsReportedOnceWithEverythingItChanged) {
  const DocumentPtr document = makeDocument();
  const ChangeRecorder changes(*document);
  document->addLayer("L");
  EXPECT_EQ(changes.batches, 1);
  ASSERT_EQ(changes.count<change::NodeInserted>(), 1U);
  EXPECT_EQ(changes.of<change::NodeInserted>().front().nodeID, idOf(*document, "L"));
  EXPECT_EQ(changes.of<change::NodeInserted>().front().position, (TreePosition{std::nullopt, 1}));
  EXPECT_EQ(changes.count<change::ActiveNodeChanged>(), 1U);
  EXPECT_EQ(changes.count<change::HistoryChanged>(), 1U);
  EXPECT_EQ(changes.count<change::FileStateChanged>(FileProperty::isDirty), 1U);
}

TEST(ChangeStreamTest, AFolderIsInsertedEmptyFollowedByItsChildren) {
  const DocumentPtr document = makeDocument();
  document->addFolder("F");
  document->addLayer("a");
  document->addLayer("b");
  const QUuid folder = idOf(*document, "F");
  document->removeNode(folder);
  const ChangeRecorder changes(*document);
  document->undo();
  const std::vector<change::NodeInserted> inserted = changes.of<change::NodeInserted>();
  ASSERT_EQ(inserted.size(), 3U);
  EXPECT_EQ(inserted[0].nodeID, folder);
  EXPECT_EQ(inserted[1].position, (TreePosition{folder, 0}));
  EXPECT_EQ(inserted[2].position, (TreePosition{folder, 1}));
}

TEST(ChangeStreamTest, AMoveIsOneChangeWithBothPositions) {
  const DocumentPtr document = makeDocument();
  document->addFolder("F");
  const QUuid folder = idOf(*document, "F");
  const QUuid background = idOf(*document, "Background");
  const ChangeRecorder changes(*document);
  document->moveNode(background, folder);
  ASSERT_EQ(changes.count<change::NodeMoved>(), 1U);
  const change::NodeMoved moved = changes.of<change::NodeMoved>().front();
  EXPECT_EQ(moved.nodeID, background);
  EXPECT_EQ(moved.from, (TreePosition{std::nullopt, 0}));
  EXPECT_EQ(moved.to, (TreePosition{folder, 0}));
  EXPECT_EQ(changes.count<change::NodeInserted>() + changes.count<change::NodeRemoved>(), 0U);
}

TEST(ChangeStreamTest, AResizeToTheSameSizeIsReportedOnce) {
  const DocumentPtr document = makeDocument();
  const ChangeRecorder changes(*document);
  document->resizeCanvas(document->canvasWidth.value(), document->canvasHeight.value(), 0, 0);
  EXPECT_EQ(changes.count<change::CanvasChanged>(), 1U);
}

TEST(ChangeStreamTest, PixelChangesListTheChangedTiles) {
  const DocumentPtr document = makeDocument(400, 300);
  document->ensureSelection();
  writableSelection(*document).setRect({130, 10, 140, 20}, 0.0F, document->context());
  const ChangeRecorder changes(*document);
  document->fillSelection(DisplayColor::black());
  ASSERT_EQ(changes.count<change::PixelsChanged>(), 1U);
  EXPECT_EQ(changes.of<change::PixelsChanged>().front().tiles, (std::vector<int>{1, 2}));
  EXPECT_EQ(changes.of<change::PixelsChanged>().front().kind, SurfaceKind::pixels);
}

TEST(ChangeStreamTest, ASelectionRestoredClearedAndRefilledInOneEditIsReportedOnce) {
  const DocumentPtr document = makeDocument();
  document->selectAll();
  const ChangeRecorder changes(*document);
  document->invertSelection();
  EXPECT_EQ(changes.count<change::SelectionChanged>(), 1U);
  document->undo();
  EXPECT_EQ(changes.count<change::SelectionChanged>(), 2U);
  EXPECT_EQ(changes.batches, 2);
}

TEST(ChangeStreamTest, ChangesMadeByAHandlerAreDeliveredAfterTheCurrentBatch) {
  const DocumentPtr document = makeDocument();
  std::vector<std::string> told;
  const auto editor = document->changes().observe([&](const DocumentChanges& changes) {
    told.emplace_back("editor");
    if (contains<change::HistoryChanged>(changes)) document->setDragSize(Document::DragSize{3, 4});
  });
  const auto listener = document->changes().observe([&](const DocumentChanges& changes) {
    told.emplace_back(contains<change::HistoryChanged>(changes) ? "history" : "view");
  });
  document->addLayer("L");
  EXPECT_EQ(told, (std::vector<std::string>{"editor", "history", "editor", "view"}));
}

TEST(ChangeStreamTest, AnEndedSubscriptionIsNotCalledAgain) {
  const DocumentPtr document = makeDocument();
  int told = 0;
  std::optional<ChangeStream::Subscription> second;
  const auto first = document->changes().observe([&](const DocumentChanges&) { second.reset(); });
  second = document->changes().observe([&](const DocumentChanges&) { ++told; });
  document->addLayer("L");
  EXPECT_EQ(told, 0) << "ended by an earlier observer in the same delivery";
}

TEST(ChangeStreamTest, ASubscriptionMayOutliveItsDocument) {
  ChangeStream::Subscription subscription;
  {
    const DocumentPtr document = makeDocument();
    subscription = document->changes().observe([](const DocumentChanges&) {});
  }
  subscription = {};
}

TEST(ChangeStreamTest, CommandsThatDoNotApplyNotifyNobody) {
  const DocumentPtr document = makeDocument();
  const ChangeRecorder changes(*document);
  document->removeNode(idOf(*document, "Background"));
  document->deselect();
  document->setOpacity(QUuid::createUuid(), 0.5F);
  document->setMaskEnabled(idOf(*document, "Background"), false);
  document->cropToSelection();
  EXPECT_EQ(changes.batches, 0);
}

}  // namespace
}  // namespace orvanel
