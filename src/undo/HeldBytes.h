// Accounts for pixel memory: each byte is counted once, in equal shares of its holders. Surfaces account for
// the tiles they hold; snapshots account for a raw tile once no surface holds it.
// Uniform tiles cost nothing. Pure functions over reference counts; on any thread.
#pragma once

#include <cstdint>

#include "raster/Surface.h"

namespace orvanel {

/// The bytes of the surface's tiles. A tile in n surfaces counts 1/n.
[[nodiscard]] std::int64_t heldBytes(const Surface& surface);

/// A raw tile held by a snapshot, or no tile.
class SnapshotTile {
 public:
  SnapshotTile() = default;
  /// `tile` holds data.
  explicit SnapshotTile(Tile tile);
  SnapshotTile(SnapshotTile&& other) noexcept = default;
  SnapshotTile& operator=(SnapshotTile&& other) noexcept {
    std::swap(tile_, other.tile_);
    return *this;
  }
  SnapshotTile(const SnapshotTile&) = delete;
  SnapshotTile& operator=(const SnapshotTile&) = delete;
  ~SnapshotTile();

  /// Uniform when there is none.
  [[nodiscard]] const Tile& tile() const { return tile_; }
  /// The bytes this snapshot accounts for: none while a surface holds the tile, otherwise 1/n for each of n
  /// snapshots.
  [[nodiscard]] std::int64_t heldBytes() const;

 private:
  Tile tile_;
};

}  // namespace orvanel
