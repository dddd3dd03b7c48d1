#include "panels/layers/LayerTreeModel.h"

#include <algorithm>
#include <utility>

#include "model/DisplayText.h"
#include "model/NodeWalk.h"

namespace orvanel {

/// A row: a node and the rows of its children, top first.
struct LayerTreeModel::Item {
  QUuid nodeID;
  std::weak_ptr<Layer> layer;
  std::weak_ptr<LayerFolder> folder;
  bool isFolder = true;
  Item* parent = nullptr;
  int row = 0;
  std::vector<Item*> children = {};

  void insert(int place, Item& child) {
    child.parent = this;
    children.insert(children.begin() + place, &child);
    renumber(place);
  }
  Item& take(int place) {
    Item& child = *children[static_cast<std::size_t>(place)];
    children.erase(children.begin() + place);
    renumber(place);
    return child;
  }
  void renumber(int from) {
    for (int place = from; place < std::ssize(children); ++place) {
      children[static_cast<std::size_t>(place)]->row = place;
    }
  }
};

LayerTreeModel::LayerTreeModel(QObject* parent)
    : QAbstractItemModel(parent), root_(std::make_unique<Item>()) {}

LayerTreeModel::~LayerTreeModel() = default;

void LayerTreeModel::setDocument(const DocumentPtr& document) {
  isFollowing_ = true;
  beginResetModel();
  changes_ = {};
  document_ = document;
  items_.clear();
  root_->children.clear();
  if (document != nullptr) {
    walkNodes(
        document->rootNodes.value(),
        [this](const LayerNode& node, const std::shared_ptr<LayerFolder>& folder, int) {
          Item& parent = folder != nullptr ? *find(folder->id) : *root_;
          Item& item = makeItem(node.id(), node);
          item.parent = &parent;
          parent.children.push_back(&item);
          return WalkStep::descend;
        },
        [](const LayerFolder&) {});
    const auto turnTopFirst = [](Item& item) {
      std::ranges::reverse(item.children);
      item.renumber(0);
    };
    turnTopFirst(*root_);
    for (const auto& [id, item] : items_) turnTopFirst(*item);
    changes_ = document->changes().observe([this](const DocumentChanges& changes) { follow(changes); });
  }
  endResetModel();
  isFollowing_ = false;
}

// Rows and nodes.

LayerTreeModel::Item& LayerTreeModel::itemAt(const QModelIndex& index) const {
  return index.isValid() ? *static_cast<Item*>(index.internalPointer()) : *root_;
}

LayerTreeModel::Item* LayerTreeModel::find(const QUuid& nodeID) const {
  const auto found = items_.find(nodeID);
  return found != items_.end() ? found->second.get() : nullptr;
}

LayerTreeModel::Item& LayerTreeModel::listAt(const std::optional<QUuid>& folderID) const {
  Item* folder = folderID ? find(*folderID) : nullptr;
  return folder != nullptr ? *folder : *root_;
}

LayerTreeModel::Item& LayerTreeModel::makeItem(const QUuid& nodeID, const std::optional<LayerNode>& node) {
  auto item = std::make_unique<Item>();
  item->nodeID = nodeID;
  if (node) {
    item->layer = node->layer();
    item->folder = node->folder();
    item->isFolder = node->folder() != nullptr;
  }
  return *items_.insert_or_assign(nodeID, std::move(item)).first->second;
}

void LayerTreeModel::forget(Item& item) {
  std::vector<Item*> left{&item};
  while (!left.empty()) {
    const Item* next = left.back();
    left.pop_back();
    left.insert(left.end(), next->children.begin(), next->children.end());
    items_.erase(QUuid(next->nodeID));
  }
}

QModelIndex LayerTreeModel::indexOf(const Item& item, Column column) const {
  return &item == root_.get() ? QModelIndex() : createIndex(item.row, column, &item);
}

QModelIndex LayerTreeModel::indexOf(const QUuid& nodeID, Column column) const {
  const Item* item = find(nodeID);
  return item != nullptr ? indexOf(*item, column) : QModelIndex();
}

QUuid LayerTreeModel::idOf(const QModelIndex& index) const {
  return itemAt(index).nodeID;
}

std::optional<LayerNode> LayerTreeModel::nodeOf(const QModelIndex& index) const {
  const Item& item = itemAt(index);
  if (auto layer = item.layer.lock()) return LayerNode(std::move(layer));
  if (auto folder = item.folder.lock()) return LayerNode(std::move(folder));
  return std::nullopt;
}

std::shared_ptr<Layer> LayerTreeModel::layerOf(const QModelIndex& index) const {
  return itemAt(index).layer.lock();
}

int LayerTreeModel::depthOf(const QModelIndex& index) {
  int depth = 0;
  for (QModelIndex folder = index.parent(); folder.isValid(); folder = folder.parent()) ++depth;
  return depth;
}

QModelIndex LayerTreeModel::index(int row, int column, const QModelIndex& parent) const {
  if (!hasIndex(row, column, parent)) return {};
  return createIndex(row, column, itemAt(parent).children[static_cast<std::size_t>(row)]);
}

QModelIndex LayerTreeModel::parent(const QModelIndex& index) const {
  return index.isValid() ? indexOf(*itemAt(index).parent) : QModelIndex();
}

int LayerTreeModel::rowCount(const QModelIndex& parent) const {
  return parent.column() > nodeColumn ? 0 : static_cast<int>(itemAt(parent).children.size());
}

int LayerTreeModel::columnCount(const QModelIndex& /*parent*/) const {
  return columnCountOfAll;
}

// The document's changes.

void LayerTreeModel::follow(const DocumentChanges& changes) {
  isFollowing_ = true;
  for (const DocumentChange& change : changes) {
    std::visit(
        [this](const auto& each) {
          if constexpr (requires { this->apply(each); }) this->apply(each);
        },
        change);
  }
  isFollowing_ = false;
  Q_EMIT followed(changes);
}

void LayerTreeModel::apply(const change::NodeInserted& inserted) {
  const DocumentPtr document = document_.lock();
  Item& list = listAt(inserted.position.parentID);
  const int row = static_cast<int>(std::ssize(list.children) - inserted.position.index);
  beginInsertRows(indexOf(list), row, row);
  // An observer before this one may have removed the node again, which the next batch tells.
  const std::optional<LayerNode> node =
      document != nullptr ? document->findNode(inserted.nodeID) : std::nullopt;
  list.insert(row, makeItem(inserted.nodeID, node));
  endInsertRows();
}

void LayerTreeModel::apply(const change::NodeRemoved& removed) {
  Item& list = listAt(removed.position.parentID);
  const int row = static_cast<int>(std::ssize(list.children) - 1 - removed.position.index);
  beginRemoveRows(indexOf(list), row, row);
  forget(list.take(row));
  endRemoveRows();
}

void LayerTreeModel::apply(const change::NodeMoved& moved) {
  Item& from = listAt(moved.from.parentID);
  Item& to = listAt(moved.to.parentID);
  const int oldRow = static_cast<int>(std::ssize(from.children) - 1 - moved.from.index);
  const std::ptrdiff_t othersThere = std::ssize(to.children) - (&from == &to ? 1 : 0);
  const int newRow = static_cast<int>(othersThere - moved.to.index);
  if (&from == &to && oldRow == newRow) return;
  // Views count the place before the row is taken out.
  const int gap = &from == &to && newRow > oldRow ? newRow + 1 : newRow;
  beginMoveRows(indexOf(from), oldRow, oldRow, indexOf(to), gap);
  to.insert(newRow, from.take(oldRow));
  endMoveRows();
}

void LayerTreeModel::apply(const change::NodePropertyChanged& changed) {
  const Item* item = find(changed.nodeID);
  if (item == nullptr) return;
  switch (changed.property) {
    case NodeProperty::isVisible:
      touch(*item, visibilityColumn);
      return touch(*item, nodeColumn);  // a hidden row's name is pale
    case NodeProperty::isMaskLinked:
      return touch(*item, linkColumn);
    case NodeProperty::isLocked:
      return touch(*item, lockColumn);
    case NodeProperty::name:
    case NodeProperty::isExpanded:
    case NodeProperty::mask:
    case NodeProperty::isMaskEnabled:
    case NodeProperty::isMaskSelected:
      return touch(*item, nodeColumn);
    case NodeProperty::opacity:
    case NodeProperty::blendMode:
      return;  // not shown in rows
  }
}

void LayerTreeModel::apply(const change::ThumbnailsChanged& changed) {
  const Item* item = changed.layerID ? find(*changed.layerID) : nullptr;
  if (item != nullptr) touch(*item, nodeColumn, {Qt::DecorationRole});
}

void LayerTreeModel::touch(const Item& item, Column column, const QVector<int>& roles) {
  const QModelIndex index = indexOf(item, column);
  Q_EMIT dataChanged(index, index, roles);
}

// What rows say and what can be done with them.

QVariant LayerTreeModel::data(const QModelIndex& index, int role) const {
  const std::optional<LayerNode> node = index.isValid() ? nodeOf(index) : std::nullopt;
  if (!node) return {};
  if (role == Qt::AccessibleTextRole) return spokenText(*node, index.column());
  const std::shared_ptr<Layer> layer = node->layer();
  const bool isChecked = role == Qt::CheckStateRole;
  const auto checked = [](bool isOn) { return QVariant(isOn ? Qt::Checked : Qt::Unchecked); };
  switch (index.column()) {
    case nodeColumn:
      return nodeData(*node, role);
    case visibilityColumn:
      return isChecked ? checked(node->isVisible().value()) : QVariant();
    case linkColumn:
      return isChecked && layer != nullptr ? checked(layer->isMaskLinked.value()) : QVariant();
    case lockColumn:
      return isChecked ? checked(node->isLocked().value()) : QVariant();
    default:
      return {};
  }
}

QVariant LayerTreeModel::nodeData(const LayerNode& node, int role) const {
  if (role == Qt::DisplayRole) return displayText(node.name().value());
  if (role == Qt::EditRole) return node.name().value();
  return {};
}

QString LayerTreeModel::spokenText(const LayerNode& node, int column) const {
  const std::shared_ptr<Layer> layer = node.layer();
  const QString name = displayText(node.name().value());
  switch (column) {
    case nodeColumn:
      if (layer == nullptr) return tr("%1, folder").arg(name);
      return layer->editsMask() ? tr("%1, layer, editing its mask").arg(name) : tr("%1, layer").arg(name);
    case visibilityColumn:
      return node.isVisible().value() ? tr("Visible") : tr("Hidden");
    case linkColumn:
      if (layer == nullptr || layer->mask.value() == nullptr) return tr("No mask");
      return layer->isMaskLinked.value() ? tr("Linked") : tr("Unlinked");
    case lockColumn:
      return node.isLocked().value() ? tr("Locked") : tr("Unlocked");
    default:
      return {};
  }
}

QVariant LayerTreeModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal || role != Qt::DisplayRole) return {};
  switch (section) {
    case nodeColumn:
      return tr("Layer");
    case visibilityColumn:
      return tr("Visibility");
    case linkColumn:
      return tr("Mask link");
    case lockColumn:
      return tr("Lock");
    default:
      return {};
  }
}

