// The plain scalar twin of compositing: the truth that the vector kernels are held against.
// W3C Compositing and Blending Level 1, general formula with source-over, in double precision.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>

#include "raster/ColorMode.h"
#include "raster/HalfFloat.h"
#include "raster/Surface.h"

namespace orvanel::twin {

struct Pixel {
  std::array<double, 3> color{};
  double alpha = 0.0;
};

inline double blend(BlendMode mode, double backdrop, double source) {
  switch (mode) {
    case BlendMode::multiply:
      return source * backdrop;
    case BlendMode::screen:
      return backdrop + source - source * backdrop;
    case BlendMode::overlay:
      return backdrop <= 0.5 ? 2.0 * source * backdrop : 1.0 - 2.0 * (1.0 - source) * (1.0 - backdrop);
    case BlendMode::darken:
      return std::min(backdrop, source);
    case BlendMode::lighten:
      return std::max(backdrop, source);
    case BlendMode::difference:
      return std::abs(backdrop - source);
    case BlendMode::exclusion:
      return backdrop + source - 2.0 * source * backdrop;
    default:
      return source;
  }
}

inline Pixel over(const Pixel& source, const Pixel& backdrop, BlendMode mode, double coverage) {
  const double as = source.alpha * coverage;
  const double ab = backdrop.alpha;
  Pixel result;
  result.alpha = as + ab - as * ab;
  if (result.alpha <= 0.0) return {};
  for (std::size_t c = 0; c < 3; ++c) {
    const double mixed = (1.0 - ab) * source.color[c] + ab * blend(mode, backdrop.color[c], source.color[c]);
    result.color[c] = ((1.0 - as) * ab * backdrop.color[c] + as * mixed) / result.alpha;
  }
  return result;
}

inline double half(std::uint64_t bits) {
  return static_cast<double>(halfToFloat(static_cast<std::uint16_t>(bits & 0xFFFFU)));
}

/// A pixel of any layer or composite format; grey is expanded to r = g = b.
inline Pixel decode(std::uint64_t bits, PixelFormat format) {
  const auto byteAt = [&](unsigned index) {
    return static_cast<double>(bits >> (8U * index) & 0xFFU) / 255.0;
  };
  const auto wordAt = [&](unsigned index) {
    return static_cast<double>(bits >> (16U * index) & 0xFFFFU) / 65535.0;
  };
  switch (format) {
    case PixelFormat::rg8Unorm:
      return {{byteAt(0), byteAt(0), byteAt(0)}, byteAt(1)};
    case PixelFormat::rg16Unorm:
      return {{wordAt(0), wordAt(0), wordAt(0)}, wordAt(1)};
    case PixelFormat::rgba8Unorm:
      return {{byteAt(0), byteAt(1), byteAt(2)}, byteAt(3)};
    default:
      return {{half(bits), half(bits >> 16U), half(bits >> 32U)}, half(bits >> 48U)};
  }
}

/// The largest difference a stored channel may have from the truth: half a unit of the format, and a
/// little for 32-bit arithmetic.
inline double tolerance(PixelFormat format, double value) {
  if (format == PixelFormat::rgba8Unorm) return 0.501 / 255.0;
  return std::max(0x1p-25, std::abs(value) * 0x1p-11) + 2e-6;
}

}  // namespace orvanel::twin
