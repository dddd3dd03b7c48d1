#include "raster/TileContribution.h"

#include <algorithm>

#include "raster/HalfFloat.h"
#include "raster/Regularity.h"
#include "raster/kernels/PixelAccess.h"

namespace orvanel {

std::optional<TileContribution> contributionOf(const TileLayer& layer) {
  TileContribution part;
  part.sourceTile = &layer.pixels;
  part.source.format = layer.format;
  part.source.opacity = std::clamp(layer.opacity, 0.0F, 1.0F);
  part.source.blendMode = layer.blendMode;
  if (layer.mask != nullptr && layer.mask->isUniform()) {
    part.source.uniformMask = static_cast<std::uint16_t>(regularPixel(layer.mask->pixel(), maskPixelFormat));
    if (part.source.uniformMask == 0) return std::nullopt;
  } else if (layer.mask != nullptr) {
    part.maskTile = layer.mask;
    part.source.mask = reinterpret_cast<const std::uint16_t*>(layer.mask->data());
  }
  if (!(part.source.opacity > 0.0F)) return std::nullopt;
  bool isOpaque = layer.pixels.has(TileTrait::opaque);
  if (layer.pixels.isUniform()) {
    part.source.uniformPixel = regularPixel(layer.pixels.pixel(), layer.format);
    const float alpha = kernels::colorOfPixel(part.source.uniformPixel, layer.format)[3];
    if (alpha == 0.0F) return std::nullopt;
    isOpaque = alpha == 1.0F;
  } else {
    part.source.pixels = layer.pixels.data();
  }
  part.isOpaqueCover = isOpaque && part.maskTile == nullptr && part.source.uniformMask == halfOne &&
                       part.source.opacity >= 1.0F && part.source.blendMode == BlendMode::normal;
  return part;
}

bool isTransparent(const Tile& tile, PixelFormat format) {
  if (!tile.isUniform()) return false;
  return tile.pixel() == 0 || kernels::colorOfPixel(regularPixel(tile.pixel(), format), format)[3] == 0.0F;
}

TileOutcome outcomeOver(TileOutcome below, const TileLayer& layer, PixelFormat flattened) {
  // By far the most frequent.
  if (layer.pixels.isUniform() && layer.pixels.pixel() == 0) return below;
  const std::optional<TileContribution> part = contributionOf(layer);
  if (!part) return below;
  if (!part->isOpaqueCover)
    return outcomeOver(below, part->isUniform() ? TileOutcome::uniform : TileOutcome::made);
  if (part->isUniform()) return TileOutcome::uniform;
  return part->source.format == flattened ? TileOutcome::shared : TileOutcome::made;
}

TileOutcome outcomeOver(TileOutcome below, TileOutcome above) {
  if (above == TileOutcome::transparent) return below;
  const bool isMade = above >= TileOutcome::shared || below >= TileOutcome::shared;
  return isMade ? TileOutcome::made : TileOutcome::uniform;
}

TileOutcome mostOver(TileOutcome below, const Tile& pixels, const Tile* mask) {
  if (pixels.isUniform() && pixels.pixel() == 0) return below;
  const bool isUniform = pixels.isUniform() && (mask == nullptr || mask->isUniform());
  return outcomeOver(below, isUniform ? TileOutcome::uniform : TileOutcome::made);
}

}  // namespace orvanel
