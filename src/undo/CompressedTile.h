// The history's compressed twin of one data tile: made once, shared by every snapshot that holds the tile.
// Made on background threads, read on any.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <span>
#include <vector>

#include "raster/Tile.h"

namespace orvanel {

class CompressedTile : public TileCompanion, public std::enable_shared_from_this<CompressedTile> {
 public:
  /// Returns the existing twin of a data tile, or makes one: LZ4 over byte planes.
  [[nodiscard]] static std::shared_ptr<CompressedTile> of(const Tile& tile, int pixelBytes);

  [[nodiscard]] std::uint64_t version() const { return version_; }
  /// LZ4 over byte planes.
  [[nodiscard]] std::span<const std::byte> compressed() const { return compressed_; }
  [[nodiscard]] int pixelBytes() const { return pixelBytes_; }
  /// Turns such bytes into the pixels of a tile; false for bytes that aren't such.
  [[nodiscard]] static bool decompress(std::span<const std::byte> compressed, std::span<std::byte> pixels,
                                       int pixelBytes);
  /// The tile again: the original bytes if they are still alive, otherwise decompressed ones.
  [[nodiscard]] Tile restored();

  void addHolder() noexcept { changeHolders(1); }
  void removeHolder() noexcept { changeHolders(-1); }
  /// This twin's bytes divided by the number of its holders.
  [[nodiscard]] std::int64_t share() const noexcept { return share_.load(std::memory_order_relaxed); }
  /// Changes whenever the share of any twin in this process may have changed.
  [[nodiscard]] static std::uint64_t shareGeneration() noexcept;

  void bufferDying(const TileBuffer& buffer) noexcept override;

 private:
  CompressedTile(const Tile& tile, int pixelBytes);
  void changeHolders(int change) noexcept;

  const std::uint64_t version_;
  const int pixelBytes_;
  const std::size_t rawBytes_;
  const TileTrait trait_;
  std::vector<std::byte> compressed_;
  std::mutex holdersMutex_;
  int holders_ = 0;
  std::atomic<std::int64_t> share_{0};
  std::mutex livingMutex_;
  TileBuffer* living_;  ///< a buffer with the same bytes; not owned, null once they are changed or freed
};

}  // namespace orvanel
