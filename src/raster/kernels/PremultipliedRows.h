// The inner loops of kernels that interpolate. They work on premultiplied red, green, blue, alpha as four
// floats a pixel; a mask is a white of that alpha. Safe on any thread.
#pragma once

#include <cstddef>
#include <cstdint>

#include "raster/PixelFormat.h"

namespace orvanel::kernels {

/// Regular pixels to premultiplied ones. `count` is a multiple of 16, `in` is aligned to 64 bytes.
void premultiplyRow(PixelFormat format, const std::byte* in, float* out, int count);

enum class ColorRange {
  any,   ///< as it comes
  unit,  ///< 0 to 1, for filters that overshoot
};

/// Divides by alpha and rounds; where alpha is stored as 0, so is colour. `count` is a multiple of 16, both
/// are aligned to 64 bytes.
void unpremultiplyRow(PixelFormat format, const float* in, std::byte* out, int count, ColorRange range);

/// out += weight * in, over `count` floats, a multiple of 16.
void addWeightedRow(const float* in, float weight, float* out, int count);

/// The inputs that make one output: `count` neighbours from `first`, weights from `weights` on.
struct FilterTaps {
  int first = 0;
  int count = 0;
  const float* weights = nullptr;
};

/// out[x] = sum of the taps of x over `in`, whose first pixel has the index `origin`.
void filterRow(const float* in, int origin, const FilterTaps* taps, float* out, int count);

/// A block of premultiplied pixels surrounded by a ring of transparent ones.
struct RingedBlock {
  const float* pixels = nullptr;  ///< of the ring's corner
  int width = 0;                  ///< without the ring
  int height = 0;

  [[nodiscard]] std::size_t stride() const { return 4 * (static_cast<std::size_t>(width) + 2); }
};

/// Adds bilinear samples at (u + i du, v + i dv) for i in [0, count); coordinates are those of pixel
/// centres within the block, from 0. Samples further out are transparent.
void addBilinearRow(const RingedBlock& block, double u, double v, double du, double dv, float* out,
                    int count);

}  // namespace orvanel::kernels
