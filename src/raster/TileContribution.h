// What a layer contributes to one tile of the flattened image, and what kind of tile comes of all
// contributions: the rule by which tiles are flattened, and by which their memory is told beforehand.
// Plain values; any thread.
#pragma once

#include <cstdint>
#include <optional>

#include "raster/Tile.h"
#include "raster/kernels/CompositeStrip.h"

namespace orvanel {

/// A layer over a tile.
struct TileLayer {
  const Tile& pixels;
  PixelFormat format;
  const Tile* mask;  ///< null without one
  float opacity;
  BlendMode blendMode;
};

/// Its part, once uniform masks and transparent tiles are settled.
struct TileContribution {
  kernels::StripSource source;  ///< pixels and mask are those of the whole tile
  const Tile* sourceTile = nullptr;
  const Tile* maskTile = nullptr;
  bool isOpaqueCover = false;  ///< hides all that lies beneath

  [[nodiscard]] bool isUniform() const { return source.pixels == nullptr && source.mask == nullptr; }
};

/// Nothing when the layer leaves the backdrop as it is.
[[nodiscard]] std::optional<TileContribution> contributionOf(const TileLayer& layer);

/// Whether the tile is known to hold nothing that can be seen.
[[nodiscard]] bool isTransparent(const Tile& tile, PixelFormat format);

/// A flattened tile, by the memory that it takes.
enum class TileOutcome : std::uint8_t {
  transparent,  ///< nothing contributes
  uniform,
  shared,  ///< the very tile of an opaque layer
  made,    ///< data of its own
};

/// The outcome with this layer over what lies below, in an image of the format `flattened`.
[[nodiscard]] TileOutcome outcomeOver(TileOutcome below, const TileLayer& layer, PixelFormat flattened);
/// The outcome with something over what lies below that hides none of it for certain.
[[nodiscard]] TileOutcome outcomeOver(TileOutcome below, TileOutcome above);
/// The most that it can be with a layer of these pixels and this mask, whatever its properties are.
[[nodiscard]] TileOutcome mostOver(TileOutcome below, const Tile& pixels, const Tile* mask);

}  // namespace orvanel
