#include "raster/kernels/PremultipliedRows.h"

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

HWY_INLINE hn::Vec<Pixel4> weightOf(FixedPoint position) {
  return hn::Set(pixel4,
                 static_cast<float>(static_cast<std::int32_t>(position >> 1 & 0x7FFFFFFF)) * 0x1p-31F);
}

/// Adds the sample between two pixels at `top` and two at `low`.
HWY_INLINE void addBilinear(const float* top, const float* low, FixedPoint u, FixedPoint v, float* out) {
  const auto across = weightOf(u);
  const auto topLeft = hn::Load(pixel4, top);
  const auto lowLeft = hn::Load(pixel4, low);
  const auto above = hn::MulAdd(across, hn::Sub(hn::Load(pixel4, top + 4), topLeft), topLeft);
  const auto below = hn::MulAdd(across, hn::Sub(hn::Load(pixel4, low + 4), lowLeft), lowLeft);
  const auto sample = hn::MulAdd(weightOf(v), hn::Sub(below, above), above);
  hn::Store(hn::Add(hn::Load(pixel4, out), sample), pixel4, out);
}

void addBilinearRow(const RingedBlock& block, const SampleLine& line, float* out, int count) {
  const std::size_t stride = block.stride();
  FixedPoint u = line.u;
  FixedPoint v = line.v;
  for (int i = 0; i < count; ++i, u += line.stepU, v += line.stepV) {
    const float* corner = block.pixels + static_cast<std::size_t>(v >> fixedPointBits) * stride +
                          4 * static_cast<std::size_t>(u >> fixedPointBits);
    addBilinear(corner, corner + stride, u, v, out + 4 * i);
  }
}

void addCollectedSamples(const float* neighbours, const CollectedSample* samples, float* out, int count) {
  for (int i = 0; i < count; ++i, neighbours += 16) {
    addBilinear(neighbours, neighbours + 8, samples[i].u, samples[i].v,
                out + 4 * std::size_t{samples[i].output});
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
HWY_EXPORT(addCollectedSamples);

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

void addBilinearRow(const RingedBlock& block, const SampleLine& line, float* out, int count) {
  HWY_DYNAMIC_DISPATCH(addBilinearRow)(block, line, out, count);
}

void addCollectedSamples(const float* neighbours, const CollectedSample* samples, float* out, int count) {
  HWY_DYNAMIC_DISPATCH(addCollectedSamples)(neighbours, samples, out, count);
}

}  // namespace orvanel::kernels
#endif
