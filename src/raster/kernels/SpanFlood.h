// Floods a byte map from a seed, one horizontal run at a time. Reaches the same pixels as a breadth-first
// flood with 4-connectivity. Called on the main thread; the map is the caller's.
#pragma once

#include <cstddef>
#include <span>

#include "raster/Surface.h"

namespace orvanel::kernels {

/// The map's value for a pixel that the flood has reached.
inline constexpr std::byte floodedFlag{2};

/// Marks every pixel connected with the seed through pixels of value 1, `width` to a row; the seed itself
/// is marked whatever its value.
void floodFrom(std::span<std::byte> map, int width, int height, int seedX, int seedY);

/// Writes 1.0 where the map is flooded, 0.0 elsewhere; whole tiles of either become uniform.
void writeFloodedMask(std::span<const std::byte> map, Surface& mask);

}  // namespace orvanel::kernels
