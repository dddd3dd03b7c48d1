// The most memory that an edit can take, asked for before it begins: its own pixels and the growth of the
// flattened image. Upper bounds in bytes, in which every node counts as visible. Main thread only.
#pragma once

#include <cstdint>

#include "model/Document.h"
#include "model/edit/FlatteningCost.h"

namespace orvanel::editCost {

// Tiles, in ascending order. Transparent ones that stay so aren't among them.

/// The tiles that a kernel rewrites under `weight`, or everywhere without one. A uniform tile under a uniform
/// weight stays uniform, and one of a layer that is transparent keeps its alpha.
[[nodiscard]] ChangedTiles tilesRewritten(const Surface& surface, const Surface* weight);
/// As `tilesRewritten`, for a kernel that at full weight makes a tile uniform or leaves it as it is.
[[nodiscard]] ChangedTiles tilesBlended(const Surface& surface, const Surface& weight);
/// For a mask that is multiplied in: a full one leaves a tile as it is, an empty one clears it.
[[nodiscard]] ChangedTiles tilesMasked(const Surface& surface, const Surface& mask);
/// All tiles, each made uniform.
[[nodiscard]] ChangedTiles tilesFilled(const Surface& surface);
/// As `tilesFilled`, with transparency.
[[nodiscard]] ChangedTiles tilesCleared(const Surface& surface);
/// The tiles of a layer that look different once the mask comes or goes, and can be data then.
[[nodiscard]] ChangedTiles tilesHidden(const Surface& pixels, const Surface& mask);

// Bytes.

/// An edit that writes these tiles of a surface of the layer.
[[nodiscard]] std::uint64_t ofTiles(const Document& document, const Surface& surface,
                                    const PixelChange& change);
/// Flattening this many data tiles of layers and masks for a canvas that is new.
[[nodiscard]] std::uint64_t ofNewFlattening(const Document& document, int width, int height, ColorMode mode,
                                            std::uint64_t dataTiles);
/// All surfaces recreated for this size and mode.
[[nodiscard]] std::uint64_t ofCanvas(const Document& document, int width, int height, ColorMode mode);
/// Copying the pixels under a selection.
[[nodiscard]] std::uint64_t ofCopy(const Surface& pixels, const Surface& weight, const PixelRect& bounds);
/// Pasting the clipboard as a layer.
[[nodiscard]] std::uint64_t ofPaste(const Document& document, const PixelClipboard& clipboard);
/// A selection mask with data where `source` has data.
[[nodiscard]] std::uint64_t ofMaskLike(const Surface& source);
[[nodiscard]] std::uint64_t ofStep(const Document& document, const UndoableOperation::StepCost& step);

}  // namespace orvanel::editCost
