// Records of changes to the shape of the node tree. They hold the nodes themselves, so that undo puts the
// same object back, surfaces and all, and copies no pixels. Pushed after the change has been made.
// Owned by the history; main thread only.
#pragma once

#include <QUuid>
#include <memory>
#include <optional>

#include "model/TreePosition.h"
#include "model/records/DocumentOperation.h"

namespace orvanel {

/// A layer that has been inserted; its place is read from the tree at creation.
class AddLayerOperation final : public DocumentOperation {
 public:
  AddLayerOperation(const DocumentPtr& document, std::shared_ptr<Layer> layer,
                    std::optional<QUuid> previousSelection);

  void redo() override;
  void undo() override;
  /// The layer's share of its tiles while the layer is undone; until then they are the document's.
  [[nodiscard]] std::int64_t memoryCost() const override;

 private:
  std::shared_ptr<Layer> layer_;
  std::optional<TreePosition> insertPosition_;
  std::optional<QUuid> previousSelection_;
};

/// A folder that has been inserted.
class AddFolderOperation final : public DocumentOperation {
 public:
  AddFolderOperation(const DocumentPtr& document, std::shared_ptr<LayerFolder> folder,
                     std::optional<QUuid> previousSelection);

  void redo() override;
  void undo() override;
  [[nodiscard]] std::int64_t memoryCost() const override { return 0; }

 private:
  std::shared_ptr<LayerFolder> folder_;
  std::optional<TreePosition> insertPosition_;
  std::optional<QUuid> previousSelection_;
};

/// A node that is about to be removed: created while it still stands in the tree.
class RemoveNodeOperation final : public DocumentOperation {
 public:
  RemoveNodeOperation(const DocumentPtr& document, const QUuid& nodeID);

  void redo() override;
  void undo() override;
  /// The node's share of all tiles in it while it is removed.
  [[nodiscard]] std::int64_t memoryCost() const override;

 private:
  std::optional<LayerNode> removedNode_;
  std::optional<TreePosition> originalPosition_;
  std::optional<QUuid> previousSelection_;
};

/// A node that changes its place: created before the move, told its destination after it.
class MoveNodeOperation final : public DocumentOperation {
 public:
  MoveNodeOperation(const DocumentPtr& document, const QUuid& nodeID, const TreePosition& sourcePosition);

  void setDestination(const std::optional<TreePosition>& position) { destPosition_ = position; }

  void redo() override;
  void undo() override;
  [[nodiscard]] std::int64_t memoryCost() const override { return 0; }

 private:
  void moveTo(const TreePosition& position);

  QUuid nodeID_;
  TreePosition sourcePosition_;
  std::optional<TreePosition> destPosition_;
};

/// A copy that has been inserted.
class DuplicateNodeOperation final : public DocumentOperation {
 public:
  DuplicateNodeOperation(const DocumentPtr& document, const QUuid& duplicateID,
                         std::optional<QUuid> previousSelection);

  void redo() override;
  void undo() override;
  [[nodiscard]] std::int64_t memoryCost() const override;

 private:
  std::optional<LayerNode> duplicatedNode_;
  std::optional<TreePosition> insertPosition_;
  std::optional<QUuid> previousSelection_;
};

}  // namespace orvanel
