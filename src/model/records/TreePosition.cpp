#include "model/records/TreePosition.h"

#include <algorithm>
#include <limits>

namespace orvanel {

std::optional<TreePosition> treePosition(const Document& document, const QUuid& nodeID) {
  const std::optional<Document::NodeLocation> location = document.parentAndIndex(nodeID);
  if (!location) return std::nullopt;
  TreePosition position{.parentID = std::nullopt, .index = location->index};
  if (location->folder != nullptr) position.parentID = location->folder->id;
  return position;
}

void insertNode(Document& document, const LayerNode& node, const TreePosition& position) {
  const std::int64_t index = std::clamp<std::int64_t>(position.index, 0, std::numeric_limits<int>::max());
  document.insertNode(node, position.parentID, static_cast<int>(index));
}

}  // namespace orvanel
