#include "raster/fragments/DisplayRows.h"

#include <algorithm>
#include <array>
#include <cstring>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "raster/fragments/DisplayRows.cpp"
#include <hwy/foreach_target.h>  // must come before highway.h
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace orvanel::displayRows::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;
using D32 = hn::ScalableTag<std::uint32_t>;
using D16 = hn::ScalableTag<std::uint16_t>;
using V32 = hn::Vec<D32>;

/// Two 8-bit values in 16-bit places times a factor of 0 to 255, divided by 255 and rounded.
HWY_INLINE V32 scaleBytes(V32 pairs, V32 factors) {
  const D16 d16;
  const auto product =
      hn::Add(hn::Mul(hn::BitCast(d16, pairs), hn::BitCast(d16, factors)), hn::Set(d16, 128));
  const auto scaled = hn::ShiftRight<8>(hn::Add(product, hn::ShiftRight<8>(product)));
  return hn::BitCast(D32(), scaled);
}

struct Rgba8Source {
  static constexpr std::size_t pixelBytes = 4;

  static HWY_INLINE V32 load(const std::byte* source) {
    const D32 d;
    const V32 pixel = hn::LoadU(d, reinterpret_cast<const std::uint32_t*>(source));
    const V32 lowBytes = hn::Set(d, 0x00FF00FFU);
    const V32 alpha = hn::ShiftRight<24>(pixel);
    const V32 alphaTwice = hn::Or(alpha, hn::ShiftLeft<16>(alpha));
    const V32 redBlue = scaleBytes(hn::And(pixel, lowBytes), alphaTwice);
    const V32 greenAlpha =
        scaleBytes(hn::And(hn::ShiftRight<8>(pixel), lowBytes), hn::Or(alpha, hn::Set(d, 255U << 16)));
    const V32 blueRed = hn::Or(hn::ShiftRight<16>(redBlue), hn::ShiftLeft<16>(redBlue));
    return hn::Or(blueRed, hn::ShiftLeft<8>(greenAlpha));
  }
};

struct Rgba16FloatSource {
  static constexpr std::size_t pixelBytes = 8;

  template <class VHalf>
  static HWY_INLINE hn::Vec<hn::ScalableTag<float>> unit(VHalf bits) {
    const hn::ScalableTag<float> df;
    const hn::Rebind<hwy::float16_t, hn::ScalableTag<float>> dh;
    const auto value = hn::PromoteTo(df, hn::BitCast(dh, bits));
    // The comparison is false for NaN, which so becomes 0.
    const auto positive = hn::IfThenElseZero(hn::Gt(value, hn::Zero(df)), value);
    return hn::Min(positive, hn::Set(df, 1.0F));
  }

  static HWY_INLINE V32 toByte(hn::Vec<hn::ScalableTag<float>> value) {
    return hn::BitCast(D32(), hn::NearestInt(value));
  }

  static HWY_INLINE V32 load(const std::byte* source) {
    const hn::ScalableTag<float> df;
    const hn::Rebind<std::uint16_t, hn::ScalableTag<float>> du;
    hn::Vec<decltype(du)> red;
    hn::Vec<decltype(du)> green;
    hn::Vec<decltype(du)> blue;
    hn::Vec<decltype(du)> alpha;
    hn::LoadInterleaved4(du, reinterpret_cast<const std::uint16_t*>(source), red, green, blue, alpha);
    const auto scale = hn::Mul(unit(alpha), hn::Set(df, 255.0F));
    const V32 a = toByte(scale);
    const V32 r = toByte(hn::Mul(unit(red), scale));
    const V32 g = toByte(hn::Mul(unit(green), scale));
    const V32 b = toByte(hn::Mul(unit(blue), scale));
    return hn::Or(hn::Or(b, hn::ShiftLeft<8>(g)), hn::Or(hn::ShiftLeft<16>(r), hn::ShiftLeft<24>(a)));
  }
};

