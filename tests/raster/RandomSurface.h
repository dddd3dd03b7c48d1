// Surfaces of seeded random pixels for tests: some tiles uniform, some empty, the rest data.
#pragma once

#include <cstdint>
#include <random>
#include <vector>

#include "raster/HalfFloat.h"
#include "raster/Surface.h"

namespace orvanel {

inline std::uint64_t randomPixel(PixelFormat format, std::mt19937& random) {
  std::uniform_real_distribution<float> unit(0.0F, 1.0F);
  // Coverage is often exactly nothing or everything, as it is in images.
  const auto coverage = [&] {
    const auto roll = random() % 4;
    return roll == 0 ? 0.0F : roll == 1 ? 1.0F : unit(random);
  };
  const auto halfOf = [](float value) { return std::uint64_t{floatToHalf(value)}; };
  switch (format) {
    case PixelFormat::r16Float:
      return halfOf(coverage());
    case PixelFormat::rg8Unorm:
      return (random() & 0xFFU) | static_cast<std::uint64_t>(coverage() * 255.0F) << 8U;
    case PixelFormat::rg16Unorm:
      return (random() & 0xFFFFU) | static_cast<std::uint64_t>(coverage() * 65535.0F) << 16U;
    case PixelFormat::rgba8Unorm:
      return (random() & 0xFFFFFFU) | static_cast<std::uint64_t>(coverage() * 255.0F) << 24U;
    default:
      return halfOf(unit(random)) | halfOf(unit(random)) << 16U | halfOf(unit(random)) << 32U |
             halfOf(coverage()) << 48U;
  }
}

inline void fillRandomTile(Surface& surface, int index, std::mt19937& random) {
  const PixelRect rect = surface.tileRect(index);
  const auto step = static_cast<std::size_t>(surface.pixelBytes());
  std::vector<std::byte> row(static_cast<std::size_t>(rect.width) * step);
  for (int y = 0; y < rect.height; ++y) {
    for (int x = 0; x < rect.width; ++x) {
      const std::uint64_t pixel = randomPixel(surface.format(), random);
      std::memcpy(row.data() + static_cast<std::size_t>(x) * step, &pixel, step);
    }
    surface.writeRect({rect.x, rect.y + y, rect.width, 1}, row.data(), row.size());
  }
}

inline Surface randomSurface(PixelFormat format, int width, int height, std::mt19937& random) {
  Surface surface(format, width, height);
  for (int index = 0; index < surface.tileCount(); ++index) {
    const auto roll = random() % 6;
    if (roll == 0) continue;
    if (roll == 1) {
      surface.setUniform(index, randomPixel(format, random));
    } else {
      fillRandomTile(surface, index, random);
    }
  }
  return surface;
}

}  // namespace orvanel
