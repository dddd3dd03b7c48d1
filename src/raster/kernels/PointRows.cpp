#include "raster/kernels/PointRows.h"

#include <array>
#include <functional>
#include <numeric>
#include <type_traits>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "raster/kernels/PointRows.cpp"
#include "hwy/foreach_target.h"  // IWYU pragma: keep
#include "hwy/highway.h"

#include "hwy/contrib/math/math-inl.h"
#include "raster/kernels/PixelVectors.h"

HWY_BEFORE_NAMESPACE();
namespace orvanel::kernels::HWY_NAMESPACE {

/// A format's load and store together; `vanishing` is the largest alpha that is stored as 0. Channels hold
/// values as numbers: integers, or the bits of half floats.
struct Rgba8 {
  using Source = Rgba8Source;
  using Store = Rgba8Store;
  static constexpr float vanishing = 0.5F / 255.0F;
  static HWY_INLINE VU32 numberOf(VF32 value) { return toByteLanes(value); }
};
struct Rgba16Float {
  using Source = Rgba16FloatSource;
  using Store = Rgba16FloatStore;
  static constexpr float vanishing = 0x1p-25F;
  static HWY_INLINE VU32 numberOf(VF32 value) { return toHalfBits(value); }
};
struct Rg8 {
  using Source = Rg8Source;
  using Store = Rg8Store;
  static constexpr float vanishing = 0.5F / 255.0F;
  static HWY_INLINE VU32 numberOf(VF32 value) { return toByteLanes(value); }
};
struct Rg16 {
  using Source = Rg16Source;
  using Store = Rg16Store;
  static constexpr float vanishing = 0.5F / 65535.0F;
  static HWY_INLINE VU32 numberOf(VF32 value) { return toWordLanes(value); }
};

template <typename Format>
HWY_INLINE RgbPlanes loadPixels(const std::byte* pixels) {
  const VF32 scale = hn::Set(f32, Format::Source::scale);
  const RgbPlanes raw = Format::Source::rgb(pixels);
  return {hn::Mul(raw.red, scale), hn::Mul(raw.green, scale), hn::Mul(raw.blue, scale),
          hn::Mul(raw.alpha, scale)};
}

HWY_INLINE VF32 loadWeights(const std::uint16_t* weights) {
  return hn::Mul(maskLanes(weights), hn::Set(f32, halfScale));
}

HWY_INLINE void storeMask(VF32 value, std::uint16_t* mask) {
  const hn::Rebind<std::uint16_t, F32> u16;
  hn::Store(hn::TruncateTo(u16, toHalfBits(value)), u16, mask);
}

/// Empties the pixels whose alpha is stored as 0.
template <typename Format>
HWY_INLINE RgbPlanes withoutVanished(const RgbPlanes& in) {
  const auto visible = hn::Gt(in.alpha, hn::Set(f32, Format::vanishing));
  return {hn::IfThenElseZero(visible, in.red), hn::IfThenElseZero(visible, in.green),
          hn::IfThenElseZero(visible, in.blue), hn::IfThenElseZero(visible, in.alpha)};
}

template <typename M>
HWY_INLINE RgbPlanes choose(M which, const RgbPlanes& yes, const RgbPlanes& no) {
  return {hn::IfThenElse(which, yes.red, no.red), hn::IfThenElse(which, yes.green, no.green),
          hn::IfThenElse(which, yes.blue, no.blue), hn::IfThenElse(which, yes.alpha, no.alpha)};
}

HWY_INLINE VF32 mixed(VF32 from, VF32 to, VF32 weight) {
  return hn::MulAdd(hn::Sub(to, from), weight, from);
}

/// Changes the three colour channels by `op`, mixed by weight.
template <typename Format, typename Op>
HWY_NOINLINE void mapColors(const Op& op, const std::byte* in, std::byte* out, const std::uint16_t* weights,
                            int count) {
  const int lanes = static_cast<int>(hn::Lanes(f32));
  for (int i = 0; i < count; i += lanes) {
    const RgbPlanes p = loadPixels<Format>(in);
    RgbPlanes q{op.color(p.red), op.color(p.green), op.color(p.blue), p.alpha};
    if (weights != nullptr) {
      const VF32 s = loadWeights(weights + i);
      q = {mixed(p.red, q.red, s), mixed(p.green, q.green, s), mixed(p.blue, q.blue, s), p.alpha};
    }
    Format::Store::rgb(q, out);
    in += lanes * Format::Source::pixelBytes;
    out += lanes * Format::Store::pixelBytes;
  }
}

template <typename Op>
HWY_INLINE void mapColorsOf(PixelFormat format, const Op& op, const std::byte* in, std::byte* out,
                            const std::uint16_t* weights, int count) {
  switch (format) {
    case PixelFormat::rg8Unorm:
      return mapColors<Rg8>(op, in, out, weights, count);
    case PixelFormat::rg16Unorm:
      return mapColors<Rg16>(op, in, out, weights, count);
    case PixelFormat::rgba8Unorm:
      return mapColors<Rgba8>(op, in, out, weights, count);
    default:
      return mapColors<Rgba16Float>(op, in, out, weights, count);
  }
}

struct InvertOp {
  HWY_INLINE VF32 color(VF32 c) const { return hn::Sub(hn::Set(f32, 1.0F), c); }
};

struct StepOp {
  float black;
  HWY_INLINE VF32 color(VF32 c) const {
    // The margin keeps a value that equals black below the step however it was rounded.
    return hn::IfThenElseZero(hn::Gt(c, hn::Set(f32, black + 1e-6F)), hn::Set(f32, 1.0F));
  }
};

struct LinearLevelsOp {
  float black;
  float perUnit;
  HWY_INLINE VF32 color(VF32 c) const {
    const VF32 t = hn::Mul(hn::Sub(c, hn::Set(f32, black)), hn::Set(f32, perUnit));
    return hn::Min(hn::Max(t, hn::Zero(f32)), hn::Set(f32, 1.0F));
  }
};

struct GammaLevelsOp {
  LinearLevelsOp linear;
  float exponent;
  HWY_INLINE VF32 color(VF32 c) const {
    const VF32 t = linear.color(c);
    const auto positive = hn::Gt(t, hn::Zero(f32));
    const VF32 logarithm = hn::Log(f32, hn::IfThenElse(positive, t, hn::Set(f32, 1.0F)));
    // Below e^-80 nothing is left in any format; the clamp keeps the exponential in its range.
    const VF32 power = hn::Max(hn::Mul(logarithm, hn::Set(f32, exponent)), hn::Set(f32, -80.0F));
    return hn::IfThenElseZero(positive, hn::Exp(f32, power));
  }
};

/// Evaluates a tabulated curve.
template <typename Format>
struct CurveOp {
  const float* curve;
  HWY_INLINE VF32 color(VF32 c) const {
    return hn::GatherIndex(f32, curve, hn::BitCast(i32, Format::numberOf(c)));
  }
};

HWY_INLINE LinearLevelsOp linearLevels(const LevelsParams& params) {
  return {params.black, 1.0F / (params.white - params.black)};
}

HWY_INLINE GammaLevelsOp gammaLevels(const LevelsParams& params) {
  return {linearLevels(params), 1.0F / params.gamma};
}

void invertRow(PixelFormat format, const std::byte* in, std::byte* out, const std::uint16_t* weights,
               int count) {
  mapColorsOf(format, InvertOp{}, in, out, weights, count);
}

void levelsRow(PixelFormat format, const std::byte* in, std::byte* out, const std::uint16_t* weights,
               const LevelsParams& params, int count) {
  if (!(params.white > params.black)) {
    return mapColorsOf(format, StepOp{params.black}, in, out, weights, count);
  }
  if (!(params.gamma > 0.0F) || params.gamma == 1.0F) {
    return mapColorsOf(format, linearLevels(params), in, out, weights, count);
  }
  mapColorsOf(format, gammaLevels(params), in, out, weights, count);
}

template <typename Format>
HWY_NOINLINE void tabulateOp(const GammaLevelsOp& op, std::uint32_t first, std::uint32_t count, float* curve,
                             std::uint16_t* rounded) {
  const hn::Rebind<std::uint16_t, F32> u16;
  constexpr bool isFloat = std::is_same_v<Format, Rgba16Float>;
  const auto lanes = static_cast<std::uint32_t>(hn::Lanes(f32));
  // Two passes: a compiler might fuse the scaling with the curve's first step, which would round otherwise
  // than a row of pixels does.
  for (std::uint32_t i = 0; i < count; i += lanes) {
    const VU32 numbers = hn::Iota(u32, first + i);
    const VF32 raw = isFloat ? lowHalf(numbers) : byteLane(numbers);
    hn::StoreU(hn::Mul(raw, hn::Set(f32, Format::Source::scale)), f32, curve + i);
  }
  for (std::uint32_t i = 0; i < count; i += lanes) {
    const VF32 value = op.color(hn::LoadU(f32, curve + i));
    hn::StoreU(value, f32, curve + i);
    hn::StoreU(hn::TruncateTo(u16, Format::numberOf(value)), u16, rounded + i);
  }
}

void tabulateLevels(PixelFormat format, const LevelsParams& params, std::uint32_t first, std::uint32_t count,
                    float* curve, std::uint16_t* rounded) {
  const GammaLevelsOp op = gammaLevels(params);
  switch (format) {
    case PixelFormat::rg8Unorm:
    case PixelFormat::rgba8Unorm:
      return tabulateOp<Rgba8>(op, first, count, curve, rounded);
    case PixelFormat::rg16Unorm:
      return tabulateOp<Rg16>(op, first, count, curve, rounded);
    default:
      return tabulateOp<Rgba16Float>(op, first, count, curve, rounded);
  }
}

void curveRow(PixelFormat format, const std::byte* in, std::byte* out, const std::uint16_t* weights,
              const float* curve, int count) {
  switch (format) {
    case PixelFormat::rg8Unorm:
      return mapColors<Rg8>(CurveOp<Rg8>{curve}, in, out, weights, count);
    case PixelFormat::rg16Unorm:
      return mapColors<Rg16>(CurveOp<Rg16>{curve}, in, out, weights, count);
    case PixelFormat::rgba8Unorm:
      return mapColors<Rgba8>(CurveOp<Rgba8>{curve}, in, out, weights, count);
    default:
      return mapColors<Rgba16Float>(CurveOp<Rgba16Float>{curve}, in, out, weights, count);
  }
}

template <typename Format>
HWY_NOINLINE void fillPixelsOf(const std::byte* in, std::byte* out, const std::uint16_t* weights,
                               const Color4& color, int count) {
  const VF32 one = hn::Set(f32, 1.0F);
  const VF32 alpha = hn::Set(f32, color[3]);
  const int lanes = static_cast<int>(hn::Lanes(f32));
  for (int i = 0; i < count; i += lanes) {
    const RgbPlanes p = loadPixels<Format>(in);
    const VF32 s = weights != nullptr ? loadWeights(weights + i) : one;
    const VF32 stay = hn::Mul(p.alpha, hn::Sub(one, s));
    const VF32 come = hn::Mul(alpha, s);
    const VF32 sum = hn::Add(stay, come);
    const VF32 divisor = hn::IfThenElse(hn::Gt(sum, hn::Zero(f32)), sum, one);
    const RgbPlanes q{hn::Div(hn::MulAdd(hn::Set(f32, color[0]), come, hn::Mul(p.red, stay)), divisor),
                      hn::Div(hn::MulAdd(hn::Set(f32, color[1]), come, hn::Mul(p.green, stay)), divisor),
                      hn::Div(hn::MulAdd(hn::Set(f32, color[2]), come, hn::Mul(p.blue, stay)), divisor), sum};
    const auto untouched = hn::Eq(s, hn::Zero(f32));
    Format::Store::rgb(choose(untouched, p, withoutVanished<Format>(q)), out);
    in += lanes * Format::Source::pixelBytes;
    out += lanes * Format::Store::pixelBytes;
  }
}

void fillRow(PixelFormat format, const std::byte* in, std::byte* out, const std::uint16_t* weights,
             const Color4& color, int count) {
  switch (format) {
    case PixelFormat::rg8Unorm:
      return fillPixelsOf<Rg8>(in, out, weights, color, count);
    case PixelFormat::rg16Unorm:
      return fillPixelsOf<Rg16>(in, out, weights, color, count);
    case PixelFormat::rgba8Unorm:
      return fillPixelsOf<Rgba8>(in, out, weights, color, count);
    default:
      return fillPixelsOf<Rgba16Float>(in, out, weights, color, count);
  }
}

template <typename Format>
HWY_NOINLINE void maskPixels(const std::byte* in, std::byte* out, const std::uint16_t* mask, int count) {
  const int lanes = static_cast<int>(hn::Lanes(f32));
  for (int i = 0; i < count; i += lanes) {
    const RgbPlanes p = loadPixels<Format>(in);
    const VF32 m = loadWeights(mask + i);
    const RgbPlanes q{p.red, p.green, p.blue, hn::Mul(p.alpha, m)};
    const auto untouched = hn::Eq(m, hn::Set(f32, 1.0F));
    Format::Store::rgb(choose(untouched, p, withoutVanished<Format>(q)), out);
    in += lanes * Format::Source::pixelBytes;
    out += lanes * Format::Store::pixelBytes;
  }
}

void maskAlphaRow(PixelFormat format, const std::byte* in, std::byte* out, const std::uint16_t* mask,
                  int count) {
  switch (format) {
    case PixelFormat::rg8Unorm:
      return maskPixels<Rg8>(in, out, mask, count);
    case PixelFormat::rg16Unorm:
      return maskPixels<Rg16>(in, out, mask, count);
    case PixelFormat::rgba8Unorm:
      return maskPixels<Rgba8>(in, out, mask, count);
    default:
      return maskPixels<Rgba16Float>(in, out, mask, count);
  }
}

template <typename Format>
HWY_NOINLINE void flagWithin(const std::byte* in, const Color4& color, float limit, std::uint8_t* flags,
                             int count) {
  const hn::Rebind<std::uint8_t, F32> u8;
  const VF32 red = hn::Set(f32, color[0]);
  const VF32 green = hn::Set(f32, color[1]);
  const VF32 blue = hn::Set(f32, color[2]);
  const VF32 alpha = hn::Set(f32, color[3]);
  const int lanes = static_cast<int>(hn::Lanes(f32));
  for (int i = 0; i < count; i += lanes, in += lanes * Format::Source::pixelBytes) {
    const RgbPlanes p = loadPixels<Format>(in);
    const VF32 colors = hn::Max(hn::AbsDiff(p.red, red), hn::AbsDiff(p.green, green));
    const VF32 distance = hn::Max(colors, hn::Max(hn::AbsDiff(p.blue, blue), hn::AbsDiff(p.alpha, alpha)));
    const VU32 flag =
        hn::IfThenElseZero(hn::RebindMask(u32, hn::Le(distance, hn::Set(f32, limit))), hn::Set(u32, 1U));
    hn::StoreU(hn::TruncateTo(u8, flag), u8, flags + i);
  }
}

void withinRow(PixelFormat format, const std::byte* in, const Color4& color, float limit, std::uint8_t* flags,
               int count) {
  switch (format) {
    case PixelFormat::rg8Unorm:
      return flagWithin<Rg8>(in, color, limit, flags, count);
    case PixelFormat::rg16Unorm:
      return flagWithin<Rg16>(in, color, limit, flags, count);
    case PixelFormat::rgba8Unorm:
      return flagWithin<Rgba8>(in, color, limit, flags, count);
    default:
      return flagWithin<Rgba16Float>(in, color, limit, flags, count);
  }
}

template <typename Format>
HWY_NOINLINE void extractChannelOf(const std::byte* in, int channel, std::uint16_t* out, int count) {
  const int lanes = static_cast<int>(hn::Lanes(f32));
  for (int i = 0; i < count; i += lanes, in += lanes * Format::Source::pixelBytes) {
    const RgbPlanes p = loadPixels<Format>(in);
    const VF32 value = channel == 0 ? p.red : channel == 1 ? p.green : channel == 2 ? p.blue : p.alpha;
    storeMask(hn::Min(hn::Max(value, hn::Zero(f32)), hn::Set(f32, 1.0F)), out + i);
  }
}

void channelRow(PixelFormat format, const std::byte* in, int channel, std::uint16_t* out, int count) {
  switch (format) {
    case PixelFormat::rg8Unorm:
      return extractChannelOf<Rg8>(in, channel, out, count);
    case PixelFormat::rg16Unorm:
      return extractChannelOf<Rg16>(in, channel, out, count);
    case PixelFormat::rgba8Unorm:
      return extractChannelOf<Rgba8>(in, channel, out, count);
    default:
      return extractChannelOf<Rgba16Float>(in, channel, out, count);
  }
}

// Mask values are ordered like their bits, integers below 0x8000.
void maximumMaskRow(const std::uint16_t* a, const std::uint16_t* b, std::uint16_t* out, int count) {
  const hn::CappedTag<std::int16_t, 16> i16;
  const int lanes = static_cast<int>(hn::Lanes(i16));
  for (int i = 0; i < count; i += lanes) {
    const auto first = hn::Load(i16, reinterpret_cast<const std::int16_t*>(a + i));
    const auto second = hn::Load(i16, reinterpret_cast<const std::int16_t*>(b + i));
    hn::Store(hn::Max(first, second), i16, reinterpret_cast<std::int16_t*>(out + i));
  }
}

void minimumMaskRow(const std::uint16_t* a, const std::uint16_t* b, std::uint16_t* out, int count) {
  const hn::CappedTag<std::int16_t, 16> i16;
  const int lanes = static_cast<int>(hn::Lanes(i16));
  for (int i = 0; i < count; i += lanes) {
    const auto first = hn::Load(i16, reinterpret_cast<const std::int16_t*>(a + i));
    const auto second = hn::Load(i16, reinterpret_cast<const std::int16_t*>(b + i));
    hn::Store(hn::Min(first, second), i16, reinterpret_cast<std::int16_t*>(out + i));
  }
}

void invertMaskRow(const std::uint16_t* in, std::uint16_t* out, int count) {
  const int lanes = static_cast<int>(hn::Lanes(f32));
  for (int i = 0; i < count; i += lanes) {
    storeMask(hn::Sub(hn::Set(f32, 1.0F), loadWeights(in + i)), out + i);
  }
}

// Halves of one sign are in the order of their bits, so only the rest is computed.
void subtractMaskRow(const std::uint16_t* in, const std::uint16_t* operand, std::uint16_t* out, int count) {
  const hn::Rebind<std::uint16_t, F32> u16;
  const hn::Rebind<std::int16_t, F32> i16;
  const int lanes = static_cast<int>(hn::Lanes(f32));
  for (int i = 0; i < count; i += lanes) {
    const VF32 rest = hn::Sub(hn::Set(f32, 1.0F), loadWeights(operand + i));
    const auto restBits = hn::BitCast(i16, hn::TruncateTo(u16, toHalfBits(rest)));
    const auto held = hn::Load(i16, reinterpret_cast<const std::int16_t*>(in + i));
    hn::Store(hn::Min(held, restBits), i16, reinterpret_cast<std::int16_t*>(out + i));
  }
}

void fillMaskRow(const std::uint16_t* in, const std::uint16_t* weights, float value, std::uint16_t* out,
                 int count) {
  const int lanes = static_cast<int>(hn::Lanes(f32));
  for (int i = 0; i < count; i += lanes) {
    const VF32 d = loadWeights(in + i);
    const VF32 m = mixed(d, hn::Set(f32, value), loadWeights(weights + i));
    storeMask(hn::Min(hn::Max(m, hn::Zero(f32)), hn::Set(f32, 1.0F)), out + i);
  }
}

std::uint64_t combinedBits(const std::byte* bytes, std::size_t count) {
  const hn::CappedTag<std::uint64_t, 8> u64;
  const auto* words = reinterpret_cast<const std::uint64_t*>(bytes);
  const std::size_t lanes = hn::Lanes(u64);
  // Two sums break the dependency between consecutive loads.
  auto even = hn::Zero(u64);
  auto odd = even;
  for (std::size_t i = 0; i < count / 8; i += 2 * lanes) {
    even = hn::Or(even, hn::Load(u64, words + i));
    odd = hn::Or(odd, hn::Load(u64, words + i + lanes));
  }
  alignas(64) std::array<std::uint64_t, 8> parts{};
  hn::Store(hn::Or(even, odd), u64, parts.data());
  return std::accumulate(parts.begin(), parts.end(), std::uint64_t{0}, std::bit_or<>());
}

}  // namespace orvanel::kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace orvanel::kernels {

