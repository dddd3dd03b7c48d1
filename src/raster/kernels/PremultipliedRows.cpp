#include "raster/kernels/PremultipliedRows.h"

#include <algorithm>
#include <cmath>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "raster/kernels/PremultipliedRows.cpp"
#include "hwy/foreach_target.h"  // IWYU pragma: keep
#include "hwy/highway.h"
#include "raster/kernels/PixelVectors.h"

HWY_BEFORE_NAMESPACE();
namespace orvanel::kernels::HWY_NAMESPACE {

/// One pixel: red, green, blue, alpha.
using Pixel4 = hn::FixedTag<float, 4>;
inline constexpr Pixel4 pixel4;

template <typename Source>
HWY_NOINLINE void premultiplyPixels(const std::byte* in, float* out, int count) {
  const VF32 scale = hn::Set(f32, Source::scale);
  const int lanes = static_cast<int>(hn::Lanes(f32));
  for (int i = 0; i < count; i += lanes, in += lanes * Source::pixelBytes) {
    const RgbPlanes p = Source::rgb(in);
    const VF32 alpha = hn::Mul(p.alpha, scale);
    hn::StoreInterleaved4(hn::Mul(hn::Mul(p.red, scale), alpha), hn::Mul(hn::Mul(p.green, scale), alpha),
                          hn::Mul(hn::Mul(p.blue, scale), alpha), alpha, f32, out + 4 * i);
  }
}

HWY_NOINLINE void premultiplyMask(const std::byte* in, float* out, int count) {
  const auto* mask = reinterpret_cast<const std::uint16_t*>(in);
  const int lanes = static_cast<int>(hn::Lanes(f32));
  for (int i = 0; i < count; i += lanes) {
    const VF32 value = hn::Mul(maskLanes(mask + i), hn::Set(f32, halfScale));
    hn::StoreInterleaved4(value, value, value, value, f32, out + 4 * i);
  }
}

void premultiplyRow(PixelFormat format, const std::byte* in, float* out, int count) {
  switch (format) {
    case PixelFormat::r16Float:
      return premultiplyMask(in, out, count);
    case PixelFormat::rg8Unorm:
      return premultiplyPixels<Rg8Source>(in, out, count);
    case PixelFormat::rg16Unorm:
      return premultiplyPixels<Rg16Source>(in, out, count);
    case PixelFormat::rgba8Unorm:
      return premultiplyPixels<Rgba8Source>(in, out, count);
    default:
      return premultiplyPixels<Rgba16FloatSource>(in, out, count);
  }
}

HWY_INLINE VF32 clampedToUnit(VF32 value) {
  return hn::Min(hn::Max(value, hn::Zero(f32)), hn::Set(f32, 1.0F));
}

/// `vanishing` is the largest alpha that the format stores as 0.
template <typename Store>
HWY_NOINLINE void unpremultiplyPixels(const float* in, std::byte* out, int count, ColorRange range,
                                      float vanishing) {
  const int lanes = static_cast<int>(hn::Lanes(f32));
  for (int i = 0; i < count; i += lanes, out += lanes * Store::pixelBytes) {
    VF32 red;
    VF32 green;
    VF32 blue;
    VF32 alpha;
    hn::LoadInterleaved4(f32, in + 4 * i, red, green, blue, alpha);
    alpha = clampedToUnit(alpha);
    const auto visible = hn::Gt(alpha, hn::Set(f32, vanishing));
    const VF32 divisor = hn::IfThenElse(visible, alpha, hn::Set(f32, 1.0F));
    RgbPlanes p{hn::Div(red, divisor), hn::Div(green, divisor), hn::Div(blue, divisor), alpha};
    if (range == ColorRange::unit) {
      p = {clampedToUnit(p.red), clampedToUnit(p.green), clampedToUnit(p.blue), alpha};
    }
    Store::rgb({hn::IfThenElseZero(visible, p.red), hn::IfThenElseZero(visible, p.green),
                hn::IfThenElseZero(visible, p.blue), hn::IfThenElseZero(visible, p.alpha)},
               out);
  }
}

HWY_NOINLINE void unpremultiplyMask(const float* in, std::byte* out, int count) {
  const hn::Rebind<std::uint16_t, F32> u16;
  const int lanes = static_cast<int>(hn::Lanes(f32));
  for (int i = 0; i < count; i += lanes) {
    VF32 red;
    VF32 green;
    VF32 blue;
    VF32 alpha;
    hn::LoadInterleaved4(f32, in + 4 * i, red, green, blue, alpha);
    hn::Store(hn::TruncateTo(u16, toHalfBits(clampedToUnit(alpha))), u16,
              reinterpret_cast<std::uint16_t*>(out) + i);
  }
}

void unpremultiplyRow(PixelFormat format, const float* in, std::byte* out, int count, ColorRange range) {
  switch (format) {
    case PixelFormat::r16Float:
      return unpremultiplyMask(in, out, count);
    case PixelFormat::rg8Unorm:
      return unpremultiplyPixels<Rg8Store>(in, out, count, range, 0.5F / 255.0F);
    case PixelFormat::rg16Unorm:
      return unpremultiplyPixels<Rg16Store>(in, out, count, range, 0.5F / 65535.0F);
    case PixelFormat::rgba8Unorm:
      return unpremultiplyPixels<Rgba8Store>(in, out, count, range, 0.5F / 255.0F);
    default:
      return unpremultiplyPixels<Rgba16FloatStore>(in, out, count, range, 0x1p-25F);
  }
}

void addWeightedRow(const float* in, float weight, float* out, int count) {
  const VF32 factor = hn::Set(f32, weight);
  const int lanes = static_cast<int>(hn::Lanes(f32));
  for (int i = 0; i < count; i += lanes) {
    hn::Store(hn::MulAdd(factor, hn::Load(f32, in + i), hn::Load(f32, out + i)), f32, out + i);
  }
}

void filterRow(const float* in, int origin, const FilterTaps* taps, float* out, int count) {
  for (int x = 0; x < count; ++x) {
    const float* pixel = in + 4 * static_cast<std::ptrdiff_t>(taps[x].first - origin);
    auto sum = hn::Zero(pixel4);
    for (int i = 0; i < taps[x].count; ++i, pixel += 4) {
      sum = hn::MulAdd(hn::Set(pixel4, taps[x].weights[i]), hn::Load(pixel4, pixel), sum);
    }
    hn::Store(sum, pixel4, out + 4 * x);
  }
}

/// Positions within a row as whole numbers of 2^-32 pixels.
HWY_INLINE std::int64_t fixedPoint(double value) {
  return std::llround(value * 0x1p32);
}

void addBilinearRow(const RingedBlock& block, double u, double v, double du, double dv, float* out,
                    int count) {
  // Shifted by the ring, every coordinate that matters is positive. What lies this close to the rim has
  // no weight worth telling, and leaves room for the rounding of positions.
  constexpr double rim = 1e-6;
  const auto isInside = [&](int i) {
    const double x = u + i * du + 1.0;
    const double y = v + i * dv + 1.0;
    return x >= rim && y >= rim && x < block.width + 1.0 - rim && y < block.height + 1.0 - rim;
  };
  int begin = 0;
  int end = count;
  while (begin < end && !isInside(begin)) ++begin;
  while (end > begin && !isInside(end - 1)) --end;
  if (begin == end) return;
  // A longer step leaves no second pixel inside.
  constexpr double longest = 1e5;
  std::int64_t x = fixedPoint(u + begin * du + 1.0);
  std::int64_t y = fixedPoint(v + begin * dv + 1.0);
  const std::int64_t stepX = fixedPoint(std::clamp(du, -longest, longest));
  const std::int64_t stepY = fixedPoint(std::clamp(dv, -longest, longest));
  const std::size_t stride = block.stride();
  for (int i = begin; i < end; ++i, x += stepX, y += stepY) {
    const float* corner =
        block.pixels + static_cast<std::size_t>(y >> 32) * stride + 4 * static_cast<std::size_t>(x >> 32);
    const auto acrossWeight =
        hn::Set(pixel4, static_cast<float>(static_cast<std::int32_t>(x >> 1 & 0x7FFFFFFF)) * 0x1p-31F);
    const auto downWeight =
        hn::Set(pixel4, static_cast<float>(static_cast<std::int32_t>(y >> 1 & 0x7FFFFFFF)) * 0x1p-31F);
    const auto topLeft = hn::Load(pixel4, corner);
    const auto bottomLeft = hn::Load(pixel4, corner + stride);
    const auto top = hn::MulAdd(acrossWeight, hn::Sub(hn::Load(pixel4, corner + 4), topLeft), topLeft);
    const auto low =
        hn::MulAdd(acrossWeight, hn::Sub(hn::Load(pixel4, corner + stride + 4), bottomLeft), bottomLeft);
    const auto sample = hn::MulAdd(downWeight, hn::Sub(low, top), top);
    hn::Store(hn::Add(hn::Load(pixel4, out + 4 * i), sample), pixel4, out + 4 * i);
  }
}

}  // namespace orvanel::kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace orvanel::kernels {

HWY_EXPORT(premultiplyRow);
HWY_EXPORT(unpremultiplyRow);
HWY_EXPORT(addWeightedRow);
HWY_EXPORT(filterRow);
HWY_EXPORT(addBilinearRow);

void premultiplyRow(PixelFormat format, const std::byte* in, float* out, int count) {
  HWY_DYNAMIC_DISPATCH(premultiplyRow)(format, in, out, count);
}

void unpremultiplyRow(PixelFormat format, const float* in, std::byte* out, int count, ColorRange range) {
  HWY_DYNAMIC_DISPATCH(unpremultiplyRow)(format, in, out, count, range);
}

void addWeightedRow(const float* in, float weight, float* out, int count) {
  HWY_DYNAMIC_DISPATCH(addWeightedRow)(in, weight, out, count);
}

void filterRow(const float* in, int origin, const FilterTaps* taps, float* out, int count) {
  HWY_DYNAMIC_DISPATCH(filterRow)(in, origin, taps, out, count);
}

void addBilinearRow(const RingedBlock& block, double u, double v, double du, double dv, float* out,
                    int count) {
  HWY_DYNAMIC_DISPATCH(addBilinearRow)(block, u, v, du, dv, out, count);
}

}  // namespace orvanel::kernels
#endif
