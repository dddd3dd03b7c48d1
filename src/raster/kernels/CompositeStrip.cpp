#include "raster/kernels/CompositeStrip.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "raster/kernels/CompositeStrip.cpp"
#include "hwy/foreach_target.h"  // IWYU pragma: keep
#include "hwy/highway.h"
#include "raster/kernels/PixelVectors.h"

HWY_BEFORE_NAMESPACE();
namespace orvanel::kernels::HWY_NAMESPACE {

// Blend functions give the accumulator's new premultiplied colour P' from the source colour s, the
// backdrop P with alpha ab, and the source's alpha as. With B the blend of the general formula,
//   P' = P + as * ((1 - ab) * s + ab * B - P),
// where ab * B needs no division because P = ab * Cb. An opaque source in the normal mode gives exactly s, so
// that what it hides may as well be left out.

struct Backdrop {
  VF32 alpha;
  VF32 oneMinusAlpha;
};

/// Products of values far above 1 would run out of a float's range within a few layers.
HWY_INLINE VF32 withinRange(VF32 P) {
  const VF32 largest = hn::Set(f32, 65504.0F);
  return hn::Min(hn::Max(P, hn::Neg(largest)), largest);
}

template <typename Mix>
struct MixBlend {
  static HWY_INLINE VF32 blend(VF32 s, VF32 P, const Backdrop& back, VF32 as) {
    const VF32 target = hn::MulAdd(back.oneMinusAlpha, s, Mix::mixed(s, P, back.alpha));
    return withinRange(hn::MulAdd(as, hn::Sub(target, P), P));
  }
};

struct NormalBlend {
  static HWY_INLINE VF32 blend(VF32 s, VF32 P, const Backdrop&, VF32 as) {
    return hn::MulAdd(as, s, hn::Mul(hn::Sub(hn::Set(f32, 1.0F), as), P));
  }
};
struct MultiplyBlend {
  static HWY_INLINE VF32 blend(VF32 s, VF32 P, const Backdrop& back, VF32 as) {
    return withinRange(hn::MulAdd(as, hn::MulSub(s, hn::Add(back.oneMinusAlpha, P), P), P));
  }
};
struct ScreenBlend {
  static HWY_INLINE VF32 blend(VF32 s, VF32 P, const Backdrop&, VF32 as) {
    return withinRange(hn::MulAdd(hn::Mul(as, s), hn::Sub(hn::Set(f32, 1.0F), P), P));
  }
};
struct OverlayMix {
  static HWY_INLINE VF32 mixed(VF32 s, VF32 P, VF32 ab) {
    const VF32 two = hn::Set(f32, 2.0F);
    const VF32 dark = hn::Mul(two, hn::Mul(s, P));
    const VF32 light = hn::NegMulAdd(hn::Mul(two, hn::Sub(hn::Set(f32, 1.0F), s)), hn::Sub(ab, P), ab);
    return hn::IfThenElse(hn::Le(hn::Add(P, P), ab), dark, light);
  }
};
struct DarkenMix {
  static HWY_INLINE VF32 mixed(VF32 s, VF32 P, VF32 ab) { return hn::Min(P, hn::Mul(ab, s)); }
};
struct LightenMix {
  static HWY_INLINE VF32 mixed(VF32 s, VF32 P, VF32 ab) { return hn::Max(P, hn::Mul(ab, s)); }
};
struct DifferenceMix {
  static HWY_INLINE VF32 mixed(VF32 s, VF32 P, VF32 ab) { return hn::Abs(hn::NegMulAdd(ab, s, P)); }
};
struct ExclusionMix {
  static HWY_INLINE VF32 mixed(VF32 s, VF32 P, VF32 ab) {
    return hn::MulAdd(s, hn::NegMulAdd(hn::Set(f32, 2.0F), P, ab), P);
  }
};

template <typename Blend, typename Format, bool masked>
HWY_NOINLINE void compositeRgb(StripAccumulator& acc, const StripSource& source, int count) {
  const VF32 one = hn::Set(f32, 1.0F);
  const VF32 scale = hn::Set(f32, Format::scale);
  const VF32 alphaScale = hn::Set(f32, Format::scale * source.opacity);
  const int lanes = static_cast<int>(hn::Lanes(f32));
  const std::byte* pixels = source.pixels;
  for (int i = 0; i < count; i += lanes, pixels += lanes * Format::pixelBytes) {
    __builtin_prefetch(pixels + stripPixels * Format::pixelBytes, 0, 2);
    if constexpr (Format::pixelBytes == 8) {
      __builtin_prefetch(pixels + stripPixels * Format::pixelBytes + 64, 0, 2);
    }
    const RgbPlanes planes = Format::rgb(pixels);
    VF32 as = hn::Mul(planes.alpha, alphaScale);
    if constexpr (masked) as = hn::Mul(as, hn::Mul(maskLanes(source.mask + i), hn::Set(f32, halfScale)));
    const VF32 ab = hn::Load(f32, acc.alpha + i);
    const Backdrop back{ab, hn::Sub(one, ab)};
    const VF32 red = hn::Load(f32, acc.red + i);
    const VF32 green = hn::Load(f32, acc.green + i);
    const VF32 blue = hn::Load(f32, acc.blue + i);
    hn::Store(Blend::blend(hn::Mul(planes.red, scale), red, back, as), f32, acc.red + i);
    hn::Store(Blend::blend(hn::Mul(planes.green, scale), green, back, as), f32, acc.green + i);
    hn::Store(Blend::blend(hn::Mul(planes.blue, scale), blue, back, as), f32, acc.blue + i);
    hn::Store(hn::MulAdd(as, back.oneMinusAlpha, ab), f32, acc.alpha + i);
  }
}

template <typename Blend, typename Format, bool masked>
HWY_NOINLINE void compositeGrey(StripAccumulator& acc, const StripSource& source, int count) {
  const VF32 one = hn::Set(f32, 1.0F);
  const VF32 scale = hn::Set(f32, Format::scale);
  const VF32 alphaScale = hn::Set(f32, Format::scale * source.opacity);
  const int lanes = static_cast<int>(hn::Lanes(f32));
  const std::byte* pixels = source.pixels;
  for (int i = 0; i < count; i += lanes, pixels += lanes * Format::pixelBytes) {
    __builtin_prefetch(pixels + stripPixels * Format::pixelBytes, 0, 2);
    const GreyPlanes planes = Format::grey(pixels);
    VF32 as = hn::Mul(planes.alpha, alphaScale);
    if constexpr (masked) as = hn::Mul(as, hn::Mul(maskLanes(source.mask + i), hn::Set(f32, halfScale)));
    const VF32 ab = hn::Load(f32, acc.alpha + i);
    const Backdrop back{ab, hn::Sub(one, ab)};
    const VF32 grey = hn::Load(f32, acc.red + i);
    hn::Store(Blend::blend(hn::Mul(planes.grey, scale), grey, back, as), f32, acc.red + i);
    hn::Store(hn::MulAdd(as, back.oneMinusAlpha, ab), f32, acc.alpha + i);
  }
}

template <typename Blend, typename Format>
void compositeFormat(StripAccumulator& acc, PlaneSet planes, const StripSource& source, int count) {
  if (planes == PlaneSet::rgb) {
    return source.mask != nullptr ? compositeRgb<Blend, Format, true>(acc, source, count)
                                  : compositeRgb<Blend, Format, false>(acc, source, count);
  }
  return source.mask != nullptr ? compositeGrey<Blend, Format, true>(acc, source, count)
                                : compositeGrey<Blend, Format, false>(acc, source, count);
}

template <typename Blend>
void compositeBlend(StripAccumulator& acc, PlaneSet planes, const StripSource& source, int count) {
  switch (source.format) {
    case PixelFormat::rg8Unorm:
      return compositeFormat<Blend, Rg8Source>(acc, planes, source, count);
    case PixelFormat::rg16Unorm:
      return compositeFormat<Blend, Rg16Source>(acc, planes, source, count);
    case PixelFormat::rgba8Unorm:
      return compositeFormat<Blend, Rgba8Source>(acc, planes, source, count);
    default:
      return compositeFormat<Blend, Rgba16FloatSource>(acc, planes, source, count);
  }
}

void compositeStrip(StripAccumulator& acc, PlaneSet planes, const StripSource& source, int count) {
  switch (source.blendMode) {
    case BlendMode::multiply:
      return compositeBlend<MultiplyBlend>(acc, planes, source, count);
    case BlendMode::screen:
      return compositeBlend<ScreenBlend>(acc, planes, source, count);
    case BlendMode::overlay:
      return compositeBlend<MixBlend<OverlayMix>>(acc, planes, source, count);
    case BlendMode::darken:
      return compositeBlend<MixBlend<DarkenMix>>(acc, planes, source, count);
    case BlendMode::lighten:
      return compositeBlend<MixBlend<LightenMix>>(acc, planes, source, count);
    case BlendMode::difference:
      return compositeBlend<MixBlend<DifferenceMix>>(acc, planes, source, count);
    case BlendMode::exclusion:
      return compositeBlend<MixBlend<ExclusionMix>>(acc, planes, source, count);
    default:
      return compositeBlend<NormalBlend>(acc, planes, source, count);
  }
}

template <typename Format>
void loadFormat(StripAccumulator& acc, PlaneSet planes, const std::byte* pixels, int count) {
  const VF32 scale = hn::Set(f32, Format::scale);
  const int lanes = static_cast<int>(hn::Lanes(f32));
  for (int i = 0; i < count; i += lanes, pixels += lanes * Format::pixelBytes) {
    const RgbPlanes in = Format::rgb(pixels);
    const VF32 alpha = hn::Mul(in.alpha, scale);
    hn::Store(alpha, f32, acc.alpha + i);
    hn::Store(hn::Mul(hn::Mul(in.red, scale), alpha), f32, acc.red + i);
    if (planes == PlaneSet::grey) continue;
    hn::Store(hn::Mul(hn::Mul(in.green, scale), alpha), f32, acc.green + i);
    hn::Store(hn::Mul(hn::Mul(in.blue, scale), alpha), f32, acc.blue + i);
  }
}

void loadStrip(StripAccumulator& acc, PlaneSet planes, PixelFormat format, const std::byte* pixels,
               int count) {
  if (format == PixelFormat::rgba8Unorm) {
    loadFormat<Rgba8Source>(acc, planes, pixels, count);
  } else {
    loadFormat<Rgba16FloatSource>(acc, planes, pixels, count);
  }
}

template <typename Format>
void storeFormat(const StripAccumulator& acc, PlaneSet planes, float smallestAlpha, std::byte* pixels,
                 int count) {
  const int lanes = static_cast<int>(hn::Lanes(f32));
  const float* greenPlane = planes == PlaneSet::grey ? acc.red : acc.green;
  const float* bluePlane = planes == PlaneSet::grey ? acc.red : acc.blue;
  for (int i = 0; i < count; i += lanes, pixels += lanes * Format::pixelBytes) {
    const VF32 alpha = hn::Load(f32, acc.alpha + i);
    // An alpha that the format rounds to 0 leaves nothing of the colour either.
    const auto visible = hn::Gt(alpha, hn::Set(f32, smallestAlpha));
    const VF32 divisor = hn::IfThenElse(visible, alpha, hn::Set(f32, 1.0F));
    const auto straight = [&](const float* plane) HWY_ATTR {
      return hn::IfThenElseZero(visible, hn::Div(hn::Load(f32, plane + i), divisor));
    };
    Format::rgb({straight(acc.red), straight(greenPlane), straight(bluePlane), alpha}, pixels);
  }
}

void storeStrip(const StripAccumulator& acc, PlaneSet planes, PixelFormat format, std::byte* pixels,
                int count) {
  if (format == PixelFormat::rgba8Unorm) {
    storeFormat<Rgba8Store>(acc, planes, 0.5F / 255.0F, pixels, count);
  } else {
    storeFormat<Rgba16FloatStore>(acc, planes, 0x1p-25F, pixels, count);
  }
}

}  // namespace orvanel::kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
#include <algorithm>

