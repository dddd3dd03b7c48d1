// Vector loads and stores of pixels as planes of floats, for kernels compiled once per instruction set.
// Included only between HWY_BEFORE_NAMESPACE and HWY_AFTER_NAMESPACE, hence the inverted guard.
#if defined(ORVANEL_PIXEL_VECTORS_H) == defined(HWY_TARGET_TOGGLE)
#ifdef ORVANEL_PIXEL_VECTORS_H
#undef ORVANEL_PIXEL_VECTORS_H
#else
#define ORVANEL_PIXEL_VECTORS_H
#endif

#include <cstddef>
#include <cstdint>

#include "hwy/highway.h"

HWY_BEFORE_NAMESPACE();
namespace orvanel::kernels::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

using F32 = hn::ScalableTag<float>;
using U32 = hn::RebindToUnsigned<F32>;
using I32 = hn::RebindToSigned<F32>;
using VF32 = hn::Vec<F32>;
using VU32 = hn::Vec<U32>;

inline constexpr F32 f32;
inline constexpr U32 u32;
inline constexpr I32 i32;

/// The exponent biases of half and single floats differ by 112; this factor corrects for it. It is a power of
/// two, so folding it into a later multiplication is exact.
inline constexpr float halfScale = 0x1p112F;

/// The half in the low 16 bits of each lane, as a float divided by `halfScale`.
HWY_INLINE VF32 lowHalf(VU32 bits) {
  const auto shifted = hn::ShiftRight<3>(hn::BitCast(i32, hn::ShiftLeft<16>(bits)));
  return hn::BitCast(f32, hn::And(hn::BitCast(u32, shifted), hn::Set(u32, 0x8FFFE000U)));
}

/// The half in the high 16 bits of each lane, as a float divided by `halfScale`.
HWY_INLINE VF32 highHalf(VU32 bits) {
  const auto shifted = hn::ShiftRight<3>(hn::BitCast(i32, bits));
  return hn::BitCast(f32, hn::And(hn::BitCast(u32, shifted), hn::Set(u32, 0x8FFFE000U)));
}

/// Half bits of each lane, rounded to nearest even; lanes are finite and within the half's range.
HWY_INLINE VU32 toHalfBits(VF32 value) {
#if HWY_TARGET <= HWY_AVX2
  // The processor's conversion instruction gives the same bits.
  const hn::Rebind<hwy::float16_t, F32> f16;
  const hn::Rebind<std::uint16_t, F32> u16;
  return hn::PromoteTo(u32, hn::BitCast(u16, hn::DemoteTo(f16, value)));
#else
  const VU32 bits = hn::BitCast(u32, value);
  const VU32 sign = hn::And(bits, hn::Set(u32, 0x80000000U));
  const VU32 magnitude = hn::Xor(bits, sign);
  const VU32 odd = hn::And(hn::ShiftRight<13>(magnitude), hn::Set(u32, 1U));
  const VU32 normal = hn::ShiftRight<13>(hn::Add(hn::Add(magnitude, hn::Set(u32, 0xC8000FFFU)), odd));
  // Below 2^-14 a half is subnormal: adding 0.5 aligns its last bit with the float's.
  const VF32 aligned = hn::Add(hn::BitCast(f32, magnitude), hn::Set(f32, 0.5F));
  const VU32 subnormal = hn::Sub(hn::BitCast(u32, aligned), hn::Set(u32, 0x3F000000U));
  const auto isSubnormal = hn::Lt(hn::BitCast(i32, magnitude), hn::Set(i32, 0x38800000));
  return hn::Or(hn::IfThenElse(hn::RebindMask(u32, isSubnormal), subnormal, normal),
                hn::ShiftRight<16>(sign));
#endif
}

HWY_INLINE VF32 byteLane(VU32 bits) {
  return hn::ConvertTo(f32, hn::BitCast(i32, bits));
}

/// Straight colour and alpha of one vector of pixels, each to be multiplied by the source's `scale`.
struct RgbPlanes {
  VF32 red, green, blue, alpha;
};
struct GreyPlanes {
  VF32 grey, alpha;
};

