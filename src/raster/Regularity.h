// Half floats from a file may be NaN or infinite, or carry an alpha or mask value outside 0 to 1. Files
// keep their bytes as they stand; kernels read such values as this header says.
#pragma once

#include <cstddef>
#include <cstdint>

#include "raster/Surface.h"

namespace orvanel {

/// The pixel as kernels read it: NaN is 0, infinity the largest finite value, alpha and mask within 0 to 1.
[[nodiscard]] std::uint64_t regularPixel(std::uint64_t pixel, PixelFormat format);

/// `count` pixels of a float format as kernels read them.
void regularise(const std::byte* source, std::byte* destination, std::size_t count, PixelFormat format);

/// Marks the tiles of a float surface that hold any value kernels must not read as it stands.
void markIrregularTiles(Surface& surface);
/// The same for one tile, for a reader that fills tiles in parallel.
void markIfIrregular(Surface& surface, int index);

}  // namespace orvanel
