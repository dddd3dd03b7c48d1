// Splits pixels into planes of equal bytes and joins them again: neighbouring values differ little in
// their high bytes, so each plane compresses far better than the pixels do. Pure functions.
#pragma once

#include <cstddef>
#include <span>

namespace orvanel {

/// Byte k of every pixel goes to plane k; both spans have the same size, a multiple of `pixelBytes`
/// (2, 4 or 8).
void splitBytePlanes(std::span<const std::byte> pixels, std::span<std::byte> planes, int pixelBytes);
void joinBytePlanes(std::span<const std::byte> planes, std::span<std::byte> pixels, int pixelBytes);

}  // namespace orvanel
