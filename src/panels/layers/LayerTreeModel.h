// The tree of a document's nodes as the toolkit's views read it: top first, which is the reverse of the
// document's lists. It mirrors nothing but the structure, and follows the document's stream of changes row by
// row. Owned by the layer panel; main thread only.
#pragma once

#include <QAbstractItemModel>
#include <QMimeData>
#include <QUuid>
#include <map>
#include <memory>
#include <optional>
#include <vector>

#include "model/Document.h"

namespace orvanel {

class LayerTreeModel : public QAbstractItemModel {
  Q_OBJECT

 public:
  /// The whole row is drawn in the first column. The others hold what a row can be switched by, for the
  /// keyboard and for screen readers.
  enum Column { nodeColumn, visibilityColumn, linkColumn, lockColumn, columnCountOfAll };

  static constexpr const char* nodeIDMimeType = "com.fennimoor.orvanel.layerNodeID";

  explicit LayerTreeModel(QObject* parent = nullptr);
  ~LayerTreeModel() override;

  /// Null for no document. Documents aren't kept alive.
  void setDocument(const DocumentPtr& document);
  [[nodiscard]] DocumentPtr document() const { return document_.lock(); }
  /// While rows come and go, what views select isn't the user's choice.
  [[nodiscard]] bool isFollowing() const { return isFollowing_; }

  [[nodiscard]] QUuid idOf(const QModelIndex& index) const;
  /// None if the node has left the document.
  [[nodiscard]] std::optional<LayerNode> nodeOf(const QModelIndex& index) const;
  [[nodiscard]] std::shared_ptr<Layer> layerOf(const QModelIndex& index) const;
  [[nodiscard]] QModelIndex indexOf(const QUuid& nodeID, Column column = nodeColumn) const;
  /// The number of folders that the row lies in.
  [[nodiscard]] static int depthOf(const QModelIndex& index);

  /// Whether what is dragged may be dropped on an item (`childIndex` -1), or among its children so that it
  /// becomes the row `childIndex`; an invalid index stands for the whole list.
  [[nodiscard]] bool validateDrop(const QMimeData& dragged, const QModelIndex& item, int childIndex) const;
  /// Moves the dragged node there and makes it active. To be asked only after `validateDrop`.
  bool acceptDrop(const QMimeData& dragged, const QModelIndex& item, int childIndex);
  /// The node being dragged; none unless it is a node of this document.
  [[nodiscard]] std::optional<QUuid> draggedNode(const QMimeData& dragged) const;

  [[nodiscard]] QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
  [[nodiscard]] QModelIndex parent(const QModelIndex& index) const override;
  [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
  [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
  [[nodiscard]] QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
  [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation,
                                    int role = Qt::DisplayRole) const override;
  bool setData(const QModelIndex& index, const QVariant& value, int role = Qt::EditRole) override;
  [[nodiscard]] Qt::ItemFlags flags(const QModelIndex& index) const override;
  [[nodiscard]] QStringList mimeTypes() const override;
  [[nodiscard]] QMimeData* mimeData(const QModelIndexList& indexes) const override;
  [[nodiscard]] Qt::DropActions supportedDropActions() const override { return Qt::MoveAction; }

 Q_SIGNALS:
  /// The rows agree with the document again after this batch.
  void followed(const DocumentChanges& changes);

 private:
  struct Item;

  [[nodiscard]] Item& itemAt(const QModelIndex& index) const;
  [[nodiscard]] Item* find(const QUuid& nodeID) const;
  [[nodiscard]] Item& listAt(const std::optional<QUuid>& folderID) const;
  [[nodiscard]] QModelIndex indexOf(const Item& item, Column column = nodeColumn) const;
  Item& makeItem(const QUuid& nodeID, const std::optional<LayerNode>& node);
  void forget(Item& item);

  void follow(const DocumentChanges& changes);
  void apply(const change::NodeInserted& inserted);
  void apply(const change::NodeRemoved& removed);
  void apply(const change::NodeMoved& moved);
  void apply(const change::NodePropertyChanged& changed);
  void apply(const change::ThumbnailsChanged& changed);
  void touch(const Item& item, Column column, const QVector<int>& roles = {});

  [[nodiscard]] QVariant nodeData(const LayerNode& node, int role) const;
  [[nodiscard]] QString spokenText(const LayerNode& node, int column) const;

  std::weak_ptr<Document> document_;
  ChangeStream::Subscription changes_;
  std::unique_ptr<Item> root_;
  /// All rows; a flat list, so that no walk recurses over what a file nests.
  std::map<QUuid, std::unique_ptr<Item>> items_;
  bool isFollowing_ = false;
};

}  // namespace orvanel
