// The pixel formats a surface can hold, with the numbers that document files and argument records store.
// Shared rule: colour is straight (not premultiplied) alpha, display-referred; masks run from 0 to 1.
#pragma once

#include <cstddef>
#include <cstdint>

namespace orvanel {

/// What one texel holds. The numbers are part of the file format and never change.
enum class PixelFormat : std::uint16_t {
  r16Float = 25,      ///< masks and selections, 0.0 to 1.0
  rg8Unorm = 30,      ///< grey, alpha
  rg16Unorm = 60,     ///< grey, alpha
  rgba8Unorm = 70,    ///< red, green, blue, alpha
  bgra8Unorm = 80,    ///< the on-screen drawable
  rgba16Float = 115,  ///< red, green, blue, alpha
  rgba32Float = 125,
};

/// Bytes per pixel. Formats not listed here take 8 bytes, like `rgba16Float`.
[[nodiscard]] constexpr int bytesPerPixel(PixelFormat format) {
  switch (format) {
    case PixelFormat::r16Float:
    case PixelFormat::rg8Unorm:
      return 2;
    case PixelFormat::rg16Unorm:
    case PixelFormat::rgba8Unorm:
    case PixelFormat::bgra8Unorm:
      return 4;
    case PixelFormat::rgba32Float:
      return 16;
    default:
      return 8;
  }
}

/// True for floating-point channels, which may be NaN or infinite in a file.
[[nodiscard]] constexpr bool isFloatFormat(PixelFormat format) {
  return format == PixelFormat::r16Float || format == PixelFormat::rgba16Float ||
         format == PixelFormat::rgba32Float;
}

}  // namespace orvanel
