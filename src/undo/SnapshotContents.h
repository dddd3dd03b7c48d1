// The tiles of a snapshot, shared with the background work that compresses them. Uniform tiles are kept as
// runs, data tiles raw at first and then as compressed twins. Thread-safe.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

#include "raster/Surface.h"
#include "undo/CompressedTile.h"
#include "undo/HeldBytes.h"

namespace orvanel {

class SnapshotContents {
 public:
  /// Shares the tiles under `region`. When ready, raw tiles are kept beside their twins.
  SnapshotContents(const Surface& texture, const PixelRect& region, bool isReady);
  ~SnapshotContents();
  SnapshotContents(const SnapshotContents&) = delete;
  SnapshotContents& operator=(const SnapshotContents&) = delete;

  [[nodiscard]] int tileCount() const { return tileCount_; }
  /// The place of a tile in the grid of the surface, in tiles.
  [[nodiscard]] int tileX(int index) const { return firstTileX_ + index % tilesAcross_; }
  [[nodiscard]] int tileY(int index) const { return firstTileY_ + index / tilesAcross_; }
  /// The tile at a place. One that equals `standing` is returned as `standing` without decompressing.
  [[nodiscard]] Tile tileLike(int index, const Tile& standing);
  [[nodiscard]] bool isData(int index) const { return runOf(index).firstSlot != noSlot; }
  /// Of a tile that isn't data.
  [[nodiscard]] std::uint64_t pixel(int index) const { return runOf(index).pixel; }
  /// Whether the tile at a place is another than `standing`.
  [[nodiscard]] bool isUnlike(int index, const Tile& standing) const;

  void setReady(bool isReady);

  [[nodiscard]] std::size_t dataTileCount() const { return slots_.size(); }
  /// Compresses the next data tile that nobody has begun yet; false when there is none.
  bool compressNext();
  [[nodiscard]] bool isCompressed() const { return finished_.load() == slots_.size(); }

  /// The bytes that exist because of this snapshot: its shares of compressed twins and of raw tiles.
  [[nodiscard]] std::int64_t heldBytes() const;

 private:
  /// Tiles from `firstTile` up to the next run: all uniform with `pixel`, or data in consecutive slots.
  struct Run {
    int firstTile;
    std::uint64_t pixel;
    std::size_t firstSlot;  ///< `noSlot` for uniform tiles
  };
  struct Slot {
    SnapshotTile raw;
    std::shared_ptr<CompressedTile> twin;
  };
  static constexpr std::size_t noSlot = ~std::size_t{0};

  void append(const Tile& tile);
  [[nodiscard]] const Run& runOf(int index) const;
  void compress(std::size_t index);
  void keepRaw(Slot& slot, const Tile& tile);
  void dropRaw(Slot& slot);

  int firstTileX_;
  int firstTileY_;
  int tilesAcross_;
  int pixelBytes_;
  int tileCount_ = 0;
  std::vector<Run> runs_;
  std::atomic<std::size_t> begun_{0};
  std::atomic<std::size_t> finished_{0};

  mutable std::mutex lock_;  ///< guards what follows
  std::vector<Slot> slots_;  ///< their number never changes
  bool isReady_;
  std::size_t rawCount_ = 0;
  mutable std::int64_t twinShares_ = 0;  ///< as of `shareGeneration_`
  mutable std::uint64_t shareGeneration_ = ~std::uint64_t{0};
};

}  // namespace orvanel
