// Half floats loaded from a file may be NaN, infinite, or an alpha or mask value outside 0 to 1. The stored
// bytes are never changed; this header defines how kernels read such values.
#pragma once

#include <cstddef>
#include <cstdint>

#include "raster/Surface.h"

namespace orvanel {

/// The pixel as kernels read it: NaN is 0, infinity the largest finite value, alpha and mask within 0 to 1.
[[nodiscard]] std::uint64_t regularPixel(std::uint64_t pixel, PixelFormat format);

/// `count` pixels of a float format as kernels read them.
void regularise(const std::byte* source, std::byte* destination, std::size_t count, PixelFormat format);

/// Marks the tiles of a float surface that contain irregular values.
void markIrregularTiles(Surface& surface);
/// The same for one tile, for a reader that fills tiles in parallel.
void markIfIrregular(Surface& surface, int index);

}  // namespace orvanel
