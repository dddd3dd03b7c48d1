#include "PhotoLayers.h"

#include <tbb/parallel_for.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include "raster/HalfFloat.h"

namespace orvanel::bench {
namespace {

/// A hash of a grid position.
std::uint32_t mixed(std::uint32_t x, std::uint32_t y, std::uint32_t seed) {
  std::uint32_t value = x * 0x9E3779B1U ^ y * 0x85EBCA77U ^ seed * 0xC2B2AE3DU;
  value = (value ^ value >> 15U) * 0x2C1B3C6DU;
  value = (value ^ value >> 12U) * 0x297A2D39U;
  return value ^ value >> 15U;
}

float unit(std::uint32_t bits) {
  return static_cast<float>(bits >> 8U) / 16777216.0F;
}

/// Value noise: random values on a grid, interpolated smoothly.
float smoothNoise(float x, float y, std::uint32_t seed) {
  const float left = std::floor(x);
  const float top = std::floor(y);
  const auto ease = [](float t) { return t * t * (3.0F - 2.0F * t); };
  const float across = ease(x - left);
  const float down = ease(y - top);
  const auto column = static_cast<std::uint32_t>(static_cast<int>(left));
  const auto row = static_cast<std::uint32_t>(static_cast<int>(top));
  const auto corner = [&](std::uint32_t dx, std::uint32_t dy) {
    return unit(mixed(column + dx, row + dy, seed));
  };
  const float above = std::lerp(corner(0, 0), corner(1, 0), across);
  const float below = std::lerp(corner(0, 1), corner(1, 1), across);
  return std::lerp(above, below, down);
}

/// Red, green and blue, 0 to 1.
std::array<float, 3> photoPixel(int x, int y, std::uint32_t seed) {
  const auto fx = static_cast<float>(x);
  const auto fy = static_cast<float>(y);
  float light = 0.0F;
  float weight = 0.5F;
  for (const float scale : {900.0F, 230.0F, 57.0F, 13.0F, 4.0F}) {
    light += weight * smoothNoise(fx / scale, fy / scale, seed + static_cast<std::uint32_t>(scale));
    weight *= 0.55F;
  }
  const float tint = smoothNoise(fx / 1300.0F, fy / 1300.0F, seed + 1);
  const std::array<float, 3> base{light * (0.8F + 0.4F * tint), light, light * (1.2F - 0.4F * tint)};
  std::array<float, 3> pixel{};
  for (std::uint32_t channel = 0; channel < 3; ++channel) {
    // Shot noise grows with the square root of the light.
    const std::uint32_t bits =
        mixed(static_cast<std::uint32_t>(x), static_cast<std::uint32_t>(y), seed * 3 + channel);
    const float bell = unit(bits << 8U) + unit(bits << 4U) + unit(bits) - 1.5F;
    const float value = base[channel] + 0.045F * std::sqrt(base[channel]) * bell;
    pixel[channel] = std::clamp(value, 0.0F, 1.0F);
  }
  return pixel;
}

}  // namespace

Texture photoLayer(int width, int height, Depth depth, std::uint32_t seed) {
  auto layer = std::make_shared<Surface>(PixelFormat::rgba16Float, width, height);
  tbb::parallel_for(0, layer->tileCount(), [&](int index) {
    const PixelRect rect = layer->tileRect(index);
    auto* out = reinterpret_cast<std::uint16_t*>(layer->editTile(index));
    for (int y = 0; y < rect.height; ++y) {
      for (int x = 0; x < rect.width; ++x) {
        std::uint16_t* pixel = out + (static_cast<std::ptrdiff_t>(y) * tileSide + x) * 4;
        for (const float value : photoPixel(rect.x + x, rect.y + y, seed)) {
          *pixel++ = floatToHalf(depth == Depth::full ? value : std::round(value * 255.0F) / 255.0F);
        }
        *pixel = floatToHalf(1.0F);
      }
    }
  });
  return layer;
}

QImage photoImage(int width, int height, std::uint32_t seed) {
  QImage image(width, height, QImage::Format_RGB32);
  std::vector<QRgb*> rows(static_cast<std::size_t>(height));
  for (int y = 0; y < height; ++y)
    rows[static_cast<std::size_t>(y)] = reinterpret_cast<QRgb*>(image.scanLine(y));
  tbb::parallel_for(0, height, [&](int y) {
    for (int x = 0; x < width; ++x) {
      const auto pixel = photoPixel(x, y, seed);
      const auto byte = [](float value) { return static_cast<int>(std::lround(value * 255.0F)); };
      rows[static_cast<std::size_t>(y)][x] = qRgb(byte(pixel[0]), byte(pixel[1]), byte(pixel[2]));
    }
  });
  return image;
}

}  // namespace orvanel::bench
