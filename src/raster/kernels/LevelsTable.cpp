#include "raster/kernels/LevelsTable.h"

#include <tbb/parallel_for.h>

#include "raster/kernels/PointRows.h"

namespace orvanel::kernels {
namespace {

std::size_t valuesOf(PixelFormat format) {
  const bool isByte = format == PixelFormat::rg8Unorm || format == PixelFormat::rgba8Unorm;
  return isByte ? 0x100 : 0x10000;
}

/// Rewrites pixels of one integer type; `adjusted` is given a pixel and gives the new one.
template <typename Pixel, typename Adjusted>
void rewrite(const std::byte* in, std::byte* out, int count, const Adjusted& adjusted) {
  const auto* from = reinterpret_cast<const Pixel*>(in);
  auto* to = reinterpret_cast<Pixel*>(out);
  for (int i = 0; i < count; ++i) to[i] = static_cast<Pixel>(adjusted(from[i]));
}

}  // namespace

bool LevelsTable::isWorthwhile(const Surface& layer, const Surface* selection, const LevelsParams& params) {
  const bool isBent = params.white > params.black && params.gamma > 0.0F && params.gamma != 1.0F;
  if (!isBent) return false;
  const auto takesTime = [&](int index) {
    if (selection == nullptr) return !layer.tile(index).isUniform();
    const Tile& selected = selection->tile(index);
    return !selected.isUniform() || (selected.pixel() != 0 && !layer.tile(index).isUniform());
  };
  // A table of 16-bit values takes as long as the pixels of four tiles.
  constexpr int fewTiles = 4;
  int adjusted = 0;
  for (int index = 0; index < layer.tileCount() && adjusted <= fewTiles; ++index) {
    if (takesTime(index)) ++adjusted;
  }
  return adjusted > fewTiles;
}

LevelsTable::LevelsTable(PixelFormat format, const LevelsParams& params)
    : format_(format), curve_(valuesOf(format)), rounded_(curve_.size()) {
  constexpr std::uint32_t step = 256;
  const auto count = static_cast<std::uint32_t>(curve_.size());
  tbb::parallel_for(0U, count, step, [&](std::uint32_t first) {
    tabulateLevels(format, params, first, step, &curve_[first], &rounded_[first]);
  });
}

void LevelsTable::adjustRow(const std::byte* in, std::byte* out, const std::uint16_t* weights,
                            int count) const {
  if (weights == nullptr) return adjustWhole(in, out, count);
  curveRow(format_, in, out, weights, curve_.data(), count);
}

void LevelsTable::adjustWhole(const std::byte* in, std::byte* out, int count) const {
  const std::uint16_t* values = rounded_.data();
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
