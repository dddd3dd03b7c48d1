// One layer over a destination that already holds pixels. Flattening a tree goes through CompositePlan,
// which keeps the accumulator from layer to layer instead of rounding in between.
#include <tbb/parallel_for.h>

#include <algorithm>
#include <bit>
#include <memory>

#include "raster/CompositePlan.h"
#include "raster/KernelRecords.h"
#include "raster/Regularity.h"
#include "raster/kernels/CompositeStrip.h"
#include "raster/kernels/Kernels.h"
#include "raster/kernels/TileAccess.h"

namespace orvanel::kernels {
namespace {

/// The tile's bytes as kernels read them; `scratch` holds them where the tile itself doesn't.
const std::byte* readableBytes(const Surface& surface, int index, TileBuffer& scratch) {
  const Tile& tile = surface.tile(index);
  if (tile.isUniform()) {
    fillPixels(scratch.bytes().data(), tilePixels, regularPixel(tile.pixel(), surface.format()),
               surface.pixelBytes());
    return scratch.bytes().data();
  }
  if (!tile.has(TileTrait::irregular)) return tile.data();
  regularise(tile.data(), scratch.bytes().data(), tilePixels, surface.format());
  return scratch.bytes().data();
}

}  // namespace

void compositeLayer(const Dispatch& dispatch) {
  const Surface& source = *dispatch.textures[0];
  Surface& destination = *dispatch.textures[1];
  const auto& params = inlineRecord<CompositeParams>(dispatch);
  const Surface* mask = params.hasMask != 0 ? dispatch.textures[2] : nullptr;
  if (params.visible == 0 || !fitInSize(source, destination)) return;
  if (mask != nullptr && !fitInSize(*mask, destination)) return;
  tbb::parallel_for(0, destination.tileCount(), [&](int index) {
    const auto accumulator = std::make_unique<StripAccumulator>();
    TileBuffer sourceScratch(source.tileBytes());
    TileBuffer maskScratch(static_cast<std::size_t>(tilePixels) * 2);
    const std::byte* sourceBytes = readableBytes(source, index, sourceScratch);
    const std::byte* maskBytes = mask != nullptr ? readableBytes(*mask, index, maskScratch) : nullptr;
    std::byte* out = destination.editTile(index);
    for (std::size_t first = 0; first < tilePixels; first += stripPixels) {
      std::byte* strip = out + first * static_cast<std::size_t>(destination.pixelBytes());
      loadStrip(*accumulator, PlaneSet::rgb, destination.format(), strip, stripPixels);
      StripSource part;
      part.format = source.format();
      part.pixels = sourceBytes + first * static_cast<std::size_t>(source.pixelBytes());
      part.mask = maskBytes != nullptr ? reinterpret_cast<const std::uint16_t*>(maskBytes) + first : nullptr;
      part.opacity = std::clamp(params.opacity, 0.0F, 1.0F);
      part.blendMode = static_cast<BlendMode>(params.blendMode);
      compositeStrip(*accumulator, PlaneSet::rgb, part, stripPixels);
      storeStrip(*accumulator, PlaneSet::rgb, destination.format(), strip, stripPixels);
    }
    destination.collapseIfUniform(index);
  });
}

}  // namespace orvanel::kernels
