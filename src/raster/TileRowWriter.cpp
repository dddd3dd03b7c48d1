#include "raster/TileRowWriter.h"

#include <cassert>
#include <cstring>

#include "raster/UniformRows.h"

namespace orvanel {

TileRowWriter::TileRowWriter(Surface& surface, int tileY)
    : surface_(surface),
      tileY_(tileY),
      pixelBytes_(surface.pixelBytes()),
      tiles_(static_cast<std::size_t>(surface.tilesAcross()), nullptr) {}

/// Turns a tile whose rows so far hold its one value into a data tile.
std::byte* TileRowWriter::beginTile(int index, bool isEdge) {
  if (row_ > 0) return surface_.editTile(index);
  if (!isEdge) return surface_.overwriteTile(index);
  surface_.setUniform(index, 0);
  return surface_.editTile(index);
}

void TileRowWriter::write(const std::byte* rows, int count) {
  const auto step = static_cast<std::size_t>(pixelBytes_);
  const std::size_t stride = static_cast<std::size_t>(surface_.width()) * step;
  for (int tileX = 0; tileX < surface_.tilesAcross(); ++tileX) {
    const int index = surface_.tileIndex(tileX, tileY_);
    const PixelRect whole = surface_.tileRect(index);
    assert(row_ + count <= whole.height);
    const std::byte* in = rows + static_cast<std::size_t>(whole.x) * step;
    std::byte*& tile = tiles_[static_cast<std::size_t>(tileX)];
    if (tile == nullptr) {
      const std::uint64_t pixel = row_ == 0 ? packPixel(in, pixelBytes_) : surface_.tile(index).pixel();
      if (rowsHold(in, stride, whole.width, count, pixel, pixelBytes_)) {
        surface_.setUniform(index, pixel);
        continue;
      }
      tile = beginTile(index, whole.width < tileSide || whole.height < tileSide);
    }
    std::byte* out = tile + static_cast<std::size_t>(row_) * tileSide * step;
    for (int row = 0; row < count; ++row, in += stride, out += tileSide * step)
      std::memcpy(out, in, static_cast<std::size_t>(whole.width) * step);
  }
  row_ += count;
}

}  // namespace orvanel
