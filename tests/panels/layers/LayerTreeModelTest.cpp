#include "panels/layers/LayerTreeModel.h"

#include <gtest/gtest.h>

#include <QAbstractItemModelTester>
#include <QMimeData>
#include <QSignalSpy>
#include <random>

#include "model/ModelSupport.h"
#include "model/RandomDocument.h"

namespace orvanel {
namespace {

using namespace test;

class LayerTreeModelTest : public testing::Test {
 protected:
  void SetUp() override { model.setDocument(document); }

  /// The names as the rows show them, top first, each folder followed by its rows in brackets.
  [[nodiscard]] QString rows(const QModelIndex& parent = {}) const {
    QStringList parts;
    for (int row = 0; row < model.rowCount(parent); ++row) {
      const QModelIndex index = model.index(row, 0, parent);
      const bool isFolder = model.nodeOf(index)->folder() != nullptr;
      parts << (isFolder ? index.data(Qt::EditRole).toString() + QChar(u'[') + rows(index) + QChar(u']')
                         : index.data(Qt::EditRole).toString());
    }
    return parts.join(QStringLiteral(", "));
  }
  /// The same from the document.
  static QString expectedRows(const LayerNodeList& nodes) {
    QStringList parts;
    for (const LayerNode& node : nodes) {
      const auto folder = node.folder();
      parts.prepend(folder != nullptr ? node.name().value() + QChar(u'[') +
                                            expectedRows(folder->children.value()) + QChar(u']')
                                      : node.name().value());
    }
    return parts.join(QStringLiteral(", "));
  }
  [[nodiscard]] QModelIndex at(const QString& name) const { return model.indexOf(idOf(*document, name)); }
  [[nodiscard]] std::unique_ptr<QMimeData> dragged(const QString& name) const {
    return std::unique_ptr<QMimeData>(model.mimeData({at(name)}));
  }
  [[nodiscard]] bool validates(const QString& name, const QModelIndex& item, int childIndex) const {
    return model.validateDrop(*dragged(name), item, childIndex);
  }
  bool drop(const QString& name, const QModelIndex& item, int childIndex) {
    return model.acceptDrop(*dragged(name), item, childIndex);
  }

