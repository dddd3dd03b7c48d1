// Commands that change the structure of the tree.
#include <algorithm>
#include <utility>

#include "model/Document.h"
#include "model/NodeWalk.h"
#include "model/ThumbnailManager.h"
#include "model/edit/DocumentEdit.h"
#include "model/edit/EditCost.h"
#include "model/edit/PropertyWriter.h"
#include "model/records/LayerTreeOperations.h"

namespace orvanel {
namespace {

constexpr QLatin1String copySuffix(" Copy");

std::shared_ptr<LayerMask> copyOfMask(const LayerMask& source, const MetalContext& context) {
  std::shared_ptr<MaskTexture> contents =
      MaskTexture::create(source.maskTexture->width, source.maskTexture->height, context);
  if (contents == nullptr) return nullptr;
  contents->copyContents(*source.maskTexture);
  return std::make_shared<LayerMask>(QUuid::createUuid(), std::move(contents), source.isEnabled.value());
}

/// What a copy shares with its source: everything but the identity and the lock.
NodeValues valuesOfCopy(const LayerNode& source) {
  return {.name = source.name().value() + copySuffix,
          .opacity = source.opacity().value(),
          .blendMode = source.blendMode().value(),
          .isVisible = source.isVisible().value()};
}

std::shared_ptr<Layer> copyOfLayer(const LayerNode& node, const Document& document) {
  const Layer& source = *node.layer();
  const Texture pixels = document.makeLayerTexture();
  if (const ConstTexture& original = source.texture.value()) {
    copyPixels(*original, original->bounds(), *pixels, 0, 0);
  }
  const std::shared_ptr<LayerMask>& mask = source.mask.value();
  const auto maskCopy = mask != nullptr ? copyOfMask(*mask, document.context()) : nullptr;
  auto copy = std::make_shared<Layer>(valuesOfCopy(node), pixels, maskCopy);
  if (document.thumbnailManager->isViewed()) {
    PropertyWriter::write(copy->thumbnailImage, ThumbnailGenerator::colorThumbnail(*pixels));
    PropertyWriter::write(copy->thumbnailDirty, false);
  }
  if (mask != nullptr) PropertyWriter::write(copy->isMaskLinked, source.isMaskLinked.value());
  if (maskCopy != nullptr) {
    PropertyWriter::write(copy->maskThumbnailImage, source.maskThumbnailImage.value());
    PropertyWriter::write(copy->maskThumbnailDirty, source.maskThumbnailDirty.value());
  }
  return copy;
}

/// Copies a node and its descendants, unlocked and with new ids.
LayerNode copyOfNode(const LayerNode& node, const Document& document) {
  LayerNodeList copies;
  std::vector<LayerNodeList> outerCopies;
  std::vector<LayerNode> openFolders;
  walkNodes(
      {node},
      [&](const LayerNode& source, const std::shared_ptr<LayerFolder>&, int) {
        if (source.layer() != nullptr) {
          copies.push_back(copyOfLayer(source, document));
        } else {
          openFolders.push_back(source);
          outerCopies.push_back(std::exchange(copies, {}));
        }
        return WalkStep::descend;
      },
      [&](const LayerFolder& source) {
        const LayerNode folder = openFolders.back();
        openFolders.pop_back();
        LayerNodeList children = std::exchange(copies, std::move(outerCopies.back()));
        outerCopies.pop_back();
        copies.push_back(std::make_shared<LayerFolder>(valuesOfCopy(folder), std::move(children),
                                                       source.isExpanded.value()));
      });
  return copies.front();
}

/// A new node goes directly above the active one, to the top of an active folder, or otherwise to the top of
/// the root.
TreePosition positionForNewNode(const Document& document) {
  const TreePosition top{.parentID = std::nullopt, .index = std::ssize(document.rootNodes.value())};
  const std::optional<LayerNode> active = document.activeNode();
  if (!active) return top;
  if (const std::shared_ptr<LayerFolder> folder = active->folder()) {
    return {.parentID = folder->id, .index = std::ssize(folder->children.value())};
  }
  TreePosition position = document.treePosition(active->id()).value_or(top);
  ++position.index;
  return position;
}

/// Whether there is memory for the flattened image with the node, which is in the tree, at that position.
bool admitsMove(DocumentEdit& edit, const Document& document, const QUuid& nodeID,
                const TreePosition& position) {
  const editCost::TreeChange move{
      .removed = nodeID, .inserted = document.findNode(nodeID), .position = position};
  return edit.admits(editCost::ofFlatteningTree(document, move));
}

/// False if the node isn't in the tree, if the position lies inside it, or if there is no memory for it.
bool moveAndRecord(DocumentEdit& edit, Document& document, const QUuid& nodeID,
                   const TreePosition& position) {
  const std::optional<TreePosition> source = document.treePosition(nodeID);
  if (!source || !admitsMove(edit, document, nodeID, position)) return false;
  auto record = std::make_shared<MoveNodeOperation>(document.shared_from_this(), nodeID, *source);
  if (!edit.moveNode(nodeID, position)) return false;
  record->setDestination(document.treePosition(nodeID));
  edit.record(std::move(record));
  return true;
}

}  // namespace

void Document::addLayer(const QString& requestedName) {
  DocumentEdit edit(*this, editKind::addition);
  addNewLayer(edit,
              std::make_shared<Layer>(NodeValues{.name = uniqueNodeName(requestedName)}, makeLayerTexture()));
}

void Document::addNewLayer(DocumentEdit& edit, const std::shared_ptr<Layer>& layer) {
  const std::optional<QUuid> previousSelection = selectedNodeID.value();
  edit.insertNode(layer, positionForNewNode(*this));
  edit.setActiveNode(layer->id);
  edit.makeThumbnail(*layer);
  edit.record(std::make_shared<AddLayerOperation>(shared_from_this(), layer, previousSelection));
}

void Document::addFolder(const QString& requestedName) {
  DocumentEdit edit(*this, editKind::addition);
  const std::optional<QUuid> previousSelection = selectedNodeID.value();
  const auto folder = std::make_shared<LayerFolder>(uniqueNodeName(requestedName));
  edit.insertNode(folder, positionForNewNode(*this));
  edit.setActiveNode(folder->id);
  edit.record(std::make_shared<AddFolderOperation>(shared_from_this(), folder, previousSelection));
}

void Document::removeNode(const QUuid& nodeID) {
  DocumentEdit edit(*this, editKind::contents);
  const std::optional<LayerNode> node = findNode(nodeID);
  const std::optional<NodeLocation> location = parentAndIndex(nodeID);
  if (!node || !location) return;
  // Checks only the node itself: deleting a folder may delete the last layer.
  if (node->layer() != nullptr && layerCount() < 2) return;

  if (!edit.admits(editCost::ofFlatteningTree(*this, {.removed = nodeID}))) return;
  auto record = std::make_shared<RemoveNodeOperation>(shared_from_this(), nodeID);
  edit.removeNode(nodeID);
  const LayerNodeList& list =
      location->folder != nullptr ? location->folder->children.value() : rootNodes.value();
  if (!list.empty()) {
    const std::size_t index = std::min(static_cast<std::size_t>(location->index), list.size() - 1);
    edit.setActiveNode(list[index].id());
  } else {
    edit.setActiveNode(location->folder != nullptr ? std::optional(location->folder->id) : std::nullopt);
  }
  edit.record(std::move(record));
}

void Document::moveNode(const QUuid& nodeID, const QUuid& toFolder) {
  DocumentEdit edit(*this, editKind::addition);
  const std::optional<TreePosition> source = treePosition(nodeID);
  const std::optional<LayerNode> parent = findNode(toFolder);
  const std::shared_ptr<LayerFolder> folder = parent ? parent->folder() : nullptr;
  if (!source || folder == nullptr) return;
  const TreePosition top{.parentID = toFolder, .index = std::ssize(folder->children.value())};
  if (!admitsMove(edit, *this, nodeID, top)) return;
  auto record = std::make_shared<MoveNodeOperation>(shared_from_this(), nodeID, *source);
  if (!edit.moveNode(nodeID, top)) return;
  edit.setActiveNode(nodeID);
  record->setDestination(treePosition(nodeID));
  edit.record(std::move(record));
}

void Document::moveNode(const QUuid& nodeID, const std::optional<QUuid>& parentID, int index) {
  DocumentEdit edit(*this, editKind::order);
  moveAndRecord(edit, *this, nodeID, {.parentID = parentID, .index = index});
}

void Document::placeNode(const QUuid& nodeID, const std::optional<QUuid>& parentID, int index) {
  DocumentEdit edit(*this, editKind::property);
  const std::optional<TreePosition> source = treePosition(nodeID);
  if (!source) return;
  if (source == TreePosition{.parentID = parentID, .index = index}) return selectNode(nodeID);
  if (moveAndRecord(edit, *this, nodeID, {.parentID = parentID, .index = index})) edit.setActiveNode(nodeID);
}

void Document::duplicateNode(const QUuid& nodeID) {
  DocumentEdit edit(*this, editKind::addition);
  const std::optional<LayerNode> node = findNode(nodeID);
  const std::optional<TreePosition> source = treePosition(nodeID);
  if (!node || !source) return;
  const std::optional<QUuid> previousSelection = selectedNodeID.value();
  const TreePosition above{.parentID = source->parentID, .index = source->index + 1};
  if (!edit.admits(editCost::ofFlatteningTree(*this, {.inserted = node, .position = above}))) return;
  const LayerNode copy = copyOfNode(*node, *this);
  edit.insertNode(copy, above);
  edit.setActiveNode(copy.id());
  edit.record(std::make_shared<DuplicateNodeOperation>(shared_from_this(), copy.id(), previousSelection));
}

}  // namespace orvanel
