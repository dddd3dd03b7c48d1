// Where a node sits in a document's tree, as a plain value that outlives the folder it names.
#pragma once

#include <QUuid>
#include <cstdint>
#include <optional>

#include "model/Document.h"

namespace orvanel {

struct TreePosition {
  /// Absent at root level.
  std::optional<QUuid> parentID;
  std::int64_t index = 0;
  friend bool operator==(const TreePosition&, const TreePosition&) = default;
};

/// The node's position now; nothing when it isn't in the tree.
[[nodiscard]] std::optional<TreePosition> treePosition(const Document& document, const QUuid& nodeID);

/// Inserts at the position with its index clamped; at root level when the folder has gone.
void insertNode(Document& document, const LayerNode& node, const TreePosition& position);

}  // namespace orvanel