bool LayerTreeModel::setData(const QModelIndex& index, const QVariant& value, int role) {
  const DocumentPtr document = document_.lock();
  if (document == nullptr || !index.isValid()) return false;
  const QUuid id = idOf(index);
  const bool isOn = value.value<Qt::CheckState>() == Qt::Checked;
  if (index.column() == nodeColumn && role == Qt::EditRole) {
    document->rename(id, value.toString());
  } else if (index.column() == visibilityColumn && role == Qt::CheckStateRole) {
    document->setVisible(id, isOn);
  } else if (index.column() == linkColumn && role == Qt::CheckStateRole) {
    document->setMaskLinked(id, isOn);
  } else if (index.column() == lockColumn && role == Qt::CheckStateRole) {
    document->setLocked(id, isOn);
  } else {
    return false;
  }
  return true;
}

Qt::ItemFlags LayerTreeModel::flags(const QModelIndex& index) const {
  if (!index.isValid()) return {};
  const Item& item = itemAt(index);
  Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable;
  if (!item.isFolder) flags |= Qt::ItemNeverHasChildren;
  if (index.column() == nodeColumn) return flags | Qt::ItemIsEditable | Qt::ItemIsDragEnabled;
  if (index.column() != linkColumn) return flags | Qt::ItemIsUserCheckable;
  const std::shared_ptr<Layer> layer = item.layer.lock();
  return layer != nullptr && layer->mask.value() != nullptr ? flags | Qt::ItemIsUserCheckable
                                                            : Qt::ItemFlags();
}

