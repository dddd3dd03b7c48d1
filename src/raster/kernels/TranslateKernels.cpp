// Shifted copies of layers and masks. Whole tiles that line up are shared; empty ones cost nothing.
#include <algorithm>
#include <optional>

#include "raster/KernelRecords.h"
#include "raster/kernels/Kernels.h"
#include "raster/kernels/TileAccess.h"
#include "raster/kernels/Translate.h"

namespace orvanel::kernels {
namespace {

/// What a tile takes from, wherever that is; nothing where all of it lies outside the source.
std::optional<PixelRect> regionMoved(const Surface& source, const PixelRect& tile, const OffsetParams& move) {
  const std::int64_t left = std::int64_t{tile.x} - move.dx;
  const std::int64_t top = std::int64_t{tile.y} - move.dy;
  if (left >= source.width() || top >= source.height() || left + tile.width <= 0 || top + tile.height <= 0) {
    return std::nullopt;
  }
  return PixelRect{static_cast<int>(left), static_cast<int>(top), tile.width, tile.height};
}

void translateTile(const Surface& source, Surface& destination, int index, const OffsetParams& move) {
  const PixelRect rect = destination.tileRect(index);
  if (const std::optional<std::uint64_t> pixel = uniformPixelMoved(source, rect, move)) {
    return destination.setUniform(index, *pixel);
  }
  const PixelRect region = *regionMoved(source, rect, move);
  const PixelRect inside = region.intersected(source.bounds());
  if (region.x % tileSide == 0 && region.y % tileSide == 0 && inside == region) {
    return destination.setTile(index,
                               source.tile(source.tileIndex(region.x / tileSide, region.y / tileSide)));
  }
  const std::size_t rowBytes =
      static_cast<std::size_t>(tileSide) * static_cast<std::size_t>(source.pixelBytes());
  gatherRegion(source, {region.x, region.y, tileSide, tileSide}, destination.overwriteTile(index), rowBytes);
  destination.collapseIfUniform(index);
}

}  // namespace

std::optional<std::uint64_t> uniformPixelMoved(const Surface& source, const PixelRect& tile,
                                               const OffsetParams& move) {
  const std::optional<PixelRect> region = regionMoved(source, tile, move);
  if (!region) return 0;
  const PixelRect inside = region->intersected(source.bounds());
  const std::optional<std::uint64_t> pixel = uniformPixelOf(source, inside);
  return pixel && (inside == *region || *pixel == 0) ? pixel : std::nullopt;
}

void translatePixels(const Surface& source, Surface& destination, int dx, int dy) {
  if (!fitInFormat(source, destination)) return;
  forEachTile(destination, [&](int index) { translateTile(source, destination, index, {dx, dy}); });
}

void translateMask(const Dispatch& dispatch) {
  const auto& params = inlineRecord<OffsetParams>(dispatch);
  translatePixels(*dispatch.textures[0], *dispatch.textures[1], params.dx, params.dy);
}

void translateLayerPixels(const Dispatch& dispatch) {
  const auto& params = inlineRecord<OffsetParams>(dispatch);
  translatePixels(*dispatch.textures[0], *dispatch.textures[1], params.dx, params.dy);
}

}  // namespace orvanel::kernels
