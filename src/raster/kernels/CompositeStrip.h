// The inner loops of compositing, over a strip: a run of consecutive pixels of one tile. The accumulator
// is planar and premultiplied, in 32-bit floats, and is rounded once when it is stored.
// Contracts: counts are multiples of 16; planes and pixels are aligned to 64 bytes; source and mask are
// regular (finite, alpha and mask within 0 to 1). Safe on any thread; strips never overlap.
#pragma once

#include <cstddef>
#include <cstdint>

#include "raster/ColorMode.h"
#include "raster/HalfFloat.h"
#include "raster/PixelFormat.h"

namespace orvanel::kernels {

inline constexpr int stripRows = 8;
inline constexpr int stripPixels = stripRows * 128;

/// Grey documents accumulate one colour plane: their red, green and blue are equal throughout.
enum class PlaneSet { grey, rgb };

/// Without the gaps the planes would stand 4096 bytes apart, where a processor can't tell a load from one
/// plane from the store to another that comes before it, and waits.
struct StripAccumulator {
  static constexpr int planeFloats = stripPixels + 64;
  alignas(64) float red[planeFloats];
  alignas(64) float green[planeFloats];
  alignas(64) float blue[planeFloats];
  alignas(64) float alpha[planeFloats];
};

/// Pixels of one layer under a strip; a uniform source has no `pixels`, a uniform mask no `mask`.
struct StripSource {
  PixelFormat format = PixelFormat::rgba16Float;
  const std::byte* pixels = nullptr;
  std::uint64_t uniformPixel = 0;
  const std::uint16_t* mask = nullptr;  ///< half floats
  std::uint16_t uniformMask = halfOne;  ///< the coverage of all pixels where `mask` is null
  float opacity = 1.0F;
  BlendMode blendMode = BlendMode::normal;
};

/// Empties the first `count` pixels.
void clearStrip(StripAccumulator& accumulator, PlaneSet planes, int count);
/// Takes a destination's straight pixels in, premultiplying them.
void loadStrip(StripAccumulator& accumulator, PlaneSet planes, PixelFormat format, const std::byte* pixels,
               int count);
/// Composites a source over the accumulator with the general formula of W3C Compositing and Blending
/// Level 1, in premultiplied form.
void compositeStrip(StripAccumulator& accumulator, PlaneSet planes, const StripSource& source, int count);
/// Divides by alpha and rounds into `rgba8Unorm` or `rgba16Float`; where alpha is 0, colour is 0.
void storeStrip(const StripAccumulator& accumulator, PlaneSet planes, PixelFormat format, std::byte* pixels,
                int count);

}  // namespace orvanel::kernels
