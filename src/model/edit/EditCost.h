// The most memory that an edit can take, asked for before it begins: its own pixels and their flattening.
// Upper bounds in bytes; main thread only.
#pragma once

#include <cstdint>

#include "model/Document.h"

namespace orvanel::editCost {

/// Number of tiles that a kernel rewrites under `weight`, or everywhere without one. A uniform tile under a
/// uniform weight stays uniform.
[[nodiscard]] int tilesRewritten(const Surface& surface, const Surface* weight);
/// All tiles, because pixels may land anywhere; none if the surface holds no data.
[[nodiscard]] int tilesMoved(const Surface& surface);

/// An edit that rewrites this many tiles of the surface.
[[nodiscard]] std::uint64_t ofTiles(const Document& document, const Surface& surface, int tiles);
/// All surfaces recreated for this size and mode.
[[nodiscard]] std::uint64_t ofCanvas(const Document& document, int width, int height, ColorMode mode);
/// Pasting the clipboard as a layer.
[[nodiscard]] std::uint64_t ofPaste(const Document& document, const PixelClipboard& clipboard);
/// Undoing or redoing a record that itself can take `recordBytes`.
[[nodiscard]] std::uint64_t ofStep(const Document& document, std::uint64_t recordBytes);

}  // namespace orvanel::editCost
