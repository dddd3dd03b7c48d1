#include "model/records/LayerTreeOperations.h"

#include <algorithm>
#include <utility>

#include "model/NodeWalk.h"
#include "model/edit/DocumentEdit.h"
#include "model/edit/EditCost.h"
#include "undo/HeldBytes.h"

namespace orvanel {
namespace {

std::int64_t heldBytesOf(const Layer& layer) {
  const ConstTexture& texture = layer.texture.value();
  const std::shared_ptr<LayerMask>& mask = layer.mask.value();
  return (texture != nullptr ? heldBytes(*texture) : 0) +
         (mask != nullptr ? heldBytes(*mask->maskTexture->texture) : 0);
}

std::int64_t heldBytesOf(const LayerNode& node) {
  std::int64_t bytes = 0;
  forEachNode({node}, [&](const LayerNode& held) {
    if (const std::shared_ptr<Layer> layer = held.layer()) bytes += heldBytesOf(*layer);
  });
  return bytes;
}

/// A step that changes the tree takes no memory of its own, but the tree is flattened again.
UndoableOperation::StepCost costOf(const DocumentPtr& document, const editCost::TreeChange& change) {
  if (document == nullptr) return {};
  return {.bytes = editCost::ofFlatteningTree(*document, change)};
}

/// Of a node that is inserted by one direction of a step and removed by the other.
UndoableOperation::StepCost costToToggle(const DocumentPtr& document, const LayerNode& node, bool isInserted,
                                         const std::optional<TreePosition>& position) {
  if (isInserted) return costOf(document, {.removed = node.id()});
  return costOf(document, {.inserted = node, .position = position.value_or(TreePosition{})});
}

/// "Delete Layer", "Delete Folder", or the bare verb if there is no node.
QString nameByKind(const QString& verb, const std::optional<LayerNode>& node) {
  if (!node) return verb;
  return verb + (node->folder() != nullptr ? QStringLiteral(" Folder") : QStringLiteral(" Layer"));
}

void insertAndSelect(Document& document, const LayerNode& node, const TreePosition& position) {
  DocumentEdit edit(document, editKind::record);
  edit.insertNode(node, position);
  edit.setActiveNode(node.id());
}

void removeAndReselect(Document& document, const QUuid& nodeID, const std::optional<QUuid>& selection) {
  DocumentEdit edit(document, editKind::record);
  if (edit.removeNode(nodeID)) edit.setActiveNode(selection);
}

}  // namespace

AddLayerOperation::AddLayerOperation(const DocumentPtr& document, std::shared_ptr<Layer> layer,
                                     std::optional<QUuid> previousSelection)
    : DocumentOperation(QStringLiteral("Add Layer"), document),
      layer_(std::move(layer)),
      insertPosition_(document->treePosition(layer_->id)),
      previousSelection_(previousSelection) {}

void AddLayerOperation::redo() {
  const DocumentPtr target = document();
  if (target != nullptr && insertPosition_) insertAndSelect(*target, layer_, *insertPosition_);
}

void AddLayerOperation::undo() {
  if (const DocumentPtr target = document()) removeAndReselect(*target, layer_->id, previousSelection_);
}

std::int64_t AddLayerOperation::memoryCost() const {
  return isApplied() ? 0 : heldBytesOf(*layer_);
}

UndoableOperation::StepCost AddLayerOperation::costToStep() const {
  return costToToggle(document(), layer_, isApplied(), insertPosition_);
}

AddFolderOperation::AddFolderOperation(const DocumentPtr& document, std::shared_ptr<LayerFolder> folder,
                                       std::optional<QUuid> previousSelection)
    : DocumentOperation(QStringLiteral("Add Folder"), document),
      folder_(std::move(folder)),
      insertPosition_(document->treePosition(folder_->id)),
      previousSelection_(previousSelection) {}

void AddFolderOperation::redo() {
  const DocumentPtr target = document();
  if (target != nullptr && insertPosition_) insertAndSelect(*target, folder_, *insertPosition_);
}

void AddFolderOperation::undo() {
  if (const DocumentPtr target = document()) removeAndReselect(*target, folder_->id, previousSelection_);
}

UndoableOperation::StepCost AddFolderOperation::costToStep() const {
  return costToToggle(document(), folder_, isApplied(), insertPosition_);
}

RemoveNodeOperation::RemoveNodeOperation(const DocumentPtr& document, const QUuid& nodeID)
    : DocumentOperation(nameByKind(QStringLiteral("Delete"), document->findNode(nodeID)), document),
      removedNode_(document->findNode(nodeID)),
      originalPosition_(document->treePosition(nodeID)),
      previousSelection_(document->selectedNodeID.value()) {}

void RemoveNodeOperation::redo() {
  const DocumentPtr target = document();
  if (target == nullptr || !removedNode_ || !originalPosition_) return;
  DocumentEdit edit(*target, editKind::record);
  if (!edit.removeNode(removedNode_->id())) return;

  const std::optional<LayerNode> parent =
      originalPosition_->parentID ? target->findNode(*originalPosition_->parentID) : std::nullopt;
  const std::shared_ptr<LayerFolder> folder = parent ? parent->folder() : nullptr;
  const LayerNodeList& list = folder != nullptr ? folder->children.value() : target->rootNodes.value();
  if (list.empty()) {
    edit.setActiveNode(previousSelection_);
  } else {
    const std::int64_t index = std::min(originalPosition_->index, std::ssize(list) - 1);
    edit.setActiveNode(list[static_cast<std::size_t>(index)].id());
  }
}

void RemoveNodeOperation::undo() {
  const DocumentPtr target = document();
  if (target == nullptr || !removedNode_ || !originalPosition_) return;
  DocumentEdit edit(*target, editKind::record);
  edit.insertNode(*removedNode_, *originalPosition_);
  edit.setActiveNode(previousSelection_);
}

std::int64_t RemoveNodeOperation::memoryCost() const {
  return removedNode_ && isApplied() ? heldBytesOf(*removedNode_) : 0;
}

UndoableOperation::StepCost RemoveNodeOperation::costToStep() const {
  if (!removedNode_) return {};
  return costToToggle(document(), *removedNode_, !isApplied(), originalPosition_);
}

MoveNodeOperation::MoveNodeOperation(const DocumentPtr& document, const QUuid& nodeID,
                                     const TreePosition& sourcePosition)
    : DocumentOperation(QStringLiteral("Move Layer"), document),
      nodeID_(nodeID),
      sourcePosition_(sourcePosition) {}

void MoveNodeOperation::redo() {
  if (destPosition_) moveTo(*destPosition_);
}

void MoveNodeOperation::undo() {
  moveTo(sourcePosition_);
}

UndoableOperation::StepCost MoveNodeOperation::costToStep() const {
  const DocumentPtr target = document();
  const std::optional<LayerNode> node = target != nullptr ? target->findNode(nodeID_) : std::nullopt;
  if (!node || (!isApplied() && !destPosition_)) return {};
  const TreePosition& position = isApplied() ? sourcePosition_ : *destPosition_;
  return costOf(target, {.removed = nodeID_, .inserted = node, .position = position});
}

void MoveNodeOperation::moveTo(const TreePosition& position) {
  const DocumentPtr target = document();
  if (target == nullptr) return;
  DocumentEdit edit(*target, editKind::record);
  if (edit.moveNode(nodeID_, position)) edit.setActiveNode(nodeID_);
}

DuplicateNodeOperation::DuplicateNodeOperation(const DocumentPtr& document, const QUuid& duplicateID,
                                               std::optional<QUuid> previousSelection)
    : DocumentOperation(nameByKind(QStringLiteral("Duplicate"), document->findNode(duplicateID)), document),
      duplicatedNode_(document->findNode(duplicateID)),
      insertPosition_(document->treePosition(duplicateID)),
      previousSelection_(previousSelection) {}

void DuplicateNodeOperation::redo() {
  const DocumentPtr target = document();
  if (target == nullptr || !duplicatedNode_ || !insertPosition_) return;
  insertAndSelect(*target, *duplicatedNode_, *insertPosition_);
}

void DuplicateNodeOperation::undo() {
  const DocumentPtr target = document();
  if (target == nullptr || !duplicatedNode_) return;
  removeAndReselect(*target, duplicatedNode_->id(), previousSelection_);
}

std::int64_t DuplicateNodeOperation::memoryCost() const {
  return duplicatedNode_ && !isApplied() ? heldBytesOf(*duplicatedNode_) : 0;
}

UndoableOperation::StepCost DuplicateNodeOperation::costToStep() const {
  if (!duplicatedNode_) return {};
  return costToToggle(document(), *duplicatedNode_, isApplied(), insertPosition_);
}

}  // namespace orvanel
