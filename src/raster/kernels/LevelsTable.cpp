#include "raster/kernels/LevelsTable.h"

#include <tbb/parallel_for.h>

#include <array>

#include "raster/Regularity.h"
#include "raster/kernels/PointRows.h"

namespace orvanel::kernels {
namespace {

std::size_t valuesOf(PixelFormat format) {
  const bool isByte = format == PixelFormat::rg8Unorm || format == PixelFormat::rgba8Unorm;
  return isByte ? 0x100 : 0x10000;
}

/// A transparent pixel with this value in every colour channel, as kernels read it.
std::uint64_t pixelOf(PixelFormat format, std::uint64_t value) {
  switch (format) {
    case PixelFormat::rg8Unorm:
    case PixelFormat::rg16Unorm:
      return value;
    case PixelFormat::rgba8Unorm:
      return value * 0x010101U;
    default:
      return regularPixel(value * 0x000100010001ULL, format);
  }
}

/// Rewrites pixels of one integer type; `adjusted` is given a pixel and gives the new one.
template <typename Pixel, typename Adjusted>
void rewrite(const std::byte* in, std::byte* out, int count, const Adjusted& adjusted) {
  const auto* from = reinterpret_cast<const Pixel*>(in);
  auto* to = reinterpret_cast<Pixel*>(out);
  for (int i = 0; i < count; ++i) to[i] = static_cast<Pixel>(adjusted(from[i]));
}

}  // namespace

bool LevelsTable::isWorthwhile(const Surface& layer, const LevelsParams& params) {
  const bool isBent = params.white > params.black && params.gamma > 0.0F && params.gamma != 1.0F;
  if (!isBent) return false;
  // A table of 16-bit values takes as long as the pixels of four tiles.
  constexpr int fewTiles = 4;
  int withData = 0;
  for (int index = 0; index < layer.tileCount() && withData <= fewTiles; ++index) {
    if (!layer.tile(index).isUniform()) ++withData;
  }
  return withData > fewTiles;
}

LevelsTable::LevelsTable(PixelFormat format, const LevelsParams& params)
    : format_(format), values_(valuesOf(format)) {
  constexpr std::size_t step = 256;
  const int pixelBytes = bytesPerPixel(format);
  tbb::parallel_for(std::size_t{0}, values_.size() / step, [&](std::size_t block) {
    alignas(64) std::array<std::byte, step * 8> pixels;
    for (std::size_t i = 0; i < step; ++i) {
      fillPixels(pixels.data() + i * static_cast<std::size_t>(pixelBytes), 1,
                 pixelOf(format, block * step + i), pixelBytes);
    }
    levelsRow(format, pixels.data(), pixels.data(), nullptr, params, step);
    const std::uint64_t firstChannel = values_.size() - 1;
    for (std::size_t i = 0; i < step; ++i) {
      const std::byte* pixel = pixels.data() + i * static_cast<std::size_t>(pixelBytes);
      values_[block * step + i] = static_cast<std::uint16_t>(packPixel(pixel, pixelBytes) & firstChannel);
    }
  });
}

void LevelsTable::adjustRow(const std::byte* in, std::byte* out, int count) const {
  const std::uint16_t* values = values_.data();
  switch (format_) {
    case PixelFormat::rg8Unorm:
      return rewrite<std::uint16_t>(in, out, count, [values](std::uint32_t pixel) {
        return (pixel & 0xFF00U) | values[pixel & 0xFFU];
      });
    case PixelFormat::rg16Unorm:
      return rewrite<std::uint32_t>(in, out, count, [values](std::uint32_t pixel) {
        return (pixel & 0xFFFF0000U) | values[pixel & 0xFFFFU];
      });
    case PixelFormat::rgba8Unorm:
      return rewrite<std::uint32_t>(in, out, count, [values](std::uint32_t pixel) {
        const auto at = [&](unsigned shift) {
          return std::uint32_t{values[pixel >> shift & 0xFFU]} << shift;
        };
        return (pixel & 0xFF000000U) | at(0) | at(8) | at(16);
      });
    default:
      return rewrite<std::uint64_t>(in, out, count, [values](std::uint64_t pixel) {
        const auto at = [&](unsigned shift) {
          return std::uint64_t{values[pixel >> shift & 0xFFFFU]} << shift;
        };
        return (pixel & 0xFFFF000000000000U) | at(0) | at(16) | at(32);
      });
  }
}

}  // namespace orvanel::kernels
