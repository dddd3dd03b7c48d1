// Access to the pixels of one tile as rows of 128 regular pixels, aligned to 64 bytes, whether the tile is
// uniform, shared or irregular. Objects live on a task's stack and belong to its thread.
// Kernels always write whole tiles, so that the padding beyond an edge stays finite.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>

#include "raster/Surface.h"

namespace orvanel::kernels {

/// Reads one tile. The tile is held: editing it meanwhile writes a copy.
class TileReader {
 public:
  TileReader(const Surface& surface, int index);
  TileReader(const TileReader&) = delete;
  TileReader& operator=(const TileReader&) = delete;

  [[nodiscard]] bool isUniform() const { return held_.isUniform(); }
  /// Of a uniform tile: its pixel, regular.
  [[nodiscard]] std::uint64_t pixel() const { return pixel_; }
  [[nodiscard]] const std::byte* row(int y) const { return bytes_ + static_cast<std::size_t>(y) * rowBytes_; }
  [[nodiscard]] const std::uint16_t* halves(int y) const {
    return reinterpret_cast<const std::uint16_t*>(row(y));
  }

 private:
  Tile held_;
  std::uint64_t pixel_ = 0;
  std::optional<TileBuffer> regular_;
  const std::byte* bytes_ = nullptr;
  std::size_t rowBytes_ = 0;  ///< 0 where every row is the same one
  alignas(64) std::array<std::byte, std::size_t{tileSide} * 8> spread_;
};

/// Reads and rewrites one tile, in place where nobody shares it. Every row must be written; the source's
/// and the target's row may be the same memory.
class TileEditor {
 public:
  TileEditor(Surface& surface, int index);
  TileEditor(const TileEditor&) = delete;
  TileEditor& operator=(const TileEditor&) = delete;

  [[nodiscard]] const std::byte* source(int y) const {
    return reader_ ? reader_->row(y) : target_ + static_cast<std::size_t>(y) * rowBytes_;
  }
  [[nodiscard]] std::byte* target(int y) const { return target_ + static_cast<std::size_t>(y) * rowBytes_; }

 private:
  std::optional<TileReader> reader_;
  std::byte* target_ = nullptr;
  std::size_t rowBytes_;
};

/// Copies a region of any position into packed memory, regular; what lies outside the surface is zero.
void gatherRegion(const Surface& surface, const PixelRect& region, std::byte* destination,
                  std::size_t bytesPerRow);

/// The region's pixel value if all its tiles are uniform and equal. The region lies within the surface.
[[nodiscard]] std::optional<std::uint64_t> uniformPixelOf(const Surface& surface, const PixelRect& region);

/// Calls `work` for every tile index of a surface, in parallel.
void forEachTile(const Surface& surface, const std::function<void(int)>& work);

}  // namespace orvanel::kernels
