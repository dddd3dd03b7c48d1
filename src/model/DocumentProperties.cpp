// Commands that change one property of a node.
#include <set>
#include <utility>

#include "model/Document.h"
#include "model/edit/DocumentEdit.h"
#include "model/edit/EditCost.h"
#include "model/records/PropertyOperations.h"

namespace orvanel {
namespace {

std::shared_ptr<Layer> layerOf(const Document& document, const QUuid& nodeID) {
  const std::optional<LayerNode> node = document.findNode(nodeID);
  return node ? node->layer() : nullptr;
}

}  // namespace

void Document::setOpacity(const QUuid& nodeID, float opacity) {
  DocumentEdit edit(*this, editKind::shownProperty);
  const std::optional<LayerNode> node = findNode(nodeID);
  if (!node || node->opacity().value() == opacity) return;
  if (!edit.admits(editCost::ofFlatteningTree(*this, {.blended = nodeID}))) return;
  edit.recordOpacityChange(
      std::make_shared<OpacityChangeOperation>(shared_from_this(), nodeID, node->opacity().value(), opacity));
}

void Document::setBlendMode(const QUuid& nodeID, BlendMode blendMode) {
  DocumentEdit edit(*this, editKind::property);
  const std::optional<LayerNode> node = findNode(nodeID);
  if (!node || node->blendMode().value() == blendMode) return;
  if (!edit.admits(editCost::ofFlatteningTree(*this, {.blended = nodeID}))) return;
  edit.recordAndRedo(std::make_shared<BlendModeChangeOperation>(shared_from_this(), nodeID,
                                                                node->blendMode().value(), blendMode));
}

void Document::rename(const QUuid& nodeID, const QString& newName) {
  DocumentEdit edit(*this, editKind::property);
  const std::optional<LayerNode> node = findNode(nodeID);
  if (!node || newName.isEmpty() || node->name().value() == newName) return;
  auto record =
      std::make_shared<NameChangeOperation>(shared_from_this(), nodeID, node->name().value(), newName);
  edit.setName(*node, newName);
  edit.record(std::move(record));
}

void Document::setVisible(const QUuid& nodeID, bool isVisible) {
  DocumentEdit edit(*this, editKind::shownProperty);
  const std::optional<LayerNode> node = findNode(nodeID);
  if (!node || node->isVisible().value() == isVisible) return;
  if (!edit.admits(editCost::ofFlatteningTree(*this, {.visibility = {{nodeID, isVisible}}}))) return;
  edit.setVisible(*node, isVisible);
  edit.record(std::make_shared<VisibilityChangeOperation>(shared_from_this(), nodeID, !isVisible, isVisible));
}

void Document::setVisible(const std::vector<QUuid>& nodeIDs, bool isVisible) {
  DocumentEdit edit(*this, editKind::shownProperty);
  std::vector<BatchVisibilityChangeOperation::Change> changes;
  std::vector<LayerNode> nodes;
  editCost::TreeChange change;
  std::set<QUuid> seen;
  for (const QUuid& nodeID : nodeIDs) {
    const std::optional<LayerNode> node = findNode(nodeID);
    if (!node || !seen.insert(nodeID).second) continue;
    nodes.push_back(*node);
    changes.push_back({.nodeID = nodeID, .oldValue = node->isVisible().value()});
    if (changes.back().oldValue != isVisible) change.visibility.insert(nodeID, isVisible);
  }
  if (change.visibility.isEmpty() || !edit.admits(editCost::ofFlatteningTree(*this, change))) return;
  for (const LayerNode& node : nodes) edit.setVisible(node, isVisible);
  edit.record(
      std::make_shared<BatchVisibilityChangeOperation>(shared_from_this(), std::move(changes), isVisible));
}

void Document::setLocked(const QUuid& nodeID, bool isLocked) {
  DocumentEdit edit(*this, editKind::property);
  const std::optional<LayerNode> node = findNode(nodeID);
  if (!node || node->isLocked().value() == isLocked) return;
  edit.setLocked(*node, isLocked);
  edit.record(std::make_shared<LockChangeOperation>(shared_from_this(), nodeID, !isLocked, isLocked));
}

// Without a record.

void Document::selectNode(const std::optional<QUuid>& nodeID) {
  DocumentEdit edit(*this, editKind::state);
  edit.setActiveNode(nodeID);
}

void Document::setExpanded(const QUuid& folderID, bool isExpanded) {
  DocumentEdit edit(*this, editKind::state);
  const std::optional<LayerNode> node = findNode(folderID);
  if (const auto folder = node ? node->folder() : nullptr) edit.setExpanded(*folder, isExpanded);
}

void Document::setMaskSelected(const QUuid& layerID, bool isMaskSelected) {
  DocumentEdit edit(*this, editKind::state);
  if (const auto layer = layerOf(*this, layerID)) edit.setMaskSelected(*layer, isMaskSelected);
}

void Document::setMaskLinked(const QUuid& layerID, bool isMaskLinked) {
  DocumentEdit edit(*this, editKind::state);
  if (const auto layer = layerOf(*this, layerID)) edit.setMaskLinked(*layer, isMaskLinked);
}

void Document::setMaskEnabled(const QUuid& layerID, bool isEnabled) {
  DocumentEdit edit(*this, editKind::property);
  const std::shared_ptr<Layer> layer = layerOf(*this, layerID);
  const std::shared_ptr<LayerMask> mask = layer != nullptr ? layer->mask.value() : nullptr;
  if (mask == nullptr || mask->isEnabled.value() == isEnabled) return;
  if (!edit.admits(editCost::ofFlatteningTree(*this, {.masks = {{layerID, isEnabled}}}))) return;
  edit.setMaskEnabled(*layer, isEnabled);
}

}  // namespace orvanel