  DocumentPtr document = makeDocument();
  LayerTreeModel model;
  QAbstractItemModelTester tester{&model, QAbstractItemModelTester::FailureReportingMode::Fatal};
};

TEST_F(LayerTreeModelTest, ShowsTheTopmostNodeFirst) {
  document->addFolder("F");
  document->addLayer("a");
  document->addLayer("b");
  EXPECT_EQ(rows(), "F[b, a], Background");
  model.setDocument(document);
  EXPECT_EQ(rows(), "F[b, a], Background");
  EXPECT_EQ(LayerTreeModel::depthOf(at("a")), 1);
  model.setDocument(nullptr);
  EXPECT_EQ(model.rowCount(), 0);
}

TEST_F(LayerTreeModelTest, FollowsTheDocumentRowByRow) {
  QSignalSpy resets(&model, &QAbstractItemModel::modelReset);
  QSignalSpy inserts(&model, &QAbstractItemModel::rowsInserted);
  QSignalSpy removals(&model, &QAbstractItemModel::rowsRemoved);
  QSignalSpy moves(&model, &QAbstractItemModel::rowsMoved);
  document->addFolder("F");
  document->addLayer("a");
  EXPECT_EQ(inserts.count(), 2);
  document->placeNode(idOf(*document, "Background"), idOf(*document, "F"), 0);
  EXPECT_EQ(moves.count(), 1);
  EXPECT_EQ(rows(), "F[a, Background]");
  document->removeNode(idOf(*document, "a"));
  EXPECT_EQ(removals.count(), 1);
  document->undo();
  document->undo();
  EXPECT_EQ(rows(), "F[a], Background");
  EXPECT_EQ(resets.count(), 0);
}

TEST_F(LayerTreeModelTest, AgreesWithTheDocumentAfterAnySteps) {
  std::mt19937 random(20);
  document = randomDocument(ColorMode::rgb8, FolderKinds::all, random);
  model.setDocument(document);
  for (int step = 0; step < 600; ++step) {
    editRandomly(*document, random);
    ASSERT_EQ(rows(), expectedRows(document->rootNodes.value())) << "step " << step;
  }
}

TEST_F(LayerTreeModelTest, AChangeConcernsItsOwnRowAlone) {
  document->addLayer("a");
  document->addLayerMask(document->activeLayer());
  const QUuid id = idOf(*document, "a");
  put(document->activeLayer()->thumbnailDirty, false);
  QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);
  const auto columnsOf = [&](const auto& change) {
    changed.clear();
    change();
    QVector<int> columns;
    for (const QList<QVariant>& signal : changed) {
      EXPECT_EQ(signal.at(0), signal.at(1));
      EXPECT_EQ(model.idOf(signal.at(0).toModelIndex()), id);
      columns << signal.at(0).toModelIndex().column();
    }
    return columns;
  };
  using Columns = QVector<int>;
  EXPECT_EQ(columnsOf([&] { document->rename(id, "b"); }), Columns{LayerTreeModel::nodeColumn});
  EXPECT_EQ(columnsOf([&] { document->setLocked(id, true); }), Columns{LayerTreeModel::lockColumn});
  EXPECT_EQ(columnsOf([&] { document->setMaskLinked(id, false); }), Columns{LayerTreeModel::linkColumn});
  EXPECT_EQ(columnsOf([&] { document->setOpacity(id, 0.5F); }), Columns{}) << "rows don't show the opacity";
  EXPECT_EQ(columnsOf([&] { document->thumbnailManager->markDirty(id); }),
            Columns{LayerTreeModel::nodeColumn});
}

TEST_F(LayerTreeModelTest, CellsSayAndSwitchTheStateOfTheRow) {
  document->addLayer("a");
  document->addLayerMask(document->activeLayer());
  const auto cell = [&](LayerTreeModel::Column column) {
    return model.indexOf(idOf(*document, "a"), column);
  };
  const auto spoken = [&](LayerTreeModel::Column column) {
    return cell(column).data(Qt::AccessibleTextRole).toString();
  };
  EXPECT_EQ(spoken(LayerTreeModel::nodeColumn), "a, layer");
  EXPECT_EQ(spoken(LayerTreeModel::visibilityColumn), "Visible");
  EXPECT_EQ(spoken(LayerTreeModel::linkColumn), "Linked");
  EXPECT_EQ(spoken(LayerTreeModel::lockColumn), "Unlocked");
  for (const auto column :
       {LayerTreeModel::visibilityColumn, LayerTreeModel::linkColumn, LayerTreeModel::lockColumn}) {
    const bool isOn = cell(column).data(Qt::CheckStateRole).value<Qt::CheckState>() == Qt::Checked;
    EXPECT_TRUE(model.setData(cell(column), isOn ? Qt::Unchecked : Qt::Checked, Qt::CheckStateRole));
  }
  document->setMaskSelected(idOf(*document, "a"), true);
  EXPECT_EQ(spoken(LayerTreeModel::nodeColumn), "a, layer, editing its mask");
  EXPECT_EQ(spoken(LayerTreeModel::visibilityColumn), "Hidden");
  EXPECT_EQ(spoken(LayerTreeModel::linkColumn), "Unlinked");
  EXPECT_EQ(spoken(LayerTreeModel::lockColumn), "Locked");
  EXPECT_FALSE(at("Background").siblingAtColumn(LayerTreeModel::linkColumn).flags() & Qt::ItemIsUserCheckable)
      << "without a mask there is nothing to link";
}

TEST_F(LayerTreeModelTest, EachSwitchIsOneRecord) {
  const QModelIndex lock = at("Background").siblingAtColumn(LayerTreeModel::lockColumn);
  model.setData(lock, Qt::Checked, Qt::CheckStateRole);
  EXPECT_EQ(document->undoStack.undoActionName(), "Lock");
  const QModelIndex eye = at("Background").siblingAtColumn(LayerTreeModel::visibilityColumn);
  model.setData(eye, Qt::Unchecked, Qt::CheckStateRole);
  EXPECT_EQ(document->undoStack.undoActionName(), "Visibility");
  EXPECT_EQ(document->undoStack.operations().size(), 2U);
}

TEST_F(LayerTreeModelTest, DoesNotKeepAClosedDocumentAlive) {
  const std::weak_ptr<Document> watched = document;
  const std::weak_ptr<Layer> layer = document->activeLayer();
  document.reset();
  EXPECT_TRUE(watched.expired());
  EXPECT_TRUE(layer.expired());
  EXPECT_FALSE(model.index(0, 0).data().isValid());
}

// Dropping.

TEST_F(LayerTreeModelTest, ADragCarriesTheNodesIdentityAsText) {
  const std::unique_ptr<QMimeData> data = dragged("Background");
  EXPECT_EQ(data->data("com.fennimoor.orvanel.layerNodeID"),
            uuidText(idOf(*document, "Background")).toUtf8());
  EXPECT_EQ(model.draggedNode(*data), idOf(*document, "Background"));
}

TEST_F(LayerTreeModelTest, ADropWithoutANodeOfThisDocumentIsRefused) {
  QMimeData nothing;
  EXPECT_FALSE(model.validateDrop(nothing, {}, 0));
  QMimeData text;
  text.setData(LayerTreeModel::nodeIDMimeType, "not an identity");
  EXPECT_FALSE(model.validateDrop(text, {}, 0));
  EXPECT_FALSE(model.acceptDrop(text, {}, 0));
  QMimeData foreign;
  foreign.setData(LayerTreeModel::nodeIDMimeType, uuidText(QUuid::createUuid()).toUtf8());
  EXPECT_FALSE(model.validateDrop(foreign, {}, 0));
  EXPECT_FALSE(model.acceptDrop(foreign, {}, 0));
}

TEST_F(LayerTreeModelTest, AFolderCannotGoIntoItself) {
  document->addFolder("Outer");
  document->addFolder("Inner");
  document->addLayer("a");
  EXPECT_FALSE(validates("Outer", at("Outer"), -1));
  EXPECT_FALSE(validates("Outer", at("Outer"), 0));
  EXPECT_FALSE(validates("Outer", at("Inner"), -1));
  EXPECT_FALSE(validates("Outer", at("Inner"), 1)) << "at any depth";
  EXPECT_TRUE(validates("Inner", at("Outer"), -1));
}

TEST_F(LayerTreeModelTest, OnlyFoldersTakeADropOnThem) {
  document->addFolder("F");
  document->addLayer("a");
  EXPECT_FALSE(validates("a", at("Background"), -1));
  EXPECT_TRUE(validates("Background", at("F"), -1));
  EXPECT_FALSE(validates("a", {}, -1));
  EXPECT_TRUE(validates("a", {}, 0)) << "between rows";
  EXPECT_TRUE(validates("Background", at("F"), 1));
}

TEST_F(LayerTreeModelTest, ADropOnAFolderPutsTheNodeOnItsTop) {
  document->addFolder("F");
  document->addLayer("a");
  document->setDirty(false);
  EXPECT_TRUE(drop("Background", at("F"), -1));
  EXPECT_EQ(rows(), "F[Background, a]");
  EXPECT_EQ(activeName(*document), "Background");
  EXPECT_TRUE(document->isDirty.value());
  EXPECT_EQ(document->undoStack.undoActionName(), "Move Layer");
}

TEST_F(LayerTreeModelTest, InItsOwnListANodeBecomesTheRowOfTheDrop) {
  document->addLayer("a");
  document->addLayer("b");
  ASSERT_EQ(rows(), "b, a, Background");
  EXPECT_TRUE(drop("b", {}, 2));
  EXPECT_EQ(rows(), "a, Background, b") << "the model's index is 0";
  EXPECT_TRUE(drop("b", {}, 0));
  EXPECT_EQ(rows(), "b, a, Background");
  EXPECT_TRUE(drop("Background", {}, 1));
  EXPECT_EQ(rows(), "b, Background, a");
  EXPECT_TRUE(drop("b", {}, 3));
  EXPECT_EQ(rows(), "Background, a, b") << "a negative index becomes 0";
}

TEST_F(LayerTreeModelTest, FromAnotherListANodeGoesIntoTheGap) {
  document->addFolder("F");
  document->addLayer("a");
  document->addLayer("b");
  document->setDirty(false);
  EXPECT_TRUE(drop("Background", at("F"), 1));
  EXPECT_EQ(rows(), "F[b, Background, a]");
  EXPECT_EQ(activeName(*document), "Background");
  EXPECT_TRUE(document->isDirty.value());
  EXPECT_TRUE(drop("Background", {}, 1));
  EXPECT_EQ(rows(), "F[b, a], Background");
  EXPECT_TRUE(drop("a", {}, 0));
  EXPECT_EQ(rows(), "a, F[b], Background");
}

}  // namespace
}  // namespace orvanel
