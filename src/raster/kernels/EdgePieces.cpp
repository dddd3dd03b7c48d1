#include "raster/kernels/EdgePieces.h"

#include "raster/kernels/DensePolygon.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "raster/kernels/EdgePieces.cpp"
#include "hwy/foreach_target.h"  // IWYU pragma: keep
#include "hwy/highway.h"

HWY_BEFORE_NAMESPACE();
namespace orvanel::kernels::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

void sharePieces(const PieceBlock& pieces, std::size_t count, int canvasWidth, PieceShares& shares) {
  const hn::CappedTag<double, 8> f64;
  const hn::Rebind<std::int32_t, decltype(f64)> i32;
  const auto zero = hn::Zero(f64);
  const auto one = hn::Set(f64, 1.0);
  const auto half = hn::Set(f64, 0.5);
  for (std::size_t i = 0; i < count; i += hn::Lanes(f64)) {
    const auto top = hn::LoadU(f64, pieces.enter.data() + i);
    const auto bottom = hn::LoadU(f64, pieces.leave.data() + i);
    const auto amount = hn::LoadU(f64, pieces.amount.data() + i);
    const auto left = hn::Min(top, bottom);
    const auto right = hn::Max(top, bottom);
    const auto column = hn::Floor(left);
    // How much of its way from left to right the piece makes in each column.
    const auto inFirst = hn::Sub(hn::Min(right, hn::Add(column, one)), left);
    const auto beyondFirst = hn::Sub(hn::Sub(right, column), one);
    const auto inSecond = hn::Min(hn::Max(beyondFirst, zero), one);
    const auto inThird = hn::Max(hn::Sub(beyondFirst, one), zero);
    const auto span = hn::Sub(right, left);
    const auto isSlanted = hn::Gt(span, hn::Set(f64, 1e-12));
    const auto perColumn = hn::Div(amount, hn::IfThenElse(isSlanted, span, one));
    const auto first = hn::IfThenElse(isSlanted, hn::Mul(inFirst, perColumn), amount);
    const auto second = hn::Mul(inSecond, perColumn);
    const auto third = hn::Mul(inThird, perColumn);
    // A column passes on to the next what lies to the left of the piece's middle there.
    const auto passedFirst = hn::Mul(first, hn::MulAdd(inFirst, half, hn::Sub(left, column)));
    const auto passedSecond = hn::Mul(second, hn::Mul(inSecond, half));
    const auto passedThird = hn::Mul(third, hn::Mul(inThird, half));
    hn::StoreU(hn::Sub(first, passedFirst), f64, shares.changes[0].data() + i);
    hn::StoreU(hn::Add(passedFirst, hn::Sub(second, passedSecond)), f64, shares.changes[1].data() + i);
    hn::StoreU(hn::Add(passedSecond, hn::Sub(third, passedThird)), f64, shares.changes[2].data() + i);
    hn::StoreU(passedThird, f64, shares.changes[3].data() + i);
    const auto isNarrow = hn::Lt(beyondFirst, hn::Set(f64, 2.0));
    const auto isOnCanvas =
        hn::And(hn::And(hn::Ge(left, zero), hn::Gt(right, zero)), hn::Lt(left, hn::Set(f64, canvasWidth)));
    const auto place = hn::IfThenElse(hn::And(isNarrow, isOnCanvas), column, hn::Set(f64, -1.0));
    hn::StoreU(hn::DemoteTo(i32, place), i32, shares.columns.data() + i);
  }
}

void placesOnLine(std::span<const float> enter, std::span<const float> way, float share, float shift,
                  std::int32_t last, std::int32_t* places) {
  const auto placesFrom = [&](auto floats, std::size_t i) {
    const hn::RebindToSigned<decltype(floats)> integers;
    const auto start = hn::Add(hn::LoadU(floats, &enter[i]), hn::Set(floats, shift));
    const auto place = hn::MulAdd(hn::LoadU(floats, &way[i]), hn::Set(floats, share), start);
    const auto most = hn::Set(floats, static_cast<float>(last));
    hn::StoreU(hn::ConvertTo(integers, hn::Min(hn::Max(place, hn::Zero(floats)), most)), integers,
               places + i);
  };
  const hn::ScalableTag<float> many;
  const hn::CappedTag<float, 1> one;
  std::size_t i = 0;
  for (; i + hn::Lanes(many) <= enter.size(); i += hn::Lanes(many)) placesFrom(many, i);
  for (; i < enter.size(); ++i) placesFrom(one, i);
}

}  // namespace orvanel::kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace orvanel::kernels {

HWY_EXPORT(sharePieces);
HWY_EXPORT(placesOnLine);

void sharePieces(const PieceBlock& pieces, std::size_t count, int canvasWidth, PieceShares& shares) {
  HWY_DYNAMIC_DISPATCH(sharePieces)(pieces, count, canvasWidth, shares);
}

void placesOnLine(std::span<const float> enter, std::span<const float> way, float share, float shift,
                  std::int32_t last, std::int32_t* places) {
  HWY_DYNAMIC_DISPATCH(placesOnLine)(enter, way, share, shift, last, places);
}

}  // namespace orvanel::kernels
#endif
