// Flooding a byte map from a seed, by runs of a row: the same pixels as a breadth-first flood with four
// neighbours. Called on the main thread; the map is the caller's.
#pragma once

#include <cstddef>
#include <span>

#include "raster/Surface.h"

namespace orvanel::kernels {

/// What the map holds for a pixel that the flood has reached.
inline constexpr std::byte floodedFlag{2};

/// Marks every pixel connected with the seed through pixels of value 1, `width` to a row; the seed itself
/// is marked whatever its value.
void floodFrom(std::span<std::byte> map, int width, int height, int seedX, int seedY);

/// Writes 1.0 where the map is flooded, 0.0 elsewhere; whole tiles of either become uniform.
void writeFloodedMask(std::span<const std::byte> map, Surface& mask);

}  // namespace orvanel::kernels
