#include "model/edit/FlattenedTiles.h"

#include <algorithm>
#include <utility>

#include "model/DocumentCompositor.h"
#include "model/NodeWalk.h"

namespace orvanel::editCost {
namespace {

std::shared_ptr<LayerFolder> folderOf(const Document& document, const std::optional<QUuid>& folderID) {
  const std::optional<LayerNode> node = folderID ? document.findNode(*folderID) : std::nullopt;
  return node ? node->folder() : nullptr;
}

}  // namespace

FlattenedTiles::FlattenedTiles(const Document& document, const PixelChange& pixels, const TreeChange& tree)
    : document_(document),
      tree_(tree),
      changed_(static_cast<std::size_t>(document.compositedTexture.value()->tileCount())),
      format_(document.compositedTexture.value()->format()),
      isAnyLayer_(!pixels.layerID),
      destination_(folderOf(document, tree.position.parentID)),
      isInsertionPending_(tree.inserted.has_value()),
      counts_(changed_.size()) {
  for (const int tile : pixels.tiles.uniform) changed_[static_cast<std::size_t>(tile)] = TileOutcome::uniform;
  for (const int tile : pixels.tiles.data) changed_[static_cast<std::size_t>(tile)] = TileOutcome::made;
  findPath(pixels.layerID);
  if (tree.removed) {
    const std::optional<TreePosition> position = document.treePosition(*tree.removed);
    source_ = position ? folderOf(document, position->parentID) : nullptr;
  }
  pushTarget(true, true);
  walk(document.rootNodes.value(), false);
  if (destination_ == nullptr && isInsertionPending_) insert();
  finishCanvas();
}

/// The layer counts as visible: an edit that is open on it can be shown later without being asked again.
void FlattenedTiles::findPath(const std::optional<QUuid>& layerID) {
  std::optional<QUuid> id = layerID;
  while (id) {
    path_.insert(*id);
    const std::optional<TreePosition> position = document_.treePosition(*id);
    id = position ? position->parentID : std::nullopt;
  }
}

void FlattenedTiles::walk(const LayerNodeList& nodes, bool isInserted) {
  walkNodes(
      nodes,
      [&](const LayerNode& node, const std::shared_ptr<LayerFolder>& parent, int) {
        return enter(node, parent, isInserted) ? WalkStep::descend : WalkStep::skip;
      },
      [&](const LayerFolder& folder) { leave(folder); });
}

/// False for a node that isn't flattened.
bool FlattenedTiles::enter(const LayerNode& node, const std::shared_ptr<LayerFolder>& parent,
                           bool isInserted) {
  const QUuid id = node.id();
  if (!isInserted && tree_.removed == id) return false;
  if (!isInserted && parent == destination_ && isInsertionPending_ && passed_++ >= tree_.position.index) {
    insert();
  }
  const bool isVisible = tree_.visibility.value(id, node.isVisible().value());
  if (!isVisible && !path_.contains(id)) return false;
  const bool isKnown = isVisible && (areKnown_.empty() || areKnown_.back());
  if (const std::shared_ptr<Layer> layer = node.layer()) {
    composite(*layer, isKnown && tree_.blended != id);
    return true;
  }
  const LayerFolder& folder = *node.folder();
  const bool isOwnImage = isIsolating(folder);
  if (isOwnImage) {
    pushTarget(isAnyLayer_ || path_.contains(id), isKnown && isIsolatingForCertain(folder));
  }
  // Within an image of its own everything is known, whatever becomes of the image.
  areKnown_.push_back(isKnown || isOwnImage);
  return true;
}

void FlattenedTiles::leave(const LayerFolder& folder) {
  if (&folder == destination_.get() && isInsertionPending_) insert();
  areKnown_.pop_back();
  if (isIsolating(folder)) finishFolder();
}

void FlattenedTiles::insert() {
  isInsertionPending_ = false;
  walk({*tree_.inserted}, true);
}

bool FlattenedTiles::isIsolating(const LayerFolder& folder) const {
  if (folder.isIsolating() || tree_.blended == folder.id) return true;
  // An empty folder isolates nothing yet.
  return &folder == destination_.get() && tree_.inserted &&
         !passesThrough(folder.opacity.value(), folder.blendMode.value());
}

/// A folder that may lose its last node doesn't.
bool FlattenedTiles::isIsolatingForCertain(const LayerFolder& folder) const {
  return folder.isIsolating() && tree_.blended != folder.id && &folder != source_.get();
}

void FlattenedTiles::pushTarget(bool isOnPath, bool isCertain) {
  Target target{.tiles = {}, .isOnPath = isOnPath, .isCertain = isCertain};
  if (isOnPath) {
    target.tiles = changed_;
  } else {
    target.tiles.resize(changed_.size());
  }
  targets_.push_back(std::move(target));
}

void FlattenedTiles::composite(const Layer& layer, bool isKnown) {
  const ConstTexture pixels = layer.texture.value();
  const std::shared_ptr<LayerMask> layerMask = layer.mask.value();
  const ConstTexture mask = layerMask != nullptr ? layerMask->maskTexture->texture : nullptr;
  // A node that is out of the tree may have another size.
  if (pixels == nullptr || static_cast<std::size_t>(pixels->tileCount()) != changed_.size()) return;
  const bool hasMask = mask != nullptr && haveSameSize(*mask, *pixels);
  const bool isMaskEnabled = mask != nullptr && tree_.masks.value(layer.id, layerMask->isEnabled.value());
  // Nor is a layer flattened whose mask doesn't fit.
  if (isKnown && isMaskEnabled && !hasMask) return;
  const Above above{.layer = layer,
                    .pixels = *pixels,
                    .mask = hasMask ? mask.get() : nullptr,
                    .isMaskEnabled = isMaskEnabled,
                    .isKnown = isKnown,
                    .mayBeEdited = isAnyLayer_ || path_.contains(layer.id)};
  for (std::size_t i = 0; i < changed_.size(); ++i) {
    targets_.back().tiles[i] = composited(targets_.back().tiles[i], above, i);
  }
}

TileOutcome FlattenedTiles::composited(TileOutcome below, const Above& above, std::size_t place) const {
  const auto index = static_cast<int>(place);
  const Tile& tile = above.pixels.tile(index);
  const Tile* const mask = above.mask != nullptr ? &above.mask->tile(index) : nullptr;
  const bool isChanging = targets_.back().isOnPath && changed_[place] != TileOutcome::transparent;
  if (isChanging && above.mayBeEdited) {
    // Transparency may give way to a colour, which a mask then cuts out.
    const bool isUniform = tile.isUniform() && (mask == nullptr || mask->isUniform());
    return outcomeOver(below, isUniform ? TileOutcome::uniform : TileOutcome::made);
  }
  if (isChanging || !above.isKnown) return mostOver(below, tile, mask);
  const TileLayer over{.pixels = tile,
                       .format = above.pixels.format(),
                       .mask = above.isMaskEnabled ? mask : nullptr,
                       .opacity = above.layer.opacity.value(),
                       .blendMode = above.layer.blendMode.value()};
  return outcomeOver(below, over, format_);
}

void FlattenedTiles::finishFolder() {
  const Target finished = std::move(targets_.back());
  targets_.pop_back();
  (finished.isCertain ? certainTemporaries_ : possibleTemporaries_) += 1;
  for (std::size_t i = 0; i < finished.tiles.size(); ++i) {
    const TileOutcome inner = finished.tiles[i];
    if (inner == TileOutcome::made) (finished.isCertain ? counts_[i].certain : counts_[i].possible) += 1;
    TileOutcome& outcome = targets_.back().tiles[i];
    outcome = outcomeOver(outcome, inner);
  }
}

void FlattenedTiles::finishCanvas() {
  const std::vector<TileOutcome>& tiles = targets_.back().tiles;
  for (std::size_t i = 0; i < tiles.size(); ++i) counts_[i].canvas = tiles[i] == TileOutcome::made ? 1 : 0;
}

/// The data tiles that flattening can write in place: a tile that somebody else holds too, be it a layer that
/// covers everything or a save under way, stays theirs. So does one of a temporary that isn't used any more.
std::vector<FlattenedTiles::Count> FlattenedTiles::standing() const {
  const Surface& composite = *document_.compositedTexture.value();
  std::vector<Count> counts(counts_.size());
  const auto add = [&](const Surface& surface, int Count::*count) {
    for (std::size_t i = 0; i < counts.size(); ++i) {
      const Tile& tile = surface.tile(static_cast<int>(i));
      if (!tile.isUniform() && !tile.buffer()->isShared()) ++(counts[i].*count);
    }
  };
  add(composite, &Count::canvas);
  const std::vector<ConstTexture> pool = document_.compositor().texturePool();
  // Of several that may be used nobody knows which will.
  const int possible = possibleTemporaries_ == 1 ? 1 : 0;
  for (int slot = 0; slot < certainTemporaries_ + possible; ++slot) {
    const auto place = static_cast<std::size_t>(slot);
    if (place >= pool.size()) break;
    const Surface& temporary = *pool[place];
    if (!haveSameSize(temporary, composite) || temporary.format() != composite.format()) break;
    add(temporary, slot < certainTemporaries_ ? &Count::certain : &Count::possible);
  }
  return counts;
}

std::vector<int> FlattenedTiles::growth() const {
  const std::vector<Count> now = standing();
  std::vector<int> growth(counts_.size());
  for (std::size_t i = 0; i < growth.size(); ++i) {
    const int certain = counts_[i].certain - now[i].certain;
    const int possible = std::max(counts_[i].possible - now[i].possible, 0);
    growth[i] = std::max(counts_[i].canvas - now[i].canvas + certain + possible, 0);
  }
  return growth;
}

}  // namespace orvanel::editCost
