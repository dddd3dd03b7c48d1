// Commands that change one property of a node.
#include <gtest/gtest.h>

#include "model/records/RecordSupport.h"

namespace orvanel {
namespace {

using namespace test;

class DocumentPropertiesTest : public testing::Test {
 protected:
  void SetUp() override {
    document->addFolder("Folder");
    document->addLayer("Layer");
    document->setDirty(false);
    put(document->needsCompositing, false);
    records = document->undoStack.operations().size();
  }
  [[nodiscard]] std::size_t newRecords() const { return document->undoStack.operations().size() - records; }
  void expectNothingHappened() const {
    EXPECT_EQ(newRecords(), 0U);
    EXPECT_FALSE(document->isDirty.value());
  }
  /// Expects one record and a dirty document; the compositor detects new values by itself.
  void expectOneRecord(const QString& actionName, std::int64_t cost) {
    EXPECT_EQ(newRecords(), 1U);
    EXPECT_EQ(document->undoStack.undoActionName(), actionName);
    EXPECT_EQ(newestCost(*document), cost);
    EXPECT_TRUE(document->isDirty.value());
    EXPECT_FALSE(document->needsCompositing.value());
  }

  DocumentPtr document = makeDocument();
  std::size_t records = 0;
};

/// All commands apply to layers and folders alike.
class AnyNodePropertiesTest : public DocumentPropertiesTest, public testing::WithParamInterface<const char*> {
 protected:
  void SetUp() override {
    DocumentPropertiesTest::SetUp();
    node = nodeNamed(*document, QString::fromLatin1(GetParam()));
    id = node.id();
  }

  LayerNode node = document->rootNodes.value().front();
  QUuid id;
};

INSTANTIATE_TEST_SUITE_P(Nodes, AnyNodePropertiesTest, testing::Values("Folder", "Layer", "Background"),
                         [](const auto& tested) { return std::string(tested.param); });

TEST_P(AnyNodePropertiesTest, OpacityCycle) {
  expectCycle(*document, [&] {
    document->setOpacity(id, 0.25F);
    expectOneRecord("Opacity", 64);
  });
  document->redo();
  EXPECT_EQ(node.opacity().value(), 0.25F);
}

TEST_P(AnyNodePropertiesTest, ConsecutiveOpacityChangesAreOneUndoStep) {
  for (const float opacity : {0.75F, 0.5F, 0.25F}) document->setOpacity(id, opacity);
  EXPECT_EQ(newRecords(), 1U);
  document->undo();
  EXPECT_EQ(node.opacity().value(), 1.0F);
  document->redo();
  EXPECT_EQ(node.opacity().value(), 0.25F);
}

TEST_P(AnyNodePropertiesTest, BlendModeCycle) {
  expectCycle(*document, [&] {
    document->setBlendMode(id, BlendMode::screen);
    expectOneRecord("Blend Mode", 64);
  });
  document->redo();
  EXPECT_EQ(node.blendMode().value(), BlendMode::screen);
}

TEST_P(AnyNodePropertiesTest, RenameCycle) {
  const auto oldLength = node.name().value().toUtf8().size();
  expectCycle(*document, [&] {
    document->rename(id, QStringLiteral("Größe"));
    expectOneRecord("Rename", 64 + oldLength + 7);
  });
  document->redo();
  EXPECT_EQ(node.name().value(), "Größe");
}

TEST_P(AnyNodePropertiesTest, VisibilityCycle) {
  expectCycle(*document, [&] {
    document->setVisible(id, false);
    expectOneRecord("Visibility", 64);
  });
  document->redo();
  EXPECT_FALSE(node.isVisible().value());
}

TEST_P(AnyNodePropertiesTest, LockCycle) {
  expectCycle(*document, [&] {
    document->setLocked(id, true);
    expectOneRecord("Lock", 64);
  });
  document->redo();
  EXPECT_TRUE(node.isLocked().value());
}

TEST_P(AnyNodePropertiesTest, EqualValuesLeaveNoRecord) {
  document->setOpacity(id, 1.0F);
  document->setBlendMode(id, BlendMode::normal);
  document->rename(id, node.name().value());
  document->setVisible(id, true);
  document->setLocked(id, false);
  expectNothingHappened();
}

TEST_P(AnyNodePropertiesTest, EachPropertyIsReportedOnce) {
  const ChangeRecorder changes(*document);
  document->setOpacity(id, 0.5F);
  document->setBlendMode(id, BlendMode::darken);
  document->rename(id, QStringLiteral("N"));
  document->setVisible(id, false);
  document->setLocked(id, true);
  for (const NodeProperty property : {NodeProperty::opacity, NodeProperty::blendMode, NodeProperty::name,
                                      NodeProperty::isVisible, NodeProperty::isLocked}) {
    EXPECT_EQ(changes.count<change::NodePropertyChanged>(property), 1U);
  }
  for (const auto& change : changes.of<change::NodePropertyChanged>()) EXPECT_EQ(change.nodeID, id);
}

TEST_P(AnyNodePropertiesTest, AnEmptyNameIsIgnored) {
  const QString old = node.name().value();
  document->rename(id, QString());
  EXPECT_EQ(node.name().value(), old);
  expectNothingHappened();
}

TEST_P(AnyNodePropertiesTest, OnlyOpacityChangesAreMerged) {
  document->rename(id, QStringLiteral("A"));
  document->rename(id, QStringLiteral("B"));
  document->setVisible(id, false);
  document->setVisible(id, true);
  document->setLocked(id, true);
  document->setLocked(id, false);
  document->setBlendMode(id, BlendMode::darken);
  document->setBlendMode(id, BlendMode::lighten);
  EXPECT_EQ(newRecords(), 8U);
  for (int i = 0; i < 7; ++i) document->undo();
  EXPECT_EQ(node.name().value(), "A");
}

TEST_F(DocumentPropertiesTest, AnAbsentNodeIsSkipped) {
  const QUuid nobody = QUuid::createUuid();
  document->setOpacity(nobody, 0.5F);
  document->setBlendMode(nobody, BlendMode::darken);
  document->rename(nobody, QStringLiteral("N"));
  document->setVisible(nobody, false);
  document->setLocked(nobody, true);
  expectNothingHappened();
}

TEST_F(DocumentPropertiesTest, OpacityChangesOfDifferentNodesAreNotMerged) {
  document->setOpacity(idOf(*document, "Layer"), 0.5F);
  document->setOpacity(idOf(*document, "Folder"), 0.5F);
  EXPECT_EQ(newRecords(), 2U);
}

}  // namespace
}  // namespace orvanel
