#include "raster/Regularity.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

#include "raster/HalfFloat.h"

namespace orvanel {
namespace {

constexpr std::uint16_t halfLargest = 0x7BFF;
constexpr std::uint16_t halfInfinity = 0x7C00;

std::uint16_t regularColor(std::uint16_t half) {
  const auto magnitude = static_cast<std::uint16_t>(half & 0x7FFFU);
  if (magnitude > halfInfinity) return 0;
  if (magnitude == halfInfinity) return static_cast<std::uint16_t>((half & 0x8000U) | halfLargest);
  return half;
}

std::uint16_t regularCoverage(std::uint16_t half) {
  if ((half & 0x8000U) != 0 || half > halfInfinity) return 0;
  return std::min(half, halfOne);
}

bool isRegularCoverage(std::uint16_t half) {
  return half <= halfOne;
}

/// Channels of a pixel; the last is alpha or the mask itself.
int channelsOf(PixelFormat format) {
  return format == PixelFormat::r16Float ? 1 : 4;
}

}  // namespace

std::uint64_t regularPixel(std::uint64_t pixel, PixelFormat format) {
  if (!isFloatFormat(format)) return pixel;
  const unsigned last = static_cast<unsigned>(channelsOf(format)) - 1;
  const auto half = [pixel](unsigned channel) {
    return static_cast<std::uint16_t>(pixel >> (16U * channel));
  };
  std::uint64_t result = std::uint64_t{regularCoverage(half(last))} << (16U * last);
  for (unsigned channel = 0; channel < last; ++channel) {
    result |= std::uint64_t{regularColor(half(channel))} << (16U * channel);
  }
  return result;
}

void regularise(const std::byte* source, std::byte* destination, std::size_t count, PixelFormat format) {
  const auto* in = reinterpret_cast<const std::uint16_t*>(source);
  auto* out = reinterpret_cast<std::uint16_t*>(destination);
  const int channels = channelsOf(format);
  for (std::size_t pixel = 0; pixel < count; ++pixel) {
    for (int channel = 0; channel + 1 < channels; ++channel) *out++ = regularColor(*in++);
    *out++ = regularCoverage(*in++);
  }
}

void markIfIrregular(Surface& surface, int index) {
  const Tile& tile = surface.tile(index);
  if (!isFloatFormat(surface.format()) || tile.isUniform()) return;
  const auto* halves = reinterpret_cast<const std::uint16_t*>(tile.data());
  const std::size_t count = surface.tileBytes() / 2;
  bool irregular = false;
  if (channelsOf(surface.format()) == 1) {
    for (std::size_t i = 0; i < count; ++i) irregular |= !isRegularCoverage(halves[i]);
  } else {
    for (std::size_t i = 0; i < count; i += 4) {
      for (std::size_t c = 0; c < 3; ++c) irregular |= (halves[i + c] & 0x7FFFU) >= halfInfinity;
      irregular |= !isRegularCoverage(halves[i + 3]);
    }
  }
  if (irregular) surface.setTrait(index, TileTrait::irregular);
}

void markIrregularTiles(Surface& surface) {
  for (int index = 0; index < surface.tileCount(); ++index) markIfIrregular(surface, index);
}

}  // namespace orvanel
