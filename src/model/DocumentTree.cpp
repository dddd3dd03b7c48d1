#include <algorithm>
#include <utility>

#include "model/Document.h"
#include "model/records/LayerTreeOperations.h"

namespace orvanel {
namespace {

constexpr QLatin1String copySuffix(" Copy");

std::shared_ptr<LayerMask> copyOfMask(const LayerMask& source, const MetalContext& context) {
  std::shared_ptr<MaskTexture> contents =
      MaskTexture::create(source.maskTexture->width, source.maskTexture->height, context);
  if (contents == nullptr) return nullptr;
  contents->copyContents(*source.maskTexture);
  auto copy = std::make_shared<LayerMask>(QUuid::createUuid(), std::move(contents));
  copy->isEnabled = source.isEnabled.value();
  return copy;
}

std::shared_ptr<Layer> copyOfLayer(const Layer& source, const Document& document) {
  auto copy = std::make_shared<Layer>(source.name.value() + copySuffix);
  copy->opacity = source.opacity.value();
  copy->blendMode = source.blendMode.value();
  copy->isVisible = source.isVisible.value();

  const Texture pixels = document.makeLayerTexture();
  if (const Texture& original = source.texture.value()) {
    copyPixels(*original, original->bounds(), *pixels, 0, 0);
  }
  copy->texture = pixels;

  if (const std::shared_ptr<LayerMask>& mask = source.mask.value()) {
    copy->isMaskLinked = source.isMaskLinked.value();
    if (std::shared_ptr<LayerMask> maskCopy = copyOfMask(*mask, document.context())) {
      copy->mask = std::move(maskCopy);
      copy->maskThumbnailImage = source.maskThumbnailImage.value();
      copy->maskThumbnailDirty = false;
    }
  }
  return copy;
}

/// Copies with fresh ids and no locks, descendants included.
LayerNode copyOfNode(const LayerNode& node, const Document& document) {
  if (const std::shared_ptr<Layer> layer = node.layer()) return copyOfLayer(*layer, document);
  const std::shared_ptr<LayerFolder> source = node.folder();
  LayerNodeList children;
  children.reserve(source->children.value().size());
  for (const LayerNode& child : source->children.value()) children.push_back(copyOfNode(child, document));

  auto copy = std::make_shared<LayerFolder>(source->name.value() + copySuffix);
  copy->children = std::move(children);
  copy->opacity = source->opacity.value();
  copy->blendMode = source->blendMode.value();
  copy->isVisible = source->isVisible.value();
  copy->isExpanded = source->isExpanded.value();
  return copy;
}

/// A new node lies directly above the active one, on top inside an active folder, otherwise on top of all.
TreePosition positionForNewNode(const Document& document) {
  const TreePosition top{.parentID = std::nullopt, .index = std::ssize(document.rootNodes.value())};
  const std::optional<LayerNode> active = document.activeNode();
  if (!active) return top;
  if (const std::shared_ptr<LayerFolder> folder = active->folder()) {
    return {.parentID = folder->id, .index = std::ssize(folder->children.value())};
  }
  TreePosition position = treePosition(document, active->id()).value_or(top);
  ++position.index;
  return position;
}

}  // namespace

std::optional<LayerNode> Document::detachNode(const QUuid& nodeID) {
  const std::optional<NodeLocation> location = parentAndIndex(nodeID);
  if (!location) return std::nullopt;
  QProperty<LayerNodeList>& list = location->folder != nullptr ? location->folder->children : rootNodes;
  LayerNodeList remaining = list.value();
  const auto place = remaining.begin() + location->index;
  LayerNode node = *place;
  remaining.erase(place);
  list = std::move(remaining);
  return node;
}

void Document::insertNode(const LayerNode& node, const std::optional<QUuid>& parentID, int index) {
  const std::optional<LayerNode> parent = parentID ? findNode(*parentID) : std::nullopt;
  const std::shared_ptr<LayerFolder> folder = parent ? parent->folder() : nullptr;
  QProperty<LayerNodeList>& list = folder != nullptr ? folder->children : rootNodes;
  LayerNodeList extended = list.value();
  extended.insert(extended.begin() + std::clamp<std::ptrdiff_t>(index, 0, std::ssize(extended)), node);
  list = std::move(extended);
}

void Document::addLayer(const QString& requestedName) {
  auto layer = std::make_shared<Layer>(uniqueNodeName(requestedName));
  layer->texture = makeLayerTexture();
  addNewLayer(layer);
}

void Document::addNewLayer(const std::shared_ptr<Layer>& layer) {
  const std::optional<QUuid> previousSelection = selectedNodeID.value();
  orvanel::insertNode(*this, layer, positionForNewNode(*this));
  selectedNodeID = layer->id;
  undoStack.push(std::make_shared<AddLayerOperation>(shared_from_this(), layer, previousSelection));
  markEdited();
}

void Document::addFolder(const QString& requestedName) {
  const std::optional<QUuid> previousSelection = selectedNodeID.value();
  auto folder = std::make_shared<LayerFolder>(uniqueNodeName(requestedName));
  orvanel::insertNode(*this, folder, positionForNewNode(*this));
  selectedNodeID = folder->id;
  undoStack.push(std::make_shared<AddFolderOperation>(shared_from_this(), folder, previousSelection));
  markEdited();
}

void Document::removeNode(const QUuid& nodeID) {
  const std::optional<LayerNode> node = findNode(nodeID);
  if (!node) return;
  // Looks at the node itself only: a folder may take the last layer with it.
  if (node->layer() != nullptr && layerCount() < 2) return;

  auto record = std::make_shared<RemoveNodeOperation>(shared_from_this(), nodeID);
  const std::optional<NodeLocation> location = parentAndIndex(nodeID);
  if (!location || !detachNode(nodeID)) return;

  const LayerNodeList& list =
      location->folder != nullptr ? location->folder->children.value() : rootNodes.value();
  if (!list.empty()) {
    const std::size_t index = std::min(static_cast<std::size_t>(location->index), list.size() - 1);
    selectedNodeID = list[index].id();
  } else if (location->folder != nullptr) {
    selectedNodeID = location->folder->id;
  } else {
    selectedNodeID = std::nullopt;
  }
  undoStack.push(std::move(record));
  markEdited();
}

void Document::moveNode(const QUuid& nodeID, const QUuid& toFolder) {
  const std::optional<TreePosition> source = treePosition(*this, nodeID);
  if (!source) return;
  auto record = std::make_shared<MoveNodeOperation>(shared_from_this(), nodeID, *source);
  const std::optional<LayerNode> node = detachNode(nodeID);
  const std::optional<LayerNode> parent = findNode(toFolder);
  const std::shared_ptr<LayerFolder> folder = parent ? parent->folder() : nullptr;
  // Callers name a folder that exists and doesn't lie inside the node: any other id loses the node.
  if (node && folder != nullptr) {
    LayerNodeList children = folder->children.value();
    children.push_back(*node);
    folder->children = std::move(children);
  }
  selectedNodeID = nodeID;
  record->setDestination(treePosition(*this, nodeID));
  undoStack.push(std::move(record));
  markEdited();
}

void Document::moveNode(const QUuid& nodeID, const std::optional<QUuid>& parentID, int index) {
  const std::optional<TreePosition> source = treePosition(*this, nodeID);
  if (!source) return;
  auto record = std::make_shared<MoveNodeOperation>(shared_from_this(), nodeID, *source);
  const std::optional<LayerNode> node = detachNode(nodeID);
  if (!node) return;
  insertNode(*node, parentID, index);
  record->setDestination(treePosition(*this, nodeID));
  undoStack.push(std::move(record));
}

void Document::duplicateNode(const QUuid& nodeID) {
  const std::optional<LayerNode> node = findNode(nodeID);
  const std::optional<TreePosition> source = treePosition(*this, nodeID);
  if (!node || !source) return;
  const std::optional<QUuid> previousSelection = selectedNodeID.value();
  const LayerNode copy = copyOfNode(*node, *this);
  orvanel::insertNode(*this, copy, {.parentID = source->parentID, .index = source->index + 1});
  selectedNodeID = copy.id();
  undoStack.push(std::make_shared<DuplicateNodeOperation>(shared_from_this(), copy.id(), previousSelection));
  markEdited();
}

}  // namespace orvanel
