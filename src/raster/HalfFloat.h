// Conversions between IEEE 754 half and single precision, for scalar code; vector code has its own.
// Pure functions without state, safe on any thread and in constant expressions.
#pragma once

#include <bit>
#include <cstdint>

namespace orvanel {

inline constexpr float largestHalf = 65504.0F;
/// The bits of 1.0: a pixel of a mask that is wholly selected.
inline constexpr std::uint16_t halfOne = 0x3C00;

/// Exact for every half: subnormals, infinities and NaN included.
[[nodiscard]] constexpr float halfToFloat(std::uint16_t half) {
  const std::uint32_t sign = (half & 0x8000U) << 16;
  const std::uint32_t magnitude = half & 0x7FFFU;
  if (magnitude >= 0x7C00U) return std::bit_cast<float>(sign | 0x7F800000U | (magnitude & 0x3FFU) << 13);
  if (magnitude >= 0x0400U) return std::bit_cast<float>(sign | ((magnitude << 13) + 0x38000000U));
  // A subnormal counts units of 2^-24, which a float holds exactly.
  const float value = static_cast<float>(magnitude) * 0x1p-24F;
  return sign != 0 ? -value : value;
}

/// Rounded to nearest, ties to even; what is beyond the range becomes infinity, NaN stays NaN.
[[nodiscard]] constexpr std::uint16_t floatToHalf(float value) {
  const auto bits = std::bit_cast<std::uint32_t>(value);
  const std::uint32_t sign = (bits >> 16) & 0x8000U;
  const std::uint32_t magnitude = bits & 0x7FFFFFFFU;
  std::uint32_t half = 0;
  if (magnitude > 0x7F800000U) {
    half = 0x7E00U;
  } else if (magnitude >= 0x477FF000U) {
    half = 0x7C00U;
  } else if (magnitude >= 0x38800000U) {
    half = (magnitude - 0x38000000U + 0x0FFFU + ((magnitude >> 13) & 1U)) >> 13;
  } else {
    // Below 2^-14 a half counts units of 2^-24: adding 0.5 makes the float count them too, and round.
    half = std::bit_cast<std::uint32_t>(std::bit_cast<float>(magnitude) + 0.5F) - 0x3F000000U;
  }
  return static_cast<std::uint16_t>(sign | half);
}

/// A value as kernels read it: NaN is 0, infinities are the largest finite half.
[[nodiscard]] constexpr float sanitized(float value) {
  if (value != value) return 0.0F;
  if (value > largestHalf) return largestHalf;
  return value < -largestHalf ? -largestHalf : value;
}

}  // namespace orvanel
