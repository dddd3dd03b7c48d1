// Converts rows of composite pixels to the screen's format and blends them over the drawable.
// Pure functions over spans, any thread; each runs on the best instructions the CPU has.
#pragma once

#include <cstddef>
#include <cstdint>

#include "raster/PixelFormat.h"

namespace orvanel::displayRows {

/// What is known of a converted run, so that drawing can take a shortcut.
struct Coverage {
  bool isOpaque = true;
  bool isTransparent = true;
};

/// Converts `count` straight-alpha pixels of a composite format to premultiplied BGRA. Colour outside 0 to
/// 1 is clamped and NaN counts as 0. `channelMask` is laid over every pixel and must keep its alpha.
Coverage convert(PixelFormat format, const std::byte* source, std::uint32_t* destination, std::size_t count,
                 std::uint32_t channelMask);

/// Premultiplied "over": destination = source + destination x (1 - source alpha), rounded to nearest.
void blendOver(std::uint32_t* destination, const std::uint32_t* source, std::size_t count);

}  // namespace orvanel::displayRows