#include "raster/Surface.h"

namespace orvanel::kernels {

HWY_EXPORT(compositeStrip);
HWY_EXPORT(loadStrip);
HWY_EXPORT(storeStrip);

void clearStrip(StripAccumulator& accumulator, PlaneSet planes, int count) {
  std::fill_n(accumulator.red, count, 0.0F);
  std::fill_n(accumulator.alpha, count, 0.0F);
  if (planes == PlaneSet::grey) return;
  std::fill_n(accumulator.green, count, 0.0F);
  std::fill_n(accumulator.blue, count, 0.0F);
}

void loadStrip(StripAccumulator& accumulator, PlaneSet planes, PixelFormat format, const std::byte* pixels,
               int count) {
  HWY_DYNAMIC_DISPATCH(loadStrip)(accumulator, planes, format, pixels, count);
}

void compositeStrip(StripAccumulator& accumulator, PlaneSet planes, const StripSource& source, int count) {
  // Uniform pixels and coverage go through the same arithmetic, so that it makes no difference how a tile is
  // held.
  alignas(64) std::byte pixels[stripPixels * 8];
  alignas(64) std::uint16_t mask[stripPixels];
  StripSource data = source;
  if (source.pixels == nullptr) {
    fillPixels(pixels, static_cast<std::size_t>(count), source.uniformPixel, bytesPerPixel(source.format));
    data.pixels = pixels;
  }
  if (source.mask == nullptr && source.uniformMask != halfOne) {
    std::fill_n(mask, count, source.uniformMask);
    data.mask = mask;
  }
  HWY_DYNAMIC_DISPATCH(compositeStrip)(accumulator, planes, data, count);
}

void storeStrip(const StripAccumulator& accumulator, PlaneSet planes, PixelFormat format, std::byte* pixels,
                int count) {
  HWY_DYNAMIC_DISPATCH(storeStrip)(accumulator, planes, format, pixels, count);
}

}  // namespace orvanel::kernels
#endif
