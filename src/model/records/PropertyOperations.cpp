#include "model/records/PropertyOperations.h"

#include <QHash>

#include "model/NodeWalk.h"

namespace orvanel {
namespace {

constexpr std::int64_t batchEntryCost = 24;

/// Walks the tree once, however many nodes change.
void setVisibility(Document& document, const QHash<QUuid, bool>& values) {
  DocumentEdit edit(document, editKind::record);
  forEachNode(document.rootNodes.value(), [&](const LayerNode& node) {
    if (const auto value = values.find(node.id()); value != values.end()) edit.setVisible(node, *value);
  });
}

}  // namespace

OpacityChangeOperation::OpacityChangeOperation(const DocumentPtr& document, const QUuid& nodeID,
                                               float oldValue, float newValue)
    : PropertyChangeOperation(QStringLiteral("Opacity"), document, nodeID, oldValue, newValue) {}

std::shared_ptr<UndoableOperation> OpacityChangeOperation::coalescedWith(
    const UndoableOperation& next) const {
  const auto* change = dynamic_cast<const OpacityChangeOperation*>(&next);
  if (change == nullptr || change->nodeID() != nodeID()) return nullptr;
  // Once the document is gone there is nothing left to record, and this record stands for both unchanged.
  const DocumentPtr target = change->document();
  const float last = target != nullptr ? change->newValue() : newValue();
  return std::make_shared<OpacityChangeOperation>(target, nodeID(), oldValue(), last);
}

BlendModeChangeOperation::BlendModeChangeOperation(const DocumentPtr& document, const QUuid& nodeID,
                                                   BlendMode oldValue, BlendMode newValue)
    : PropertyChangeOperation(QStringLiteral("Blend Mode"), document, nodeID, oldValue, newValue) {}

NameChangeOperation::NameChangeOperation(const DocumentPtr& document, const QUuid& nodeID,
                                         const QString& oldValue, const QString& newValue)
    : PropertyChangeOperation(QStringLiteral("Rename"), document, nodeID, oldValue, newValue) {}

std::int64_t NameChangeOperation::memoryCost() const {
  return propertyRecordCost + oldValue().toUtf8().size() + newValue().toUtf8().size();
}

VisibilityChangeOperation::VisibilityChangeOperation(const DocumentPtr& document, const QUuid& nodeID,
                                                     bool oldValue, bool newValue)
    : PropertyChangeOperation(QStringLiteral("Visibility"), document, nodeID, oldValue, newValue) {}

LockChangeOperation::LockChangeOperation(const DocumentPtr& document, const QUuid& nodeID, bool oldValue,
                                         bool newValue)
    : PropertyChangeOperation(QStringLiteral("Lock"), document, nodeID, oldValue, newValue) {}

BatchVisibilityChangeOperation::BatchVisibilityChangeOperation(const DocumentPtr& document,
                                                               std::vector<Change> changes, bool newValue)
    : DocumentOperation(QStringLiteral("Visibility"), document),
      changes_(std::move(changes)),
      newValue_(newValue) {}

void BatchVisibilityChangeOperation::redo() {
  const DocumentPtr target = document();
  if (target == nullptr) return;
  QHash<QUuid, bool> values;
  for (const Change& change : changes_) values.insert(change.nodeID, newValue_);
  setVisibility(*target, values);
}

void BatchVisibilityChangeOperation::undo() {
  const DocumentPtr target = document();
  if (target == nullptr) return;
  QHash<QUuid, bool> values;
  for (const Change& change : changes_) values.insert(change.nodeID, change.oldValue);
  setVisibility(*target, values);
}

UndoableOperation::StepCost BatchVisibilityChangeOperation::costToStep() const {
  const DocumentPtr target = document();
  if (target == nullptr) return {};
  editCost::TreeChange step;
  for (const Change& change : changes_) {
    step.visibility.insert(change.nodeID, isApplied() ? change.oldValue : newValue_);
  }
  return {.bytes = editCost::ofFlatteningTree(*target, step)};
}

std::int64_t BatchVisibilityChangeOperation::memoryCost() const {
  return propertyRecordCost + batchEntryCost * std::ssize(changes_);
}

}  // namespace orvanel
