// The most memory by which the flattened image can grow: its own tiles and those of isolating folders. A part
// of `editCost`; every node counts as visible. Main thread only.
#pragma once

#include <QUuid>
#include <cstdint>
#include <optional>

#include "model/Document.h"
#include "undo/ChangedTiles.h"

namespace orvanel::editCost {

/// How the tree will differ from the one that stands.
struct TreeChange {
  /// A folder that becomes isolating.
  std::optional<QUuid> isolated = std::nullopt;
  /// A node that leaves its place.
  std::optional<QUuid> removed = std::nullopt;
  /// A node that comes, or comes back, into the folder `parentID`, or into the root list without one.
  std::optional<LayerNode> inserted = std::nullopt;
  std::optional<QUuid> parentID = std::nullopt;
};

/// Flattening after these tiles of a layer or of its mask have changed.
[[nodiscard]] std::uint64_t ofFlattening(const Document& document, const ChangedTiles& changed = {});
/// Flattening after the tree or a property of its nodes has changed, which can be seen anywhere.
[[nodiscard]] std::uint64_t ofFlatteningTree(const Document& document, const TreeChange& change = {});

}  // namespace orvanel::editCost
