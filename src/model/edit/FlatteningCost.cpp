#include "model/edit/FlatteningCost.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "model/DocumentCompositor.h"
#include "model/NodeWalk.h"

namespace orvanel::editCost {
namespace {

/// Data tiles at each place of the canvas.
using Counts = std::vector<int>;

/// Counts the data tiles of the canvas and of the temporaries of isolating folders, were a tree flattened.
class TargetWalk {
 public:
  /// `changed` may be data on any layer.
  TargetWalk(const Document& document, const std::vector<int>& changed, TreeChange change)
      : change_(std::move(change)),
        none_(static_cast<std::size_t>(document.compositedTexture.value()->tileCount())),
        counts_(none_.size()),
        targets_{none_} {
    for (const int tile : changed) none_[static_cast<std::size_t>(tile)] = true;
    targets_.front() = none_;
    const std::optional<LayerNode> parent =
        change_.parentID ? document.findNode(*change_.parentID) : std::nullopt;
    destination_ = parent ? parent->folder() : nullptr;
    walk(document.rootNodes.value(), change_.removed);
    if (destination_ == nullptr) insert();
    finishTarget();
  }

  [[nodiscard]] const Counts& counts() const { return counts_; }

 private:
  void walk(const LayerNodeList& nodes, const std::optional<QUuid>& without) {
    walkNodes(
        nodes,
        [&](const LayerNode& node, const std::shared_ptr<LayerFolder>&, int) {
          if (without == node.id()) return WalkStep::skip;
          if (const auto layer = node.layer()) markData(*layer);
          if (const auto folder = node.folder(); folder != nullptr && isIsolating(*folder)) {
            targets_.push_back(none_);
          }
          return WalkStep::descend;
        },
        [&](const LayerFolder& folder) {
          if (&folder == destination_.get()) insert();
          if (isIsolating(folder)) finishTarget();
        });
  }

  void insert() {
    if (change_.inserted) walk({*change_.inserted}, std::nullopt);
  }

  [[nodiscard]] bool isIsolating(const LayerFolder& folder) const {
    if (folder.isIsolating() || change_.isolated == folder.id) return true;
    // An empty folder isolates nothing yet.
    return &folder == destination_.get() && change_.inserted &&
           !passesThrough(folder.opacity.value(), folder.blendMode.value());
  }

  /// Marks the tiles where the layer makes its target data.
  void markData(const Layer& layer) {
    const ConstTexture pixels = layer.surface(SurfaceKind::pixels);
    const ConstTexture mask = layer.surface(SurfaceKind::mask);
    // A node that is out of the tree may have another size.
    if (pixels == nullptr || static_cast<std::size_t>(pixels->tileCount()) != none_.size()) return;
    for (int index = 0; index < pixels->tileCount(); ++index) {
      const Tile& tile = pixels->tile(index);
      const bool isTransparent = tile.isUniform() && tile.pixel() == 0;
      const bool isMasked =
          mask != nullptr && index < mask->tileCount() && !mask->tile(index).isUniform() && !isTransparent;
      if (!tile.isUniform() || isMasked) targets_.back()[static_cast<std::size_t>(index)] = true;
    }
  }

  void finishTarget() {
    const std::vector<bool> finished = std::move(targets_.back());
    targets_.pop_back();
    for (std::size_t i = 0; i < finished.size(); ++i) {
      if (!finished[i]) continue;
      ++counts_[i];
      if (!targets_.empty()) targets_.back()[i] = true;
    }
  }

  TreeChange change_;
  std::shared_ptr<const LayerFolder> destination_;
  std::vector<bool> none_;
  Counts counts_;
  std::vector<std::vector<bool>> targets_;  ///< from the canvas to the folder that is walked through
};

/// The data tiles that flattening can write in place: a tile that somebody else holds too, be it a layer that
/// covers everything or a save under way, stays theirs.
Counts tilesStanding(const Document& document) {
  const Surface& composite = *document.compositedTexture.value();
  Counts counts(static_cast<std::size_t>(composite.tileCount()));
  const auto count = [&](const Surface& surface) {
    const int common = std::min(surface.tileCount(), composite.tileCount());
    for (int index = 0; index < common; ++index) {
      const Tile& tile = surface.tile(index);
      if (!tile.isUniform() && !tile.buffer()->isShared()) ++counts[static_cast<std::size_t>(index)];
    }
  };
  count(composite);
  for (const ConstTexture& temporary : document.compositor().texturePool()) {
    if (haveSameSize(*temporary, composite)) count(*temporary);
  }
  return counts;
}

}  // namespace

std::uint64_t ofFlattening(const Document& document, const ChangedTiles& changed) {
  const Surface& composite = *document.compositedTexture.value();
  const TargetWalk needed(document, changed.data, {});
  const Counts standing = tilesStanding(document);
  std::vector<bool> isMade(standing.size());
  for (const std::vector<int>& tiles :
       {changed.data, changed.uniform, DocumentCompositor::staleTiles(document)}) {
    for (const int tile : tiles) isMade[static_cast<std::size_t>(tile)] = true;
  }
  std::uint64_t growth = 0;
  for (std::size_t i = 0; i < standing.size(); ++i) {
    if (isMade[i]) growth += static_cast<std::uint64_t>(std::max(needed.counts()[i] - standing[i], 0));
  }
  return growth * composite.tileBytes();
}

std::uint64_t ofFlatteningTree(const Document& document, const TreeChange& change) {
  const TargetWalk needed(document, {}, change);
  const Counts standing = tilesStanding(document);
  std::uint64_t growth = 0;
  for (std::size_t i = 0; i < standing.size(); ++i) {
    growth += static_cast<std::uint64_t>(std::max(needed.counts()[i] - standing[i], 0));
  }
  return growth * document.compositedTexture.value()->tileBytes();
}

}  // namespace orvanel::editCost
