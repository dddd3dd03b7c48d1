// Shifted copies of layers and masks. Whole tiles that line up are shared; empty ones cost nothing.
#include <algorithm>
#include <optional>

#include "raster/KernelRecords.h"
#include "raster/kernels/Kernels.h"
#include "raster/kernels/TileAccess.h"
#include "raster/kernels/Translate.h"

namespace orvanel::kernels {
namespace {

void translateTile(const Surface& source, Surface& destination, int index, int dx, int dy) {
  const PixelRect rect = destination.tileRect(index);
  const std::int64_t left = std::int64_t{rect.x} - dx;
  const std::int64_t top = std::int64_t{rect.y} - dy;
  const bool isOutside =
      left >= source.width() || top >= source.height() || left + rect.width <= 0 || top + rect.height <= 0;
  if (isOutside) return destination.setUniform(index, 0);
  const PixelRect region{static_cast<int>(left), static_cast<int>(top), rect.width, rect.height};
  const PixelRect inside = region.intersected(source.bounds());
  if (const std::optional<std::uint64_t> pixel = uniformPixelOf(source, inside)) {
    if (inside == region || *pixel == 0) return destination.setUniform(index, *pixel);
  }
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

void translatePixels(const Surface& source, Surface& destination, int dx, int dy) {
  if (!fitInFormat(source, destination)) return;
  forEachTile(destination, [&](int index) { translateTile(source, destination, index, dx, dy); });
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