// Dragging.

QStringList LayerTreeModel::mimeTypes() const {
  return {QString::fromLatin1(nodeIDMimeType)};
}

QMimeData* LayerTreeModel::mimeData(const QModelIndexList& indexes) const {
  if (indexes.isEmpty()) return nullptr;
  auto* data = new QMimeData;  // owned by the caller
  data->setData(QString::fromLatin1(nodeIDMimeType), uuidText(idOf(indexes.front())).toUtf8());
  return data;
}

std::optional<QUuid> LayerTreeModel::draggedNode(const QMimeData& dragged) const {
  const QUuid id = uuidFromText(QString::fromUtf8(dragged.data(QString::fromLatin1(nodeIDMimeType))));
  return find(id) != nullptr ? std::optional(id) : std::nullopt;
}

bool LayerTreeModel::validateDrop(const QMimeData& dragged, const QModelIndex& item, int childIndex) const {
  const std::optional<QUuid> node = draggedNode(dragged);
  if (!node) return false;
  if (!item.isValid() && childIndex < 0) return false;
  for (QModelIndex outer = item; outer.isValid(); outer = outer.parent()) {
    if (idOf(outer) == *node) return false;
  }
  return childIndex >= 0 || itemAt(item).isFolder;
}

bool LayerTreeModel::acceptDrop(const QMimeData& dragged, const QModelIndex& item, int childIndex) {
  const DocumentPtr document = document_.lock();
  const std::optional<QUuid> node = draggedNode(dragged);
  if (document == nullptr || !node) return false;
  const Item& target = itemAt(item).isFolder ? itemAt(item) : *root_;
  const std::optional<QUuid> folder = &target != root_.get() ? std::optional(target.nodeID) : std::nullopt;
  const int count = static_cast<int>(target.children.size());
  const bool isInTarget = find(*node)->parent == &target;
  if (childIndex < 0 && folder) {
    // To the top of the folder, where the node may be already.
    document->placeNode(*node, folder, isInTarget ? count - 1 : count);
    return true;
  }
  const int index = isInTarget ? count - 1 - childIndex : count - childIndex;
  document->placeNode(*node, folder, std::max(index, 0));
  return true;
}

}  // namespace orvanel
