// The inner loops of point kernels, over a run of pixels.
// Contracts: counts are multiples of 16; pixels, masks and weights are aligned to 64 bytes and regular;
// `in` and `out` may be the same memory. Weights are half floats; null means 1 everywhere, and where a
// weight is 0 the pixel's bytes stay. What is written is regular. Safe on any thread.
#pragma once

#include <cstddef>
#include <cstdint>

#include "raster/KernelRecords.h"
#include "raster/PixelFormat.h"

namespace orvanel::kernels {

/// Colour channels become 1 - c.
void invertRow(PixelFormat format, const std::byte* in, std::byte* out, const std::uint16_t* weights,
               int count);

/// Colour channels become clamp((c - black) / (white - black), 0, 1) ^ (1 / gamma); with white <= black a
/// step at black.
void levelsRow(PixelFormat format, const std::byte* in, std::byte* out, const std::uint16_t* weights,
               const LevelsParams& params, int count);

/// Tabulates `levelsRow` for `count` raw channel values from `first` on (integers, or the bits of half
/// floats). `curve` receives the values to mix, `rounded` the raw values stored where there are no weights.
/// White is above black, gamma is positive, and `count` is a multiple of 16; no alignment is needed.
void tabulateLevels(PixelFormat format, const LevelsParams& params, std::uint32_t first, std::uint32_t count,
                    float* curve, std::uint16_t* rounded);

/// As `levelsRow`, through a table made by `tabulateLevels`.
void curveRow(PixelFormat format, const std::byte* in, std::byte* out, const std::uint16_t* weights,
              const float* curve, int count);

/// Mixes a straight colour in, in premultiplied form.
void fillRow(PixelFormat format, const std::byte* in, std::byte* out, const std::uint16_t* weights,
             const Color4& color, int count);

/// Alpha times the mask; a pixel whose alpha becomes 0 becomes all 0. `mask` is never null.
void maskAlphaRow(PixelFormat format, const std::byte* in, std::byte* out, const std::uint16_t* mask,
                  int count);

/// 1 where every channel is within `limit` of `color`, 0 elsewhere. Grey pixels count as r = g = b.
void withinRow(PixelFormat format, const std::byte* in, const Color4& color, float limit, std::uint8_t* flags,
               int count);

/// One channel, 0 to 3, clamped to 0 to 1; grey pixels count as r = g = b.
void channelRow(PixelFormat format, const std::byte* in, int channel, std::uint16_t* out, int count);

/// Of two masks: max(a, b) and min(a, b).
void maximumMaskRow(const std::uint16_t* a, const std::uint16_t* b, std::uint16_t* out, int count);
void minimumMaskRow(const std::uint16_t* a, const std::uint16_t* b, std::uint16_t* out, int count);
void invertMaskRow(const std::uint16_t* in, std::uint16_t* out, int count);
/// min(d, 1 - s)
void subtractMaskRow(const std::uint16_t* in, const std::uint16_t* operand, std::uint16_t* out, int count);
/// d + (value - d) * s
void fillMaskRow(const std::uint16_t* in, const std::uint16_t* weights, float value, std::uint16_t* out,
                 int count);

/// The bitwise or of all 64-bit words. The number of bytes is a multiple of 128.
[[nodiscard]] std::uint64_t combinedBits(const std::byte* bytes, std::size_t count);

}  // namespace orvanel::kernels
