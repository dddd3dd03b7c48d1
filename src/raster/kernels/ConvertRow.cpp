#include "raster/kernels/ConvertRow.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "raster/kernels/ConvertRow.cpp"
#include "hwy/foreach_target.h"  // IWYU pragma: keep
#include "hwy/highway.h"
#include "raster/kernels/PixelVectors.h"

HWY_BEFORE_NAMESPACE();
namespace orvanel::kernels::HWY_NAMESPACE {

template <typename Source, typename Store>
void convertPixels(const std::byte* source, std::byte* destination, std::size_t count) {
  const VF32 scale = hn::Set(f32, Source::scale);
  const std::size_t lanes = hn::Lanes(f32);
  for (std::size_t i = 0; i < count; i += lanes) {
    const RgbPlanes in = Source::rgb(source);
    Store::rgb(
        {hn::Mul(in.red, scale), hn::Mul(in.green, scale), hn::Mul(in.blue, scale), hn::Mul(in.alpha, scale)},
        destination);
    source += lanes * Source::pixelBytes;
    destination += lanes * Store::pixelBytes;
  }
}

template <typename Source>
void convertFrom(const std::byte* source, std::byte* destination, ColorMode to, std::size_t count) {
  switch (to) {
    case ColorMode::grayscale8:
      return convertPixels<Source, Rg8Store>(source, destination, count);
    case ColorMode::grayscale16:
      return convertPixels<Source, Rg16Store>(source, destination, count);
    case ColorMode::rgb8:
      return convertPixels<Source, Rgba8Store>(source, destination, count);
    case ColorMode::rgb16:
      return convertPixels<Source, Rgba16FloatStore>(source, destination, count);
  }
}

void convertRow(const std::byte* source, ColorMode from, std::byte* destination, ColorMode to,
                std::size_t count) {
  switch (from) {
    case ColorMode::grayscale8:
      return convertFrom<Rg8Source>(source, destination, to, count);
    case ColorMode::grayscale16:
      return convertFrom<Rg16Source>(source, destination, to, count);
    case ColorMode::rgb8:
      return convertFrom<Rgba8Source>(source, destination, to, count);
    case ColorMode::rgb16:
      return convertFrom<Rgba16FloatSource>(source, destination, to, count);
  }
}

}  // namespace orvanel::kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace orvanel::kernels {

HWY_EXPORT(convertRow);

void convertRow(const std::byte* source, ColorMode from, std::byte* destination, ColorMode to,
                std::size_t count) {
  HWY_DYNAMIC_DISPATCH(convertRow)(source, from, destination, to, count);
}

}  // namespace orvanel::kernels
#endif
