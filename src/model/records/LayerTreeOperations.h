// Records of changes to the structure of the node tree. They hold the nodes themselves, so that undo restores
// the same objects, surfaces included, and copies no pixels. Pushed after the change. Owned by the history;
// main thread only.
#pragma once

#include <QUuid>
#include <memory>
#include <optional>

#include "model/TreePosition.h"
#include "model/records/DocumentOperation.h"

namespace orvanel {

/// An inserted layer; its position is read from the tree at creation.
class AddLayerOperation final : public DocumentOperation {
 public:
  AddLayerOperation(const DocumentPtr& document, std::shared_ptr<Layer> layer,
                    std::optional<QUuid> previousSelection);

  void redo() override;
  void undo() override;
  /// The layer's share of its tiles while its insertion is undone; otherwise they are the document's.
  [[nodiscard]] std::int64_t memoryCost() const override;
  [[nodiscard]] StepCost costToStep() const override;

 private:
  std::shared_ptr<Layer> layer_;
  std::optional<TreePosition> insertPosition_;
  std::optional<QUuid> previousSelection_;
};

/// An inserted folder.
class AddFolderOperation final : public DocumentOperation {
 public:
  AddFolderOperation(const DocumentPtr& document, std::shared_ptr<LayerFolder> folder,
                     std::optional<QUuid> previousSelection);

  void redo() override;
  void undo() override;
  [[nodiscard]] std::int64_t memoryCost() const override { return 0; }
  [[nodiscard]] StepCost costToStep() const override;

 private:
  std::shared_ptr<LayerFolder> folder_;
  std::optional<TreePosition> insertPosition_;
  std::optional<QUuid> previousSelection_;
};

/// A removed node; the record is created while the node is still in the tree.
class RemoveNodeOperation final : public DocumentOperation {
 public:
  RemoveNodeOperation(const DocumentPtr& document, const QUuid& nodeID);

  void redo() override;
  void undo() override;
  /// The node's share of all its tiles while it is removed.
  [[nodiscard]] std::int64_t memoryCost() const override;
  [[nodiscard]] StepCost costToStep() const override;

 private:
  std::optional<LayerNode> removedNode_;
  std::optional<TreePosition> originalPosition_;
  std::optional<QUuid> previousSelection_;
};

/// A moved node; the record is created before the move and given the destination after it.
class MoveNodeOperation final : public DocumentOperation {
 public:
  MoveNodeOperation(const DocumentPtr& document, const QUuid& nodeID, const TreePosition& sourcePosition);

  void setDestination(const std::optional<TreePosition>& position) { destPosition_ = position; }

  void redo() override;
  void undo() override;
  [[nodiscard]] std::int64_t memoryCost() const override { return 0; }
  [[nodiscard]] StepCost costToStep() const override;

 private:
  void moveTo(const TreePosition& position);

  QUuid nodeID_;
  TreePosition sourcePosition_;
  std::optional<TreePosition> destPosition_;
};

/// An inserted copy.
class DuplicateNodeOperation final : public DocumentOperation {
 public:
  DuplicateNodeOperation(const DocumentPtr& document, const QUuid& duplicateID,
                         std::optional<QUuid> previousSelection);

  void redo() override;
  void undo() override;
  [[nodiscard]] std::int64_t memoryCost() const override;
  [[nodiscard]] StepCost costToStep() const override;

 private:
  std::optional<LayerNode> duplicatedNode_;
  std::optional<TreePosition> insertPosition_;
  std::optional<QUuid> previousSelection_;
};

}  // namespace orvanel
