// Conversion of composite pixels to 8-bit RGBA with straight alpha, for flat files and previews. Any thread.
#pragma once

#include <cstddef>
#include <cstdint>

#include "raster/Surface.h"

namespace orvanel {

/// 0.0 as 0 and 1.0 as 255, rounded to nearest and clamped; NaN is 0.
[[nodiscard]] std::uint8_t eightBitsOfHalf(std::uint16_t half);

/// Pixels [x, x + count) of a row of a composite (`rgba8Unorm` or `rgba16Float`), 4 bytes each.
void readRowEightBit(const Surface& composite, int x, int y, int count, std::uint8_t* out);

}  // namespace orvanel
