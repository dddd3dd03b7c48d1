#include "raster/kernels/EdgePieces.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "raster/kernels/EdgePieces.cpp"
#include "hwy/foreach_target.h"  // IWYU pragma: keep
#include "hwy/highway.h"

HWY_BEFORE_NAMESPACE();
namespace orvanel::kernels::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

void sharePieces(const double* enter, const double* leave, std::size_t count, int canvasWidth,
                 PieceShares& shares) {
  const hn::CappedTag<double, piecesAtOnce> f64;
  const hn::Rebind<std::int32_t, decltype(f64)> i32;
  const auto zero = hn::Zero(f64);
  const auto one = hn::Set(f64, 1.0);
  const auto half = hn::Set(f64, 0.5);
  for (std::size_t i = 0; i < count; i += hn::Lanes(f64)) {
    const auto top = hn::LoadU(f64, enter + i);
    const auto bottom = hn::LoadU(f64, leave + i);
    const auto left = hn::Min(top, bottom);
    const auto right = hn::Max(top, bottom);
    const auto column = hn::Floor(left);
    const auto border = hn::Add(column, one);
    const auto inFirst = hn::Sub(hn::Min(right, border), left);
    const auto inSecond = hn::Max(hn::Sub(right, border), zero);
    const auto span = hn::Sub(right, left);
    const auto isSlanted = hn::Gt(span, hn::Set(f64, 1e-12));
    const auto perColumn = hn::Div(one, hn::IfThenElse(isSlanted, span, one));
    const auto first = hn::IfThenElse(isSlanted, hn::Mul(inFirst, perColumn), one);
    const auto second = hn::Mul(inSecond, perColumn);
    // How far right of the column's left side the piece lies there on average.
    const auto offset = hn::MulAdd(inFirst, half, hn::Sub(left, column));
    const auto beyond = hn::Mul(hn::Mul(inSecond, half), second);
    hn::StoreU(hn::NegMulAdd(first, offset, first), f64, shares.first.data() + i);
    hn::StoreU(hn::MulAdd(first, offset, hn::Sub(second, beyond)), f64, shares.second.data() + i);
    hn::StoreU(beyond, f64, shares.third.data() + i);
    const auto isNarrow = hn::Lt(right, hn::Add(border, one));
    const auto isOnCanvas = hn::And(hn::Ge(left, zero), hn::Lt(left, hn::Set(f64, canvasWidth)));
    const auto place = hn::IfThenElse(hn::And(isNarrow, isOnCanvas), column, hn::Set(f64, -1.0));
    hn::StoreU(hn::DemoteTo(i32, place), i32, shares.columns.data() + i);
  }
}

}  // namespace orvanel::kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace orvanel::kernels {

HWY_EXPORT(sharePieces);

void PieceShares::resize(std::size_t count) {
  columns.resize(count);
  first.resize(count);
  second.resize(count);
  third.resize(count);
}

void sharePieces(const double* enter, const double* leave, std::size_t count, int canvasWidth,
                 PieceShares& shares) {
  HWY_DYNAMIC_DISPATCH(sharePieces)(enter, leave, count, canvasWidth, shares);
}

}  // namespace orvanel::kernels
#endif