HWY_EXPORT(invertRow);
HWY_EXPORT(levelsRow);
HWY_EXPORT(tabulateLevels);
HWY_EXPORT(curveRow);
HWY_EXPORT(fillRow);
HWY_EXPORT(maskAlphaRow);
HWY_EXPORT(withinRow);
HWY_EXPORT(channelRow);
HWY_EXPORT(maximumMaskRow);
HWY_EXPORT(minimumMaskRow);
HWY_EXPORT(invertMaskRow);
HWY_EXPORT(subtractMaskRow);
HWY_EXPORT(fillMaskRow);
HWY_EXPORT(combinedBits);

void invertRow(PixelFormat format, const std::byte* in, std::byte* out, const std::uint16_t* weights,
               int count) {
  HWY_DYNAMIC_DISPATCH(invertRow)(format, in, out, weights, count);
}

void levelsRow(PixelFormat format, const std::byte* in, std::byte* out, const std::uint16_t* weights,
               const LevelsParams& params, int count) {
  HWY_DYNAMIC_DISPATCH(levelsRow)(format, in, out, weights, params, count);
}

void tabulateLevels(PixelFormat format, const LevelsParams& params, std::uint32_t first, std::uint32_t count,
                    float* curve, std::uint16_t* rounded) {
  HWY_DYNAMIC_DISPATCH(tabulateLevels)(format, params, first, count, curve, rounded);
}