struct Rgba8Source {
  static constexpr int pixelBytes = 4;
  static constexpr float scale = 1.0F / 255.0F;
  static HWY_INLINE RgbPlanes rgb(const std::byte* pixels) {
    const VU32 bits = hn::Load(u32, reinterpret_cast<const std::uint32_t*>(pixels));
    const VU32 low = hn::Set(u32, 0xFFU);
    return {byteLane(hn::And(bits, low)), byteLane(hn::And(hn::ShiftRight<8>(bits), low)),
            byteLane(hn::And(hn::ShiftRight<16>(bits), low)), byteLane(hn::ShiftRight<24>(bits))};
  }
  static HWY_INLINE GreyPlanes grey(const std::byte* pixels) {
    const VU32 bits = hn::Load(u32, reinterpret_cast<const std::uint32_t*>(pixels));
    return {byteLane(hn::And(bits, hn::Set(u32, 0xFFU))), byteLane(hn::ShiftRight<24>(bits))};
  }
};

struct Rgba16FloatSource {
  static constexpr int pixelBytes = 8;
  static constexpr float scale = halfScale;
  static HWY_INLINE void pairs(const std::byte* pixels, VU32& redGreen, VU32& blueAlpha) {
    const auto* words = reinterpret_cast<const std::uint32_t*>(pixels);
    const VU32 first = hn::Load(u32, words);
    const VU32 second = hn::Load(u32, words + hn::Lanes(u32));
    redGreen = hn::ConcatEven(u32, second, first);
    blueAlpha = hn::ConcatOdd(u32, second, first);
  }
  static HWY_INLINE RgbPlanes rgb(const std::byte* pixels) {
    VU32 redGreen;
    VU32 blueAlpha;
    pairs(pixels, redGreen, blueAlpha);
    return {lowHalf(redGreen), highHalf(redGreen), lowHalf(blueAlpha), highHalf(blueAlpha)};
  }
  static HWY_INLINE GreyPlanes grey(const std::byte* pixels) {
    VU32 redGreen;
    VU32 blueAlpha;
    pairs(pixels, redGreen, blueAlpha);
    return {lowHalf(redGreen), highHalf(blueAlpha)};
  }
};

struct Rg8Source {
  static constexpr int pixelBytes = 2;
  static constexpr float scale = 1.0F / 255.0F;
  static HWY_INLINE GreyPlanes grey(const std::byte* pixels) {
    const hn::Rebind<std::uint16_t, F32> u16;
    const VU32 bits = hn::PromoteTo(u32, hn::Load(u16, reinterpret_cast<const std::uint16_t*>(pixels)));
    return {byteLane(hn::And(bits, hn::Set(u32, 0xFFU))), byteLane(hn::ShiftRight<8>(bits))};
  }
  static HWY_INLINE RgbPlanes rgb(const std::byte* pixels) {
    const GreyPlanes planes = grey(pixels);
    return {planes.grey, planes.grey, planes.grey, planes.alpha};
  }
};

struct Rg16Source {
  static constexpr int pixelBytes = 4;
  static constexpr float scale = 1.0F / 65535.0F;
  static HWY_INLINE GreyPlanes grey(const std::byte* pixels) {
    const VU32 bits = hn::Load(u32, reinterpret_cast<const std::uint32_t*>(pixels));
    return {byteLane(hn::And(bits, hn::Set(u32, 0xFFFFU))), byteLane(hn::ShiftRight<16>(bits))};
  }
  static HWY_INLINE RgbPlanes rgb(const std::byte* pixels) {
    const GreyPlanes planes = grey(pixels);
    return {planes.grey, planes.grey, planes.grey, planes.alpha};
  }
};

/// Mask values divided by `halfScale`.
HWY_INLINE VF32 maskLanes(const std::uint16_t* mask) {
  const hn::Rebind<std::uint16_t, F32> u16;
  return lowHalf(hn::PromoteTo(u32, hn::Load(u16, mask)));
}

