#include "io/image/EightBit.h"

#include <array>
#include <bit>
#include <cmath>
#include <memory>
#include <vector>

namespace orvanel {
namespace {

float floatOfHalf(std::uint16_t half) {
  const bool isNegative = (half & 0x8000U) != 0;
  const unsigned exponent = half >> 10U & 0x1FU;
  const unsigned fraction = half & 0x3FFU;
  constexpr float subnormalStep = 1.0F / 16777216.0F;
  float value = 0.0F;
  if (exponent == 0) {
    value = static_cast<float>(fraction) * subnormalStep;
  } else if (exponent == 31) {
    value = fraction != 0 ? 0.0F : INFINITY;
  } else {
    value = std::bit_cast<float>((exponent + 112U) << 23U | fraction << 13U);
  }
  return isNegative ? -value : value;
}

std::uint8_t eightBitsOf(float value) {
  if (!(value > 0.0F)) return 0;
  return value >= 1.0F ? 255 : static_cast<std::uint8_t>(std::lround(value * 255.0F));
}

/// Every half float's value in 8 bits: looking it up is as fast as converting, on any CPU.
const std::array<std::uint8_t, 65536>& table() {
  static const auto values = [] {
    auto made = std::make_unique<std::array<std::uint8_t, 65536>>();
    for (std::size_t half = 0; half < made->size(); ++half) {
      (*made)[half] = eightBitsOf(floatOfHalf(static_cast<std::uint16_t>(half)));
    }
    return made;
  }();
  return *values;
}

}  // namespace

std::uint8_t eightBitsOfHalf(std::uint16_t half) {
  return table()[half];
}

void readRowEightBit(const Surface& composite, int x, int y, int count, std::uint8_t* out) {
  const PixelRect row{x, y, count, 1};
  if (composite.format() != PixelFormat::rgba16Float) {
    composite.readRect(row, reinterpret_cast<std::byte*>(out), static_cast<std::size_t>(count) * 4);
    return;
  }
  thread_local std::vector<std::uint16_t> halves;
  const std::size_t samples = static_cast<std::size_t>(count) * 4;
  halves.resize(samples);
  composite.readRect(row, reinterpret_cast<std::byte*>(halves.data()), samples * 2);
  const auto& values = table();
  for (std::size_t i = 0; i < samples; ++i) out[i] = values[halves[i]];
}

}  // namespace orvanel
