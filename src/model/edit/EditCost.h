// How much memory an edit can take at worst, asked for before it begins: its own pixels, and what flattening
// them takes. Upper bounds in bytes; main thread only.
#pragma once

#include <cstdint>

#include "model/Document.h"

namespace orvanel::editCost {

/// Tiles of the surface that a kernel gives other bytes under `weight`, or everywhere without one. A uniform
/// tile stays one under a uniform weight.
[[nodiscard]] int tilesRewritten(const Surface& surface, const Surface* weight);
/// All tiles, because pixels may land anywhere; none while the surface holds no data.
[[nodiscard]] int tilesMoved(const Surface& surface);

/// An edit that gives so many tiles of the surface other bytes.
[[nodiscard]] std::uint64_t ofTiles(const Document& document, const Surface& surface, int tiles);
/// All surfaces made anew for this size and mode.
[[nodiscard]] std::uint64_t ofCanvas(const Document& document, int width, int height, ColorMode mode);
/// Pixels from the clipboard as a layer.
[[nodiscard]] std::uint64_t ofPaste(const Document& document, const PixelClipboard& clipboard);
/// A step over a record that itself can take `recordBytes`.
[[nodiscard]] std::uint64_t ofStep(const Document& document, std::uint64_t recordBytes);

}  // namespace orvanel::editCost
