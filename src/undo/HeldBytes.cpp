#include "undo/HeldBytes.h"

#include <algorithm>
#include <utility>

namespace orvanel {
namespace {

struct Holders {
  std::int64_t snapshots;
  std::int64_t surfaces;
};

Holders holdersOf(const TileBuffer& buffer) {
  const std::int64_t snapshots = buffer.snapshotReferences.load(std::memory_order_relaxed);
  return {.snapshots = snapshots, .surfaces = std::int64_t{buffer.references()} - snapshots};
}

std::int64_t sizeOf(const TileBuffer& buffer) {
  return static_cast<std::int64_t>(buffer.bytes().size());
}

}  // namespace

std::int64_t heldBytes(const Surface& surface) {
  std::int64_t bytes = 0;
  for (int index = 0; index < surface.tileCount(); ++index) {
    const TileBuffer* buffer = surface.tile(index).buffer();
    if (buffer != nullptr) bytes += sizeOf(*buffer) / std::max<std::int64_t>(holdersOf(*buffer).surfaces, 1);
  }
  return bytes;
}

SnapshotTile::SnapshotTile(Tile tile) : tile_(std::move(tile)) {
  tile_.buffer()->snapshotReferences.fetch_add(1, std::memory_order_relaxed);
}

SnapshotTile::~SnapshotTile() {
  if (!tile_.isUniform()) tile_.buffer()->snapshotReferences.fetch_sub(1, std::memory_order_relaxed);
}

std::int64_t SnapshotTile::heldBytes() const {
  if (tile_.isUniform()) return 0;
  const Holders holders = holdersOf(*tile_.buffer());
  return holders.surfaces > 0 ? 0 : sizeOf(*tile_.buffer()) / std::max<std::int64_t>(holders.snapshots, 1);
}

}  // namespace orvanel
