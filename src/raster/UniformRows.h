// Whether pixels are all the same, for those who make uniform tiles of such. Any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "raster/Tile.h"

namespace orvanel {

/// True when `count` rows of `columns` pixels, `stride` bytes apart, all hold `pixel`.
[[nodiscard]] inline bool rowsHold(const std::byte* rows, std::size_t stride, int columns, int count,
                                   std::uint64_t pixel, int pixelBytes) {
  const std::size_t rowBytes = static_cast<std::size_t>(columns) * static_cast<std::size_t>(pixelBytes);
  if (packPixel(rows, pixelBytes) != pixel) return false;
  // Each pixel equals its left neighbour, then each row equals the first: memcmp runs at memory speed.
  const auto step = static_cast<std::size_t>(pixelBytes);
  if (std::memcmp(rows, rows + step, rowBytes - step) != 0) return false;
  for (int row = 1; row < count; ++row) {
    if (std::memcmp(rows, rows + static_cast<std::size_t>(row) * stride, rowBytes) != 0) return false;
  }
  return true;
}

}  // namespace orvanel
