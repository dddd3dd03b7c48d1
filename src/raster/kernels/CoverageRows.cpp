#include "raster/kernels/Coverage.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "raster/kernels/CoverageRows.cpp"
#include "hwy/foreach_target.h"  // IWYU pragma: keep
#include "hwy/highway.h"
#include "raster/kernels/PixelVectors.h"

HWY_BEFORE_NAMESPACE();
namespace orvanel::kernels::HWY_NAMESPACE {

void weightedRowSum(std::span<const float* const> rows, const float* weights, float* out) {
  const std::size_t lanes = hn::Lanes(f32);
  // Four vectors at once keep four sums in registers; 128 is a multiple of that for every target.
  const std::size_t step = 4 * lanes <= tileSide ? 4 * lanes : lanes;
  for (std::size_t x = 0; x < tileSide; x += step) {
    if (step == lanes) {
      VF32 sum = hn::Zero(f32);
      for (std::size_t i = 0; i < rows.size(); ++i) {
        sum = hn::MulAdd(hn::Set(f32, weights[i]), hn::LoadU(f32, rows[i] + x), sum);
      }
      hn::Store(sum, f32, out + x);
      continue;
    }
    VF32 a = hn::Zero(f32);
    VF32 b = a;
    VF32 c = a;
    VF32 d = a;
    for (std::size_t i = 0; i < rows.size(); ++i) {
      const VF32 weight = hn::Set(f32, weights[i]);
      const float* row = rows[i] + x;
      a = hn::MulAdd(weight, hn::LoadU(f32, row), a);
      b = hn::MulAdd(weight, hn::LoadU(f32, row + lanes), b);
      c = hn::MulAdd(weight, hn::LoadU(f32, row + 2 * lanes), c);
      d = hn::MulAdd(weight, hn::LoadU(f32, row + 3 * lanes), d);
    }
    hn::Store(a, f32, out + x);
    hn::Store(b, f32, out + x + lanes);
    hn::Store(c, f32, out + x + 2 * lanes);
    hn::Store(d, f32, out + x + 3 * lanes);
  }
}

void storeCoverageRow(const float* values, std::uint16_t* out) {
  const hn::Rebind<std::uint16_t, F32> u16;
  for (std::size_t x = 0; x < tileSide; x += hn::Lanes(f32)) {
    const VF32 value = hn::Min(hn::Max(hn::Load(f32, values + x), hn::Zero(f32)), hn::Set(f32, 1.0F));
    hn::Store(hn::TruncateTo(u16, toHalfBits(value)), u16, out + x);
  }
}

}  // namespace orvanel::kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace orvanel::kernels {

HWY_EXPORT(weightedRowSum);
HWY_EXPORT(storeCoverageRow);

void weightedRowSum(std::span<const float* const> rows, const float* weights, float* out) {
  HWY_DYNAMIC_DISPATCH(weightedRowSum)(rows, weights, out);
}

void storeCoverageRow(const float* values, std::uint16_t* out) {
  HWY_DYNAMIC_DISPATCH(storeCoverageRow)(values, out);
}

}  // namespace orvanel::kernels
#endif
