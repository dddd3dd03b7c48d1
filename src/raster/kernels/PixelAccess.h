// Reads one pixel's channels as floats, for work done once per call or per tile. Loops over pixels use row
// functions.
#pragma once

#include <cstdint>

#include "raster/HalfFloat.h"
#include "raster/KernelRecords.h"
#include "raster/PixelFormat.h"

namespace orvanel::kernels {

/// The colour of a regular pixel. Grey reads as r = g = b, and a mask as its value in all four channels.
[[nodiscard]] inline Color4 colorOfPixel(std::uint64_t pixel, PixelFormat format) {
  const auto byte = [&](unsigned i) { return static_cast<float>(pixel >> (8U * i) & 0xFFU) / 255.0F; };
  const auto word = [&](unsigned i) { return static_cast<std::uint16_t>(pixel >> (16U * i) & 0xFFFFU); };
  switch (format) {
    case PixelFormat::r16Float: {
      const float value = halfToFloat(word(0));
      return {value, value, value, value};
    }
    case PixelFormat::rg8Unorm:
      return {byte(0), byte(0), byte(0), byte(1)};
    case PixelFormat::rg16Unorm: {
      const float grey = static_cast<float>(word(0)) / 65535.0F;
      return {grey, grey, grey, static_cast<float>(word(1)) / 65535.0F};
    }
    case PixelFormat::rgba8Unorm:
      return {byte(0), byte(1), byte(2), byte(3)};
    default:
      return {halfToFloat(word(0)), halfToFloat(word(1)), halfToFloat(word(2)), halfToFloat(word(3))};
  }
}

}  // namespace orvanel::kernels
