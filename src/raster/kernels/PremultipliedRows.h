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

/// Positions in the source are whole numbers of 2^-32 pixels, so that a sample's place doesn't depend on how
/// the work is divided.
using FixedPoint = std::int64_t;
inline constexpr int fixedPointBits = 32;

/// Where the samples of a row fall: (u + i * stepU, v + i * stepV) for the i-th.
struct SampleLine {
  FixedPoint u = 0;
  FixedPoint v = 0;
  FixedPoint stepU = 0;
  FixedPoint stepV = 0;
};

/// Adds `count` bilinear samples to `out`; positions are counted from the centre of the ring's corner. All
/// samples and their neighbours lie within the ring.
void addBilinearRow(const RingedBlock& block, const SampleLine& line, float* out, int count);

/// A sample whose four neighbours have been collected.
struct CollectedSample {
  FixedPoint u = 0;
  FixedPoint v = 0;
  std::uint32_t output = 0;  ///< the pixel of `out` that it is added to
};
/// As `addBilinearRow`, for samples anywhere: `neighbours` has the top left, top right, bottom left and
/// bottom right pixel of each.
void addCollectedSamples(const float* neighbours, const CollectedSample* samples, float* out, int count);

}  // namespace orvanel::kernels
