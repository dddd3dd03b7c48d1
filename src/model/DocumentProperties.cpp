// The commands on one property of a node.
#include "model/Document.h"
#include "model/records/PropertyOperations.h"

namespace orvanel {
namespace {

/// Sets the property; false when the value is there already.
template <typename Value>
bool assign(QProperty<Value>& property, const Value& value) {
  if (property.value() == value) return false;
  property = value;
  return true;
}

}  // namespace

void Document::setOpacity(const QUuid& nodeID, float opacity) {
  const std::optional<LayerNode> node = findNode(nodeID);
  if (!node || node->opacity().value() == opacity) return;
  const float old = node->opacity().value();
  undoStack.pushOpacityChange(
      std::make_shared<OpacityChangeOperation>(shared_from_this(), nodeID, old, opacity));
  isDirty = true;
}

void Document::setBlendMode(const QUuid& nodeID, BlendMode blendMode) {
  const std::optional<LayerNode> node = findNode(nodeID);
  if (!node || node->blendMode().value() == blendMode) return;
  const BlendMode old = node->blendMode().value();
  undoStack.pushAndRedo(
      std::make_shared<BlendModeChangeOperation>(shared_from_this(), nodeID, old, blendMode));
  isDirty = true;
}

void Document::rename(const QUuid& nodeID, const QString& newName) {
  const std::optional<LayerNode> node = findNode(nodeID);
  if (!node || newName.isEmpty()) return;
  const QString old = node->name().value();
  if (!assign(node->name(), newName)) return;
  undoStack.push(std::make_shared<NameChangeOperation>(shared_from_this(), nodeID, old, newName));
  isDirty = true;
}

void Document::setVisible(const QUuid& nodeID, bool isVisible) {
  const std::optional<LayerNode> node = findNode(nodeID);
  if (!node || !assign(node->isVisible(), isVisible)) return;
  undoStack.push(
      std::make_shared<VisibilityChangeOperation>(shared_from_this(), nodeID, !isVisible, isVisible));
  isDirty = true;
}

void Document::setLocked(const QUuid& nodeID, bool isLocked) {
  const std::optional<LayerNode> node = findNode(nodeID);
  if (!node || !assign(node->isLocked(), isLocked)) return;
  undoStack.push(std::make_shared<LockChangeOperation>(shared_from_this(), nodeID, !isLocked, isLocked));
  isDirty = true;
}

}  // namespace orvanel
