#include "raster/kernels/TileAccess.h"

#include <tbb/parallel_for.h>

#include <cstring>

#include "raster/Regularity.h"

namespace orvanel::kernels {

TileReader::TileReader(const Surface& surface, int index) : held_(surface.tile(index)) {
  const int pixelBytes = surface.pixelBytes();
  if (held_.isUniform()) {
    pixel_ = regularPixel(held_.pixel(), surface.format());
    fillPixels(spread_.data(), tileSide, pixel_, pixelBytes);
    bytes_ = spread_.data();
    return;
  }
  rowBytes_ = static_cast<std::size_t>(tileSide) * static_cast<std::size_t>(pixelBytes);
  bytes_ = held_.data();
  if (!held_.has(TileTrait::irregular)) return;
  regular_.emplace(surface.tileBytes());
  regularise(bytes_, regular_->bytes().data(), tilePixels, surface.format());
  bytes_ = regular_->bytes().data();
}

TileEditor::TileEditor(Surface& surface, int index)
    : rowBytes_(static_cast<std::size_t>(tileSide) * static_cast<std::size_t>(surface.pixelBytes())) {
  const Tile& tile = surface.tile(index);
  const bool inPlace = !tile.isUniform() && !tile.buffer()->isShared() && !tile.has(TileTrait::irregular);
  if (inPlace) {
    target_ = surface.editTile(index);
  } else {
    reader_.emplace(surface, index);
    target_ = surface.overwriteTile(index);
  }
}

void gatherRegion(const Surface& surface, const PixelRect& region, std::byte* destination,
                  std::size_t bytesPerRow) {
  const PixelRect inside = region.intersected(surface.bounds());
  const auto step = static_cast<std::size_t>(surface.pixelBytes());
  const std::size_t rowBytes = static_cast<std::size_t>(region.width) * step;
  if (inside != region) {
    for (int y = 0; y < region.height; ++y) {
      std::memset(destination + static_cast<std::size_t>(y) * bytesPerRow, 0, rowBytes);
    }
  }
  if (inside.isEmpty()) return;
  std::byte* first = destination + static_cast<std::size_t>(inside.y - region.y) * bytesPerRow +
                     static_cast<std::size_t>(inside.x - region.x) * step;
  surface.readRect(inside, first, bytesPerRow);
  if (!isFloatFormat(surface.format())) return;
  bool regular = true;
  for (int tileY = inside.y / tileSide; tileY <= (inside.y + inside.height - 1) / tileSide; ++tileY) {
    for (int tileX = inside.x / tileSide; tileX <= (inside.x + inside.width - 1) / tileSide; ++tileX) {
      const Tile& tile = surface.tile(surface.tileIndex(tileX, tileY));
      regular &= tile.isUniform() ? regularPixel(tile.pixel(), surface.format()) == tile.pixel()
                                  : !tile.has(TileTrait::irregular);
    }
  }
  if (regular) return;
  for (int y = 0; y < inside.height; ++y) {
    std::byte* row = first + static_cast<std::size_t>(y) * bytesPerRow;
    regularise(row, row, static_cast<std::size_t>(inside.width), surface.format());
  }
}

std::optional<std::uint64_t> uniformPixelOf(const Surface& surface, const PixelRect& region) {
  const Tile& first = surface.tile(surface.tileIndex(region.x / tileSide, region.y / tileSide));
  if (!first.isUniform()) return std::nullopt;
  for (int tileY = region.y / tileSide; tileY <= (region.y + region.height - 1) / tileSide; ++tileY) {
    for (int tileX = region.x / tileSide; tileX <= (region.x + region.width - 1) / tileSide; ++tileX) {
      if (!(surface.tile(surface.tileIndex(tileX, tileY)) == first)) return std::nullopt;
    }
  }
  return regularPixel(first.pixel(), surface.format());
}

void forEachTile(const Surface& surface, const std::function<void(int)>& work) {
  tbb::parallel_for(0, surface.tileCount(), work);
}

}  // namespace orvanel::kernels