template <class Source>
HWY_INLINE Coverage convertRun(const std::byte* source, std::uint32_t* destination, std::size_t count,
                               std::uint32_t channelMask) {
  const D32 d;
  const std::size_t lanes = hn::Lanes(d);
  const V32 mask = hn::Set(d, channelMask);
  V32 all = hn::Set(d, 0xFFFFFFFFU);
  V32 any = hn::Zero(d);
  std::size_t i = 0;
  for (; i + lanes <= count; i += lanes) {
    const V32 pixels = hn::And(Source::load(source + i * Source::pixelBytes), mask);
    all = hn::And(all, pixels);
    any = hn::Or(any, pixels);
    hn::StoreU(pixels, d, destination + i);
  }
  if (i < count) {
    // The remainder goes through a padded copy, so that no pixel beyond the run is accessed.
    HWY_ALIGN std::array<std::byte, HWY_MAX_BYTES / 4 * Source::pixelBytes> padded;
    HWY_ALIGN std::array<std::uint32_t, HWY_MAX_BYTES / 4> converted;
    const std::byte* last = source + (count - 1) * Source::pixelBytes;
    for (std::size_t lane = 0; lane < lanes; ++lane) {
      const std::byte* pixel = std::min(source + (i + lane) * Source::pixelBytes, last);
      std::memcpy(padded.data() + lane * Source::pixelBytes, pixel, Source::pixelBytes);
    }
    const V32 pixels = hn::And(Source::load(padded.data()), mask);
    all = hn::And(all, pixels);
    any = hn::Or(any, pixels);
    hn::Store(pixels, d, converted.data());
    std::memcpy(destination + i, converted.data(), (count - i) * sizeof(std::uint32_t));
  }
  return {hn::AllTrue(d, hn::Eq(hn::ShiftRight<24>(all), hn::Set(d, 255U))),
          hn::AllTrue(d, hn::Eq(any, hn::Zero(d)))};
}

Coverage convertRgba8(const std::byte* source, std::uint32_t* destination, std::size_t count,
                      std::uint32_t channelMask) {
  return convertRun<Rgba8Source>(source, destination, count, channelMask);
}

Coverage convertRgba16Float(const std::byte* source, std::uint32_t* destination, std::size_t count,
                            std::uint32_t channelMask) {
  return convertRun<Rgba16FloatSource>(source, destination, count, channelMask);
}

HWY_INLINE V32 over(V32 below, V32 above) {
  const D32 d;
  const V32 lowBytes = hn::Set(d, 0x00FF00FFU);
  const V32 rest = hn::Sub(hn::Set(d, 255U), hn::ShiftRight<24>(above));
  const V32 factors = hn::Or(rest, hn::ShiftLeft<16>(rest));
  const V32 even = scaleBytes(hn::And(below, lowBytes), factors);
  const V32 odd = scaleBytes(hn::And(hn::ShiftRight<8>(below), lowBytes), factors);
  return hn::Add(above, hn::Or(even, hn::ShiftLeft<8>(odd)));
}

void blendOverRun(std::uint32_t* destination, const std::uint32_t* source, std::size_t count) {
  const D32 d;
  const std::size_t lanes = hn::Lanes(d);
  std::size_t i = 0;
  for (; i + lanes <= count; i += lanes) {
    hn::StoreU(over(hn::LoadU(d, destination + i), hn::LoadU(d, source + i)), d, destination + i);
  }
  if (i < count) {
    HWY_ALIGN std::array<std::uint32_t, HWY_MAX_BYTES / 4> below{};
    HWY_ALIGN std::array<std::uint32_t, HWY_MAX_BYTES / 4> above{};
    const std::size_t rest = (count - i) * sizeof(std::uint32_t);
    std::memcpy(below.data(), destination + i, rest);
    std::memcpy(above.data(), source + i, rest);
    hn::Store(over(hn::Load(d, below.data()), hn::Load(d, above.data())), d, below.data());
    std::memcpy(destination + i, below.data(), rest);
  }
}

}  // namespace orvanel::displayRows::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace orvanel::displayRows {

HWY_EXPORT(convertRgba8);
HWY_EXPORT(convertRgba16Float);
HWY_EXPORT(blendOverRun);

Coverage convert(PixelFormat format, const std::byte* source, std::uint32_t* destination, std::size_t count,
                 std::uint32_t channelMask) {
  if (format == PixelFormat::rgba16Float) {
    return HWY_DYNAMIC_DISPATCH(convertRgba16Float)(source, destination, count, channelMask);
  }
  return HWY_DYNAMIC_DISPATCH(convertRgba8)(source, destination, count, channelMask);
}

void blendOver(std::uint32_t* destination, const std::uint32_t* source, std::size_t count) {
  HWY_DYNAMIC_DISPATCH(blendOverRun)(destination, source, count);
}

}  // namespace orvanel::displayRows
#endif  // HWY_ONCE