void curveRow(PixelFormat format, const std::byte* in, std::byte* out, const std::uint16_t* weights,
              const float* curve, int count) {
  HWY_DYNAMIC_DISPATCH(curveRow)(format, in, out, weights, curve, count);
}

void fillRow(PixelFormat format, const std::byte* in, std::byte* out, const std::uint16_t* weights,
             const Color4& color, int count) {
  HWY_DYNAMIC_DISPATCH(fillRow)(format, in, out, weights, color, count);
}

void maskAlphaRow(PixelFormat format, const std::byte* in, std::byte* out, const std::uint16_t* mask,
                  int count) {
  HWY_DYNAMIC_DISPATCH(maskAlphaRow)(format, in, out, mask, count);
}

void withinRow(PixelFormat format, const std::byte* in, const Color4& color, float limit, std::uint8_t* flags,
               int count) {
  HWY_DYNAMIC_DISPATCH(withinRow)(format, in, color, limit, flags, count);
}

void channelRow(PixelFormat format, const std::byte* in, int channel, std::uint16_t* out, int count) {
  HWY_DYNAMIC_DISPATCH(channelRow)(format, in, channel, out, count);
}

void maximumMaskRow(const std::uint16_t* a, const std::uint16_t* b, std::uint16_t* out, int count) {
  HWY_DYNAMIC_DISPATCH(maximumMaskRow)(a, b, out, count);
}

void minimumMaskRow(const std::uint16_t* a, const std::uint16_t* b, std::uint16_t* out, int count) {
  HWY_DYNAMIC_DISPATCH(minimumMaskRow)(a, b, out, count);
}

void invertMaskRow(const std::uint16_t* in, std::uint16_t* out, int count) {
  HWY_DYNAMIC_DISPATCH(invertMaskRow)(in, out, count);
}

void subtractMaskRow(const std::uint16_t* in, const std::uint16_t* operand, std::uint16_t* out, int count) {
  HWY_DYNAMIC_DISPATCH(subtractMaskRow)(in, operand, out, count);
}

void fillMaskRow(const std::uint16_t* in, const std::uint16_t* weights, float value, std::uint16_t* out,
                 int count) {
  HWY_DYNAMIC_DISPATCH(fillMaskRow)(in, weights, value, out, count);
}

std::uint64_t combinedBits(const std::byte* bytes, std::size_t count) {
  return HWY_DYNAMIC_DISPATCH(combinedBits)(bytes, count);
}

}  // namespace orvanel::kernels
#endif
