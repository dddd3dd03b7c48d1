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

using F64 = hn::CappedTag<double, 8>;
using VF64 = hn::Vec<F64>;
inline constexpr F64 f64;

/// Adds to each lane the one that lies so many to its left.
template <std::size_t distance>
HWY_INLINE VF64 withEarlier(VF64 values) {
  if (distance >= hn::Lanes(f64)) return values;
  const hn::RebindToSigned<F64> i64;
  const auto lane = hn::Iota(i64, -static_cast<std::int64_t>(distance));
  const auto around = hn::And(lane, hn::Set(i64, static_cast<std::int64_t>(hn::Lanes(f64) - 1)));
  const VF64 earlier = hn::TableLookupLanes(values, hn::IndicesFromVec(f64, around));
  return hn::Add(values, hn::IfThenZeroElse(hn::FirstN(f64, distance), earlier));
}

HWY_INLINE VF64 lastLane(VF64 values) {
  const hn::RebindToSigned<F64> i64;
  const auto last = hn::Set(i64, static_cast<std::int64_t>(hn::Lanes(f64) - 1));
  return hn::TableLookupLanes(values, hn::IndicesFromVec(f64, last));
}

bool sumChanges(double* changes, double& sum, float* values) {
  const hn::Rebind<float, F64> floats;
  VF64 before = hn::Set(f64, sum);
  VF64 changed = hn::Zero(f64);
  for (std::size_t x = 0; x < tileSide; x += hn::Lanes(f64)) {
    const VF64 change = hn::LoadU(f64, changes + x);
    hn::StoreU(hn::Zero(f64), f64, changes + x);
    changed = hn::Or(changed, change);
    const VF64 summed = withEarlier<4>(withEarlier<2>(withEarlier<1>(change)));
    const VF64 excess = hn::Sub(hn::Add(before, summed), hn::Set(f64, coverageMargin));
    const VF64 coverage = hn::Min(hn::Max(excess, hn::Zero(f64)), hn::Set(f64, 1.0));
    hn::Store(hn::DemoteTo(floats, coverage), floats, values + x);
    before = hn::Add(before, lastLane(summed));
  }
  sum = hn::GetLane(before);
  return !hn::AllTrue(f64, hn::Eq(changed, hn::Zero(f64)));
}

}  // namespace orvanel::kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace orvanel::kernels {

HWY_EXPORT(weightedRowSum);
HWY_EXPORT(storeCoverageRow);
HWY_EXPORT(sumChanges);

void weightedRowSum(std::span<const float* const> rows, const float* weights, float* out) {
  HWY_DYNAMIC_DISPATCH(weightedRowSum)(rows, weights, out);
}

void storeCoverageRow(const float* values, std::uint16_t* out) {
  HWY_DYNAMIC_DISPATCH(storeCoverageRow)(values, out);
}

bool sumChanges(double* changes, double& sum, float* values) {
  return HWY_DYNAMIC_DISPATCH(sumChanges)(changes, sum, values);
}

}  // namespace orvanel::kernels
#endif
