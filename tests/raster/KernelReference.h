// What kernel tests hold their results against: whole images in double precision, one pixel after the
// other, with no tiles, vectors or threads.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <utility>
#include <vector>

#include "raster/CompositeTwin.h"
#include "raster/MetalContext.h"
#include "raster/RandomSurface.h"
#include "raster/Surface.h"

namespace orvanel::reference {

/// Red, green, blue, alpha; grey as r = g = b; a mask has its value in all four.
using Color = std::array<double, 4>;

struct Image {
  int width = 0;
  int height = 0;
  std::vector<Color> pixels;

  Image(int w, int h)
      : width(w), height(h), pixels(static_cast<std::size_t>(w) * static_cast<std::size_t>(h)) {}
  Color& at(int x, int y) { return pixels[static_cast<std::size_t>(y * width + x)]; }
  const Color& at(int x, int y) const { return pixels[static_cast<std::size_t>(y * width + x)]; }
  /// Transparent beyond the edges.
  Color outsideEmpty(int x, int y) const {
    return x < 0 || y < 0 || x >= width || y >= height ? Color{} : at(x, y);
  }
};

inline Image imageOf(const Surface& surface) {
  Image image(surface.width(), surface.height());
  for (int y = 0; y < surface.height(); ++y) {
    for (int x = 0; x < surface.width(); ++x) {
      const std::uint64_t bits = surface.pixelAt(x, y);
      if (surface.format() == PixelFormat::r16Float) {
        image.at(x, y).fill(twin::half(bits));
      } else {
        const twin::Pixel pixel = twin::decode(bits, surface.format());
        image.at(x, y) = {pixel.color[0], pixel.color[1], pixel.color[2], pixel.alpha};
      }
    }
  }
  return image;
}

/// Half a unit of the format at a value, which is what rounding may move it.
inline double halfUnit(PixelFormat format, double value) {
  switch (format) {
    case PixelFormat::rg8Unorm:
    case PixelFormat::rgba8Unorm:
      return 0.5 / 255.0;
    case PixelFormat::rg16Unorm:
      return 0.5 / 65535.0;
    default:
      return std::max(std::abs(value) * 0x1p-11, 0x1p-25);
  }
}

/// A colour as it can be stored: where alpha rounds to 0, nothing is left.
inline Color settled(const Color& color, PixelFormat format) {
  return color[3] <= halfUnit(format, 0.0) ? Color{} : color;
}

inline bool isGrey(PixelFormat format) {
  return format == PixelFormat::rg8Unorm || format == PixelFormat::rg16Unorm;
}

/// Every pixel within rounding of what is expected; `slack` is for arithmetic in single precision.
inline void expectImage(const Surface& actual, const Image& expected, double slack = 1e-6) {
  ASSERT_EQ(actual.width(), expected.width);
  ASSERT_EQ(actual.height(), expected.height);
  const Image image = imageOf(actual);
  for (int y = 0; y < image.height; ++y) {
    for (int x = 0; x < image.width; ++x) {
      for (std::size_t c = 0; c < 4; ++c) {
        const double wanted = expected.at(x, y)[c];
        ASSERT_NEAR(image.at(x, y)[c], wanted, halfUnit(actual.format(), wanted) * 1.001 + slack)
            << "channel " << c << " at " << x << ", " << y;
      }
    }
  }
}

inline constexpr std::array<std::pair<int, int>, 5> sizes{
    {{1, 1}, {17, 1}, {127, 3}, {129, 130}, {300, 257}}};

inline constexpr std::array layerFormats{PixelFormat::rg8Unorm, PixelFormat::rg16Unorm,
                                         PixelFormat::rgba8Unorm, PixelFormat::rgba16Float};

inline ColorMode modeOf(PixelFormat format) {
  for (const ColorMode mode : allColorModes) {
    if (layerPixelFormat(mode) == format) return mode;
  }
  return ColorMode::rgb16;
}

inline Surface randomMask(int width, int height, std::mt19937& random) {
  return randomSurface(PixelFormat::r16Float, width, height, random);
}

inline const MetalContext& context() {
  return MetalContext::shared();
}

/// A mask with these values from left to right, top to bottom.
inline Surface maskOf(int width, int height, const std::function<float(int, int)>& value) {
  Surface mask(PixelFormat::r16Float, width, height);
  std::vector<std::uint16_t> row(static_cast<std::size_t>(width));
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) row[static_cast<std::size_t>(x)] = floatToHalf(value(x, y));
    mask.writeRect({0, y, width, 1}, reinterpret_cast<const std::byte*>(row.data()), row.size() * 2);
  }
  return mask;
}

inline float maskAt(const Surface& mask, int x, int y) {
  return halfToFloat(static_cast<std::uint16_t>(mask.pixelAt(x, y)));
}

}  // namespace orvanel::reference
