#include "undo/SnapshotContents.h"

#include <algorithm>
#include <utility>

namespace orvanel {

SnapshotContents::SnapshotContents(const Surface& texture, const PixelRect& region, bool isReady)
    : firstTileX_(region.x / tileSide),
      firstTileY_(region.y / tileSide),
      tilesAcross_((region.x + region.width - 1) / tileSide - firstTileX_ + 1),
      pixelBytes_(texture.pixelBytes()),
      isReady_(isReady) {
  const int lastTileY = (region.y + region.height - 1) / tileSide;
  for (int row = firstTileY_; row <= lastTileY; ++row) {
    for (int column = firstTileX_; column < firstTileX_ + tilesAcross_; ++column) {
      append(texture.tile(texture.tileIndex(column, row)));
    }
  }
  rawCount_ = slots_.size();
}

SnapshotContents::~SnapshotContents() {
  for (const Slot& slot : slots_) {
    if (slot.twin != nullptr) slot.twin->removeHolder();
  }
}

void SnapshotContents::append(const Tile& tile) {
  const bool isData = !tile.isUniform();
  const bool continues =
      !runs_.empty() && (isData ? runs_.back().firstSlot != noSlot
                                : runs_.back().firstSlot == noSlot && runs_.back().pixel == tile.pixel());
  if (!continues) {
    runs_.push_back({.firstTile = tileCount_,
                     .pixel = isData ? 0 : tile.pixel(),
                     .firstSlot = isData ? slots_.size() : noSlot});
  }
  if (isData) slots_.push_back({.raw = SnapshotTile(tile), .twin = nullptr});
  ++tileCount_;
}

const SnapshotContents::Run& SnapshotContents::runOf(int index) const {
  return *std::prev(std::upper_bound(runs_.begin(), runs_.end(), index,
                                     [](int tile, const Run& next) { return tile < next.firstTile; }));
}

bool SnapshotContents::isUnlike(int index, const Tile& standing) const {
  const Run& run = runOf(index);
  if (run.firstSlot == noSlot) return !(standing == Tile::uniform(run.pixel));
  if (standing.isUniform()) return true;
  const Slot& slot = slots_[run.firstSlot + static_cast<std::size_t>(index - run.firstTile)];
  const std::lock_guard guard(lock_);
  const Tile& raw = slot.raw.tile();
  return standing.version() != (raw.isUniform() ? slot.twin->version() : raw.version());
}

Tile SnapshotContents::tileLike(int index, const Tile& standing) {
  const Run& run = runOf(index);
  if (run.firstSlot == noSlot) return Tile::uniform(run.pixel);
  Slot& slot = slots_[run.firstSlot + static_cast<std::size_t>(index - run.firstTile)];
  std::shared_ptr<CompressedTile> twin;
  {
    const std::lock_guard guard(lock_);
    if (!slot.raw.tile().isUniform()) return slot.raw.tile();
    twin = slot.twin;
  }
  const bool isStanding = !standing.isUniform() && standing.version() == twin->version();
  Tile tile = isStanding ? standing : twin->restored();
  const std::lock_guard guard(lock_);
  if (isReady_) keepRaw(slot, tile);
  return tile;
}

void SnapshotContents::keepRaw(Slot& slot, const Tile& tile) {
  if (!slot.raw.tile().isUniform()) return;
  slot.raw = SnapshotTile(tile);
  ++rawCount_;
}

void SnapshotContents::dropRaw(Slot& slot) {
  if (slot.raw.tile().isUniform()) return;
  slot.raw = SnapshotTile();
  --rawCount_;
}

void SnapshotContents::setReady(bool isReady) {
  const std::lock_guard guard(lock_);
  if (std::exchange(isReady_, isReady) == isReady || isReady) return;
  for (Slot& slot : slots_) {
    if (slot.twin != nullptr) dropRaw(slot);
  }
}

bool SnapshotContents::compressNext() {
  if (begun_.load(std::memory_order_relaxed) >= slots_.size()) return false;
  const std::size_t slot = begun_.fetch_add(1);
  if (slot >= slots_.size()) return false;
  compress(slot);
  finished_.fetch_add(1);
  return true;
}

void SnapshotContents::compress(std::size_t index) {
  Slot& slot = slots_[index];
  Tile raw;
  {
    const std::lock_guard guard(lock_);
    raw = slot.raw.tile();
  }
  std::shared_ptr<CompressedTile> twin = CompressedTile::of(raw, pixelBytes_);
  twin->addHolder();
  const std::lock_guard guard(lock_);
  slot.twin = std::move(twin);
  shareGeneration_ = ~std::uint64_t{0};
  if (!isReady_) dropRaw(slot);
}

std::int64_t SnapshotContents::heldBytes() const {
  const std::lock_guard guard(lock_);
  const std::uint64_t generation = CompressedTile::shareGeneration();
  if (shareGeneration_ != generation) {
    twinShares_ = 0;
    for (const Slot& slot : slots_) {
      if (slot.twin != nullptr) twinShares_ += slot.twin->share();
    }
    shareGeneration_ = generation;
  }
  if (rawCount_ == 0) return twinShares_;
  std::int64_t rawShares = 0;
  for (const Slot& slot : slots_) rawShares += slot.raw.heldBytes();
  return twinShares_ + rawShares;
}

}  // namespace orvanel
