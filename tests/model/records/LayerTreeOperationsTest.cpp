#include "model/records/LayerTreeOperations.h"

#include <gtest/gtest.h>

#include "model/records/RecordSupport.h"

namespace orvanel {
namespace {

using namespace test;

constexpr std::int64_t layerBytes = 128 * 128 * 4;

class LayerTreeOperationsTest : public testing::Test {
 protected:
  /// Background, F[a, b], c
  void SetUp() override {
    document->addFolder("F");
    document->addLayer("a");
    document->addLayer("b");
    document->selectNode(std::nullopt);
    document->addLayer("c");
    activate(*document, "Background");
    ASSERT_EQ(treeText(*document), "Background, F[a, b], c");
  }
  [[nodiscard]] QUuid id(const QString& name) const { return idOf(*document, name); }

  void paint(const QString& name) const {
    (void)writable(nodeNamed(*document, name).layer()->texture.value()).editTile(0);
  }

  DocumentPtr document = makeDocument();
};

TEST_F(LayerTreeOperationsTest, AddLayerCycle) {
  activate(*document, "a");
  expectCycle(*document, [&] { document->addLayer("new"); });
  EXPECT_EQ(document->undoStack.redoActionName(), "Add Layer");
}

TEST_F(LayerTreeOperationsTest, AddFolderCycle) {
  expectCycle(*document, [&] { document->addFolder("new"); });
  EXPECT_EQ(document->undoStack.redoActionName(), "Add Folder");
}

TEST_F(LayerTreeOperationsTest, RemoveLayerCycle) {
  activate(*document, "c");
  expectCycle(*document, [&] { document->removeNode(id("a")); });
  EXPECT_EQ(document->undoStack.redoActionName(), "Delete Layer");
}

TEST_F(LayerTreeOperationsTest, RemoveFolderCycle) {
  expectCycle(*document, [&] { document->removeNode(id("F")); });
  EXPECT_EQ(document->undoStack.redoActionName(), "Delete Folder");
}

TEST_F(LayerTreeOperationsTest, DuplicateLayerCycle) {
  expectCycle(*document, [&] { document->duplicateNode(id("b")); });
  EXPECT_EQ(document->undoStack.redoActionName(), "Duplicate Layer");
}

TEST_F(LayerTreeOperationsTest, DuplicateFolderCycle) {
  expectCycle(*document, [&] { document->duplicateNode(id("F")); });
  EXPECT_EQ(document->undoStack.redoActionName(), "Duplicate Folder");
}

TEST_F(LayerTreeOperationsTest, MoveCycleKeepsTheMovedNodeActive) {
  activate(*document, "c");
  expectCycle(*document, [&] { document->moveNode(id("c"), id("F")); });
  EXPECT_EQ(treeText(*document), "Background, F[a, b], c");
  document->redo();
  EXPECT_EQ(treeText(*document), "Background, F[a, b, c]");
  EXPECT_EQ(document->undoStack.undoActionName(), "Move Layer");
}

TEST_F(LayerTreeOperationsTest, MoveToAnIndexActivatesTheNodeOnUndoAndRedo) {
  document->moveNode(id("b"), std::nullopt, 0);
  EXPECT_EQ(treeText(*document), "b, Background, F[a], c");
  EXPECT_EQ(activeName(*document), "Background");
  document->undo();
  EXPECT_EQ(treeText(*document), "Background, F[a, b], c");
  EXPECT_EQ(activeName(*document), "b");
  activate(*document, "c");
  document->redo();
  EXPECT_EQ(treeText(*document), "b, Background, F[a], c");
  EXPECT_EQ(activeName(*document), "b");
}

TEST_F(LayerTreeOperationsTest, UndoRestoresTheSameObject) {
  const LayerNode removed = nodeNamed(*document, "a");
  const ConstTexture pixels = removed.layer()->texture.value();
  document->removeNode(removed.id());
  document->undo();
  EXPECT_EQ(nodeNamed(*document, "a"), removed);
  EXPECT_EQ(removed.layer()->texture.value(), pixels);
}

TEST_F(LayerTreeOperationsTest, RestoredNodesKeepTheirNames) {
  document->addLayer("c");
  document->undo();
  put(nodeNamed(*document, "c").name(), QStringLiteral("c 2"));
  document->redo();
  EXPECT_EQ(document->allNodeNames(), (std::set<QString>{"Background", "F", "a", "b", "c 2"}));
  EXPECT_EQ(document->layerCount(), 5) << "two nodes may share a name afterwards";
}

TEST_F(LayerTreeOperationsTest, RedoOfDeletingAnOnlyChildActivatesWhatWasActiveBefore) {
  document->removeNode(id("a"));
  activate(*document, "c");
  document->removeNode(id("b"));
  EXPECT_EQ(activeName(*document), "F") << "the command itself activates the folder";
  document->undo();
  EXPECT_EQ(activeName(*document), "c");
  activate(*document, "Background");
  document->redo();
  EXPECT_EQ(activeName(*document), "c");
}

TEST_F(LayerTreeOperationsTest, RedoOfDeletingTheLastOfThreeActivatesTheNewLast) {
  document->removeNode(id("c"));
  document->undo();
  document->redo();
  EXPECT_EQ(treeText(*document), "Background, F[a, b]");
  EXPECT_EQ(activeName(*document), "F");
}

TEST_F(LayerTreeOperationsTest, UndoOfADeletionRestoresParentAndIndex) {
  document->removeNode(id("a"));
  EXPECT_EQ(treeText(*document), "Background, F[b], c");
  document->undo();
  EXPECT_EQ(treeText(*document), "Background, F[a, b], c");
}

TEST_F(LayerTreeOperationsTest, UndoOfADeletionGoesToTheRootIfTheParentIsGone) {
  document->removeNode(id("b"));
  const QUuid folder = id("F");
  ASSERT_TRUE(detach(*document, folder));
  document->undo();
  EXPECT_EQ(treeText(*document), "Background, b, c") << "at its old index";
}

TEST_F(LayerTreeOperationsTest, AnIndexInAParentThatIsGoneIsClampedAtRootLevel) {
  activate(*document, "b");
  document->addLayer("d");
  ASSERT_EQ(treeText(*document), "Background, F[a, b, d], c");
  document->removeNode(id("d"));
  for (const char* name : {"F", "c"}) ASSERT_TRUE(detach(*document, id(name)));
  document->undo();
  EXPECT_EQ(treeText(*document), "Background, d");
}

TEST_F(LayerTreeOperationsTest, TheIndexIsClampedAtRootLevel) {
  const auto record = std::make_shared<RemoveNodeOperation>(document, id("c"));
  for (const char* name : {"c", "F"}) ASSERT_TRUE(detach(*document, id(name)));
  record->undo();
  EXPECT_EQ(treeText(*document), "Background, c");
}

TEST_F(LayerTreeOperationsTest, UndoingAMoveOfADeletedNodeDoesNothing) {
  document->moveNode(id("c"), id("F"));
  ASSERT_TRUE(detach(*document, id("c")));
  activate(*document, "a");
  const QString before = documentState(*document);
  document->undo();
  document->redo();
  EXPECT_EQ(documentState(*document), before);
}

TEST_F(LayerTreeOperationsTest, RemovingAnAbsentNodeKeepsTheActiveOne) {
  document->addLayer("new");
  ASSERT_TRUE(detach(*document, id("new")));
  activate(*document, "c");
  document->undo();
  EXPECT_EQ(activeName(*document), "c");
}

TEST_F(LayerTreeOperationsTest, AMoveWithoutADestinationIsNotRedone) {
  MoveNodeOperation record(document, id("c"), {.parentID = std::nullopt, .index = 0});
  const QString before = documentState(*document);
  record.redo();
  EXPECT_EQ(documentState(*document), before);
  record.undo();
  EXPECT_EQ(treeText(*document), "c, Background, F[a, b]");
}

TEST_F(LayerTreeOperationsTest, NodesAbsentAtCreationGiveTheBareVerb) {
  const QUuid unknown = QUuid::createUuid();
  RemoveNodeOperation removal(document, unknown);
  DuplicateNodeOperation duplication(document, unknown, std::nullopt);
  EXPECT_EQ(removal.actionName(), "Delete");
  EXPECT_EQ(duplication.actionName(), "Duplicate");
  const QString before = documentState(*document);
  for (UndoableOperation* record :
       {static_cast<UndoableOperation*>(&removal), static_cast<UndoableOperation*>(&duplication)}) {
    record->redo();
    record->undo();
    EXPECT_EQ(record->memoryCost(), 0);
  }
  EXPECT_EQ(documentState(*document), before);
}

TEST_F(LayerTreeOperationsTest, UniformLayersCostNothing) {
  document->addLayer("new");
  EXPECT_EQ(newestCost(*document), 0);
  document->duplicateNode(id("F"));
  EXPECT_EQ(newestCost(*document), 0);
  document->removeNode(id("F"));
  EXPECT_EQ(newestCost(*document), 0);
}

TEST_F(LayerTreeOperationsTest, ALayerCostsItsTilesWhileItIsOutOfTheTree) {
  document->addLayer("new");
  paint("new");
  EXPECT_EQ(newestCost(*document), 0);
  document->undo();
  EXPECT_EQ(newestCost(*document), layerBytes);
  document->redo();
  EXPECT_EQ(newestCost(*document), 0);
  document->removeNode(id("new"));
  EXPECT_EQ(document->undoStack.totalMemoryCost(), layerBytes);
  document->undo();
  EXPECT_EQ(newestCost(*document), 0);
}

TEST_F(LayerTreeOperationsTest, CopiesShareTheCostOfTheirTiles) {
  paint("a");
  paint("b");
  document->duplicateNode(id("F"));
  EXPECT_EQ(newestCost(*document), 0);
  document->undo();
  EXPECT_EQ(newestCost(*document), 2 * layerBytes / 2);
  document->removeNode(id("F"));
  EXPECT_EQ(newestCost(*document), 2 * layerBytes);
}

TEST_F(LayerTreeOperationsTest, ARemovedLayerAlsoCostsItsMask) {
  paint("c");
  const auto mask = addMask(*nodeNamed(*document, "c").layer());
  (void)writable(mask->maskTexture->texture).editTile(0);
  document->removeNode(id("c"));
  EXPECT_EQ(newestCost(*document), layerBytes + layerBytes / 2);
  put(nodeNamed(*document, "a").layer()->texture, nullptr);
  document->removeNode(id("a"));
  EXPECT_EQ(newestCost(*document), 0);
}

TEST_F(LayerTreeOperationsTest, FoldersAndMovesCostNothing) {
  document->addFolder("G");
  EXPECT_EQ(newestCost(*document), 0);
  document->moveNode(id("c"), id("G"));
  EXPECT_EQ(newestCost(*document), 0);
}

TEST_F(LayerTreeOperationsTest, AFolderNeverCausesEvictionByBytes) {
  paint("c");
  document->removeNode(id("c"));
  ASSERT_EQ(document->undoStack.totalMemoryCost(), layerBytes);
  writableHistory(*document).memoryBudget = layerBytes;
  const std::size_t records = document->undoStack.operations().size();
  document->addFolder("G");
  EXPECT_EQ(document->undoStack.operations().size(), records + 1);
  EXPECT_EQ(document->undoStack.totalMemoryCost(), layerBytes);
}

TEST_F(LayerTreeOperationsTest, StepsOfAClosedDocumentDoNothing) {
  document->addLayer("new");
  document->moveNode(id("a"), std::nullopt, 0);
  document->duplicateNode(id("b"));
  document->addFolder("G");
  document->removeNode(id("c"));
  const std::vector<UndoStack::Record> records = document->undoStack.operations();
  const std::weak_ptr<Document> closed = document;
  document.reset();
  ASSERT_TRUE(closed.expired()) << "records hold their document weakly";
  for (const UndoStack::Record& record : records) {
    record->undo();
    record->redo();
  }
}

}  // namespace
}  // namespace orvanel
