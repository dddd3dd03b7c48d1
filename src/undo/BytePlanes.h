// Splits pixels into byte planes and joins them again. Neighbouring values differ little in their high bytes,
// so planes compress far better than interleaved pixels. Pure functions.
#pragma once

#include <cstddef>
#include <span>

namespace orvanel {

/// Byte k of every pixel goes to plane k; both spans have the same size, a multiple of `pixelBytes`
/// (2, 4 or 8).
void splitBytePlanes(std::span<const std::byte> pixels, std::span<std::byte> planes, int pixelBytes);
void joinBytePlanes(std::span<const std::byte> planes, std::span<std::byte> pixels, int pixelBytes);

}  // namespace orvanel
