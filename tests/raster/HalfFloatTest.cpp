#include "raster/HalfFloat.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace orvanel {
namespace {

TEST(HalfFloat, EveryHalfSurvivesTheRoundTrip) {
  for (std::uint32_t bits = 0; bits <= 0xFFFFU; ++bits) {
    const auto half = static_cast<std::uint16_t>(bits);
    const float value = halfToFloat(half);
    if ((bits & 0x7FFFU) > 0x7C00U) {
      EXPECT_TRUE(std::isnan(value));
      EXPECT_TRUE(std::isnan(halfToFloat(floatToHalf(value))));
    } else {
      ASSERT_EQ(floatToHalf(value), half) << bits;
    }
  }
}

TEST(HalfFloat, EveryFiniteHalfHasItsValue) {
  for (std::uint32_t bits = 0; bits < 0x7C00U; ++bits) {
    const int exponent = static_cast<int>(bits >> 10);
    const int fraction = static_cast<int>(bits & 0x3FFU);
    const double value =
        exponent == 0 ? std::ldexp(fraction, -24) : std::ldexp(1024 + fraction, exponent - 25);
    ASSERT_EQ(static_cast<double>(halfToFloat(static_cast<std::uint16_t>(bits))), value) << bits;
    ASSERT_EQ(static_cast<double>(halfToFloat(static_cast<std::uint16_t>(bits | 0x8000U))), -value) << bits;
  }
}

TEST(HalfFloat, TiesRoundToEven) {
  for (std::uint32_t bits = 0; bits < 0x7BFFU; ++bits) {
    const auto low = static_cast<std::uint16_t>(bits);
    const auto high = static_cast<std::uint16_t>(bits + 1);
    const float middle = (halfToFloat(low) + halfToFloat(high)) / 2;
    ASSERT_EQ(floatToHalf(middle), (bits & 1U) == 0 ? low : high) << bits;
    ASSERT_EQ(floatToHalf(std::nextafter(middle, 0.0F)), low) << bits;
    ASSERT_EQ(floatToHalf(std::nextafter(middle, 1e9F)), high) << bits;
  }
}

TEST(HalfFloat, ValuesBeyondTheRangeBecomeInfinite) {
  EXPECT_EQ(floatToHalf(65504.0F), 0x7BFF);
  EXPECT_EQ(floatToHalf(std::nextafter(65520.0F, 0.0F)), 0x7BFF);
  EXPECT_EQ(floatToHalf(65520.0F), 0x7C00);
  EXPECT_EQ(floatToHalf(-1e30F), 0xFC00);
  EXPECT_EQ(floatToHalf(-0.0F), 0x8000);
}

TEST(HalfFloat, SanitizedValuesAreFinite) {
  const float infinity = std::numeric_limits<float>::infinity();
  EXPECT_EQ(sanitized(std::numeric_limits<float>::quiet_NaN()), 0.0F);
  EXPECT_EQ(sanitized(infinity), 65504.0F);
  EXPECT_EQ(sanitized(-infinity), -65504.0F);
  EXPECT_EQ(sanitized(-3.5F), -3.5F);
}

static_assert(halfToFloat(0x3C00) == 1.0F && floatToHalf(0.5F) == 0x3800);

}  // namespace
}  // namespace orvanel
