// The inner loop of colour mode conversion, over a run of pixels.
// Contract: `count` is a multiple of 16; both runs are aligned to 64 bytes; the source is regular.
#pragma once

#include <cstddef>

#include "raster/ColorMode.h"

namespace orvanel::kernels {

/// By value, rounded to nearest; RGB to grey by ITU-R BT.601 weights; alpha stays what it is.
void convertRow(const std::byte* source, ColorMode from, std::byte* destination, ColorMode to,
                std::size_t count);

}  // namespace orvanel::kernels
