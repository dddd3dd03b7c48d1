// The most memory by which the flattened image can grow: its own tiles and those of isolating folders, except
// those that it shares with a layer. A part of `editCost`. Main thread only.
#pragma once

#include <QHash>
#include <QUuid>
#include <cstdint>
#include <optional>
#include <vector>

#include "model/Document.h"
#include "model/TreePosition.h"
#include "undo/ChangedTiles.h"

namespace orvanel::editCost {

/// How the tree will differ from the one that stands.
struct TreeChange {
  /// A node that gets another opacity or blend mode, whichever; a folder may become isolating.
  std::optional<QUuid> blended = std::nullopt;
  /// Nodes that are shown or hidden: whether they are visible afterwards.
  QHash<QUuid, bool> visibility = {};
  /// Layers whose mask comes or goes: whether it is seen afterwards.
  QHash<QUuid, bool> masks = {};
  /// A node that leaves its place.
  std::optional<QUuid> removed = std::nullopt;
  /// A node that comes, or comes back, to `position`, counted after the removal.
  std::optional<LayerNode> inserted = std::nullopt;
  TreePosition position = {};
};

/// Tiles whose pixels change.
struct PixelChange {
  ChangedTiles tiles = {};
  /// The layer that they, or those of its mask, belong to; any if it isn't known.
  std::optional<QUuid> layerID = std::nullopt;
};

/// Flattening after these tiles have changed.
[[nodiscard]] std::uint64_t ofFlattening(const Document& document, const PixelChange& change = {});
/// Flattening after the tree or a property of its nodes has changed, which can be seen anywhere.
[[nodiscard]] std::uint64_t ofFlatteningTree(const Document& document, const TreeChange& change);

/// Flattening after tiles of a layer have moved, to places that aren't known yet.
class FlatteningOfMoves {
 public:
  /// `left` are the tiles that pixels leave.
  FlatteningOfMoves(const Document& document, const QUuid& layerID, const std::vector<int>& left);

  /// After pixels have come to so many tiles.
  [[nodiscard]] std::uint64_t bytesFor(std::uint64_t tiles) const;

 private:
  std::uint64_t tileBytes_;
  /// Tiles of memory for what is flattened wherever the pixels come to.
  std::uint64_t certain_ = 0;
  /// What each tile of the canvas adds if pixels come to it, most first.
  std::vector<int> elsewhere_;
};

}  // namespace orvanel::editCost
