// Records of a change of one node property: two values and the node's id, at almost no cost. A step does
// nothing while its node is absent. Owned by the history; main thread only.
#pragma once

#include <QUuid>
#include <memory>
#include <utility>
#include <vector>

#include "model/edit/DocumentEdit.h"
#include "model/edit/FlatteningCost.h"
#include "model/records/DocumentOperation.h"

namespace orvanel {

/// Bytes counted for a property record, whatever its objects really take.
inline constexpr std::int64_t propertyRecordCost = 64;

/// `setter` is the edit's operation that writes the property.
template <typename Value, auto setter>
class PropertyChangeOperation : public DocumentOperation {
 public:
  void redo() override { apply(newValue_); }
  void undo() override { apply(oldValue_); }
  [[nodiscard]] std::int64_t memoryCost() const override { return propertyRecordCost; }

 protected:
  PropertyChangeOperation(QString actionName, const DocumentPtr& document, const QUuid& nodeID,
                          Value oldValue, Value newValue)
      : DocumentOperation(std::move(actionName), document),
        nodeID_(nodeID),
        oldValue_(std::move(oldValue)),
        newValue_(std::move(newValue)) {}

  /// For properties that the flattened image depends on.
  [[nodiscard]] StepCost costToFlatten(const editCost::TreeChange& change) const {
    const DocumentPtr target = document();
    if (target == nullptr) return {};
    return {.bytes = editCost::ofFlatteningTree(*target, change)};
  }
  [[nodiscard]] const QUuid& nodeID() const { return nodeID_; }
  [[nodiscard]] const Value& oldValue() const { return oldValue_; }
  [[nodiscard]] const Value& newValue() const { return newValue_; }

 private:
  void apply(const Value& value) {
    const DocumentPtr target = document();
    if (target == nullptr) return;
    DocumentEdit edit(*target, editKind::record);
    if (const std::optional<LayerNode> node = target->findNode(nodeID_)) (edit.*setter)(*node, value);
  }

  QUuid nodeID_;
  Value oldValue_;
  Value newValue_;
};

class OpacityChangeOperation final : public PropertyChangeOperation<float, &DocumentEdit::setOpacity> {
 public:
  OpacityChangeOperation(const DocumentPtr& document, const QUuid& nodeID, float oldValue, float newValue);
  /// Consecutive changes of one node become one record, from the first old value to the last new one.
  [[nodiscard]] std::shared_ptr<UndoableOperation> coalescedWith(
      const UndoableOperation& next) const override;
  [[nodiscard]] StepCost costToStep() const override { return costToFlatten({.blended = nodeID()}); }
};

class BlendModeChangeOperation final
    : public PropertyChangeOperation<BlendMode, &DocumentEdit::setBlendMode> {
 public:
  BlendModeChangeOperation(const DocumentPtr& document, const QUuid& nodeID, BlendMode oldValue,
                           BlendMode newValue);
  [[nodiscard]] StepCost costToStep() const override { return costToFlatten({.blended = nodeID()}); }
};

class NameChangeOperation final : public PropertyChangeOperation<QString, &DocumentEdit::setName> {
 public:
  NameChangeOperation(const DocumentPtr& document, const QUuid& nodeID, const QString& oldValue,
                      const QString& newValue);
  [[nodiscard]] std::int64_t memoryCost() const override;
};

class VisibilityChangeOperation final : public PropertyChangeOperation<bool, &DocumentEdit::setVisible> {
 public:
  VisibilityChangeOperation(const DocumentPtr& document, const QUuid& nodeID, bool oldValue, bool newValue);
  [[nodiscard]] StepCost costToStep() const override {
    return costToFlatten({.visibility = {{nodeID(), isApplied() ? oldValue() : newValue()}}});
  }
};

class LockChangeOperation final : public PropertyChangeOperation<bool, &DocumentEdit::setLocked> {
 public:
  LockChangeOperation(const DocumentPtr& document, const QUuid& nodeID, bool oldValue, bool newValue);
};

/// One gesture that shows or hides many nodes.
class BatchVisibilityChangeOperation final : public DocumentOperation {
 public:
  struct Change {
    QUuid nodeID;
    bool oldValue = true;
  };

  BatchVisibilityChangeOperation(const DocumentPtr& document, std::vector<Change> changes, bool newValue);

  void redo() override;
  void undo() override;
  [[nodiscard]] std::int64_t memoryCost() const override;
  [[nodiscard]] StepCost costToStep() const override;

 private:
  std::vector<Change> changes_;
  bool newValue_;
};

}  // namespace orvanel