/// Values 0 to 1 as integers 0 to 255, rounded to nearest.
HWY_INLINE VU32 toByteLanes(VF32 value) {
  const VF32 clamped = hn::Min(hn::Max(value, hn::Zero(f32)), hn::Set(f32, 1.0F));
  return hn::BitCast(u32, hn::NearestInt(hn::Mul(clamped, hn::Set(f32, 255.0F))));
}

HWY_INLINE VU32 toFiniteHalfBits(VF32 value) {
  const VF32 largest = hn::Set(f32, 65504.0F);
  return toHalfBits(hn::Min(hn::Max(value, hn::Neg(largest)), largest));
}

// Stores of straight colour and alpha, all in 0 to 1 (half floats: finite), rounded to nearest.

struct Rgba8Store {
  static constexpr int pixelBytes = 4;
  static HWY_INLINE void rgb(const RgbPlanes& in, std::byte* pixels) {
    const VU32 low = hn::Or(toByteLanes(in.red), hn::ShiftLeft<8>(toByteLanes(in.green)));
    const VU32 high =
        hn::Or(hn::ShiftLeft<16>(toByteLanes(in.blue)), hn::ShiftLeft<24>(toByteLanes(in.alpha)));
    hn::Store(hn::Or(low, high), u32, reinterpret_cast<std::uint32_t*>(pixels));
  }
};

struct Rgba16FloatStore {
  static constexpr int pixelBytes = 8;
  static HWY_INLINE void rgb(const RgbPlanes& in, std::byte* pixels) {
    const VU32 redGreen = hn::Or(toFiniteHalfBits(in.red), hn::ShiftLeft<16>(toFiniteHalfBits(in.green)));
    const VU32 blueAlpha = hn::Or(toFiniteHalfBits(in.blue), hn::ShiftLeft<16>(toFiniteHalfBits(in.alpha)));
    hn::StoreInterleaved2(redGreen, blueAlpha, u32, reinterpret_cast<std::uint32_t*>(pixels));
  }
};

/// Grey of a colour: 0.299 r + 0.587 g + 0.114 b (ITU-R BT.601); of equal channels, that channel exactly.
HWY_INLINE VF32 luma(const RgbPlanes& in) {
  const VF32 weighted =
      hn::MulAdd(in.red, hn::Set(f32, 0.299F),
                 hn::MulAdd(in.green, hn::Set(f32, 0.587F), hn::Mul(in.blue, hn::Set(f32, 0.114F))));
  const auto neutral = hn::And(hn::Eq(in.red, in.green), hn::Eq(in.green, in.blue));
  return hn::IfThenElse(neutral, in.red, weighted);
}

struct Rg8Store {
  static constexpr int pixelBytes = 2;
  static HWY_INLINE void rgb(const RgbPlanes& in, std::byte* pixels) {
    const hn::Rebind<std::uint16_t, F32> u16;
    const VU32 packed = hn::Or(toByteLanes(luma(in)), hn::ShiftLeft<8>(toByteLanes(in.alpha)));
    hn::Store(hn::TruncateTo(u16, packed), u16, reinterpret_cast<std::uint16_t*>(pixels));
  }
};

/// Values 0 to 1 as integers 0 to 65535, rounded to nearest.
HWY_INLINE VU32 toWordLanes(VF32 value) {
  const VF32 clamped = hn::Min(hn::Max(value, hn::Zero(f32)), hn::Set(f32, 1.0F));
  return hn::BitCast(u32, hn::NearestInt(hn::Mul(clamped, hn::Set(f32, 65535.0F))));
}

struct Rg16Store {
  static constexpr int pixelBytes = 4;
  static HWY_INLINE void rgb(const RgbPlanes& in, std::byte* pixels) {
    const VU32 packed = hn::Or(toWordLanes(luma(in)), hn::ShiftLeft<16>(toWordLanes(in.alpha)));
    hn::Store(packed, u32, reinterpret_cast<std::uint32_t*>(pixels));
  }
};

}  // namespace orvanel::kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
