#include "model/records/PropertyOperations.h"

#include <gtest/gtest.h>

#include "model/records/RecordSupport.h"

namespace orvanel {
namespace {

using namespace test;

class PropertyOperationsTest : public testing::Test {
 protected:
  void SetUp() override {
    document->addFolder("F");
    document->addLayer("L");
  }
  [[nodiscard]] QUuid id(const QString& name) const { return idOf(*document, name); }
  void changeOpacity(const QString& name, float from, float to) {
    writableHistory(*document).pushOpacityChange(
        std::make_shared<OpacityChangeOperation>(document, id(name), from, to));
  }
  [[nodiscard]] float opacity(const QString& name) const {
    return nodeNamed(*document, name).opacity().value();
  }
  [[nodiscard]] std::size_t historySize() const { return document->undoStack.operations().size(); }

  DocumentPtr document = makeDocument();
};

TEST_F(PropertyOperationsTest, OpacityCycle) {
  expectCycle(*document, [&] { changeOpacity("L", 1.0F, 0.5F); });
  document->redo();
  EXPECT_EQ(opacity("L"), 0.5F);
  EXPECT_EQ(document->undoStack.undoActionName(), "Opacity");
  EXPECT_EQ(newestCost(*document), 64);
}

TEST_F(PropertyOperationsTest, BlendModeCycle) {
  expectCycle(*document, [&] {
    writableHistory(*document).pushAndRedo(std::make_shared<BlendModeChangeOperation>(
        document, id("F"), BlendMode::normal, BlendMode::difference));
  });
  document->redo();
  EXPECT_EQ(nodeNamed(*document, "F").blendMode().value(), BlendMode::difference);
  EXPECT_EQ(document->undoStack.undoActionName(), "Blend Mode");
  EXPECT_EQ(newestCost(*document), 64);
}

TEST_F(PropertyOperationsTest, NameCycle) {
  const QUuid layer = id("L");
  expectCycle(*document, [&] {
    put(document->findNode(layer)->name(), QStringLiteral("Ä"));
    writableHistory(*document).push(std::make_shared<NameChangeOperation>(document, layer, "L", "Ä"));
  });
  EXPECT_EQ(document->undoStack.redoActionName(), "Rename");
  EXPECT_EQ(newestCost(*document), 64 + 1 + 2) << "the bytes of both names as UTF-8";
}

TEST_F(PropertyOperationsTest, VisibilityCycle) {
  expectCycle(*document, [&] {
    put(nodeNamed(*document, "F").isVisible(), false);
    writableHistory(*document).push(
        std::make_shared<VisibilityChangeOperation>(document, id("F"), true, false));
  });
  EXPECT_EQ(document->undoStack.redoActionName(), "Visibility");
  EXPECT_EQ(newestCost(*document), 64);
}

TEST_F(PropertyOperationsTest, LockCycle) {
  expectCycle(*document, [&] {
    put(nodeNamed(*document, "L").isLocked(), true);
    writableHistory(*document).push(std::make_shared<LockChangeOperation>(document, id("L"), false, true));
  });
  EXPECT_EQ(document->undoStack.redoActionName(), "Lock");
  EXPECT_EQ(newestCost(*document), 64);
}

TEST_F(PropertyOperationsTest, BatchVisibilityCycleRestoresEachNodesOwnValue) {
  put(nodeNamed(*document, "F").isVisible(), false);
  expectCycle(*document, [&] {
    for (const char* name : {"Background", "F", "L"}) put(nodeNamed(*document, name).isVisible(), true);
    writableHistory(*document).push(std::make_shared<BatchVisibilityChangeOperation>(
        document,
        std::vector<BatchVisibilityChangeOperation::Change>{
            {id("Background"), true}, {id("F"), false}, {id("L"), true}},
        true));
  });
  EXPECT_EQ(document->undoStack.redoActionName(), "Visibility");
  EXPECT_EQ(newestCost(*document), 136);
}

TEST_F(PropertyOperationsTest, ABatchSkipsAbsentNodes) {
  const QUuid gone = id("L");
  BatchVisibilityChangeOperation record(document, {{gone, true}, {id("F"), true}}, false);
  const std::optional<LayerNode> layer = detach(*document, gone);
  record.redo();
  EXPECT_FALSE(nodeNamed(*document, "F").isVisible().value());
  EXPECT_TRUE(layer->isVisible().value());
}

TEST_F(PropertyOperationsTest, UndoOfConsecutiveOpacityChangesRestoresTheFirstValue) {
  const std::size_t before = historySize();
  changeOpacity("L", 1.0F, 0.75F);
  changeOpacity("L", 0.75F, 0.5F);
  changeOpacity("L", 0.5F, 0.25F);
  EXPECT_EQ(historySize(), before + 1);
  EXPECT_EQ(opacity("L"), 0.25F);
  document->undo();
  EXPECT_EQ(opacity("L"), 1.0F);
  document->redo();
  EXPECT_EQ(opacity("L"), 0.25F);
}

TEST_F(PropertyOperationsTest, ChangesOfTwoNodesAreNotMerged) {
  const std::size_t before = historySize();
  changeOpacity("L", 1.0F, 0.75F);
  changeOpacity("F", 1.0F, 0.5F);
  changeOpacity("L", 0.75F, 0.25F);
  EXPECT_EQ(historySize(), before + 3);
  document->undo();
  EXPECT_EQ(opacity("L"), 0.75F);
  EXPECT_EQ(opacity("F"), 0.5F);
}

TEST_F(PropertyOperationsTest, AnyOtherRecordEndsARun) {
  const std::size_t before = historySize();
  changeOpacity("L", 1.0F, 0.75F);
  writableHistory(*document).push(std::make_shared<LockChangeOperation>(document, id("L"), false, false));
  changeOpacity("L", 0.75F, 0.5F);
  EXPECT_EQ(historySize(), before + 3);
}

TEST_F(PropertyOperationsTest, AnUndoneChangeIsDroppedBeforeARunContinues) {
  const std::size_t before = historySize();
  changeOpacity("L", 1.0F, 0.75F);
  changeOpacity("F", 1.0F, 0.5F);
  document->undo();
  changeOpacity("L", 0.75F, 0.5F);
  EXPECT_EQ(historySize(), before + 1);
  document->undo();
  EXPECT_EQ(opacity("L"), 1.0F);
  changeOpacity("L", 1.0F, 0.1F);
  EXPECT_EQ(historySize(), before + 1);
  document->undo();
  EXPECT_EQ(opacity("L"), 1.0F);
}

TEST_F(PropertyOperationsTest, OnlyOpacityRunsMerge) {
  const QUuid layer = id("L");
  const std::size_t before = historySize();
  put(document->findNode(layer)->name(), QStringLiteral("M"));
  writableHistory(*document).push(std::make_shared<NameChangeOperation>(document, layer, "L", "M"));
  put(document->findNode(layer)->name(), QStringLiteral("N"));
  writableHistory(*document).push(std::make_shared<NameChangeOperation>(document, layer, "M", "N"));
  EXPECT_EQ(historySize(), before + 2);
  document->undo();
  EXPECT_EQ(document->findNode(layer)->name().value(), "M");
  document->undo();
  EXPECT_EQ(document->findNode(layer)->name().value(), "L");
}

TEST_F(PropertyOperationsTest, ARunWhoseDocumentIsGoneIsUnchanged) {
  UndoStack stack;
  stack.push(std::make_shared<OpacityChangeOperation>(document, id("L"), 1.0F, 0.75F));
  const auto late = std::make_shared<OpacityChangeOperation>(document, id("L"), 0.75F, 0.5F);
  document.reset();
  stack.pushOpacityChange(late);
  EXPECT_EQ(stack.operations().size(), 1U);
  EXPECT_EQ(stack.currentIndex.value(), 0);
  stack.undo();
}

TEST_F(PropertyOperationsTest, UndoOfARenameWaitsForItsNode) {
  const QUuid layer = id("L");
  put(document->findNode(layer)->name(), QStringLiteral("M"));
  writableHistory(*document).push(std::make_shared<NameChangeOperation>(document, layer, "L", "M"));
  const std::optional<LayerNode> node = detach(*document, layer);
  document->undo();
  EXPECT_EQ(node->name().value(), "M");
  document->redo();
  attach(*document, *node, {});
  document->undo();
  EXPECT_EQ(node->name().value(), "L");
}

TEST_F(PropertyOperationsTest, AnEqualValueNotifiesNobody) {
  BlendModeChangeOperation record(document, id("L"), BlendMode::normal, BlendMode::screen);
  const ChangeRecorder changes(*document);
  record.undo();
  EXPECT_EQ(changes.batches, 0);
  record.redo();
  EXPECT_EQ(changes.count<change::NodePropertyChanged>(NodeProperty::blendMode), 1U);
}

TEST_F(PropertyOperationsTest, StepsOfAClosedDocumentDoNothing) {
  const std::shared_ptr<Layer> layer = nodeNamed(*document, "L").layer();
  LockChangeOperation lock(document, layer->id, false, true);
  BatchVisibilityChangeOperation batch(document, {{layer->id, true}}, false);
  document.reset();
  lock.redo();
  batch.redo();
  batch.undo();
  EXPECT_FALSE(layer->isLocked.value());
  EXPECT_TRUE(layer->isVisible.value());
}

}  // namespace
}  // namespace orvanel
