// The kernels on masks alone: fill, invert, the combinations. Masks are half floats, 0 to 1, whose order
// is that of their bits as integers.
#include <algorithm>
#include <array>

#include "raster/HalfFloat.h"
#include "raster/kernels/Kernels.h"
#include "raster/kernels/PointRows.h"
#include "raster/kernels/TileAccess.h"

namespace orvanel::kernels {
namespace {

/// A mask value for a record's float; NaN counts as 0.
float coverage(float value) {
  return value > 0.0F ? std::min(value, 1.0F) : 0.0F;
}

std::uint16_t* halves(std::byte* row) {
  return reinterpret_cast<std::uint16_t*>(row);
}
const std::uint16_t* halves(const std::byte* row) {
  return reinterpret_cast<const std::uint16_t*>(row);
}

/// Applies a row function to one pixel.
template <typename Row>
std::uint64_t onePixel(const Row& row, std::uint64_t first, std::uint64_t second) {
  alignas(64) std::array<std::uint16_t, 16> a;
  alignas(64) std::array<std::uint16_t, 16> b;
  a.fill(static_cast<std::uint16_t>(first));
  b.fill(static_cast<std::uint16_t>(second));
  row(a.data(), b.data(), a.data(), 16);
  return a[0];
}

/// The effect of a combination where one side is known to be empty or full.
enum class Known { keepsMask, takesOperand, emptiesMask, fillsMask, computes };

struct Combination {
  Known operandEmpty;
  Known operandFull;
  Known maskEmpty;
  Known maskFull;
};

template <typename Row>
void combineTile(Surface& mask, const Surface& operand, int index, const Combination& rules, const Row& row) {
  const TileReader other(operand, index);
  const auto rule = [&](const TileReader& side, Known empty, Known full) {
    if (!side.isUniform()) return Known::computes;
    return side.pixel() == 0 ? empty : side.pixel() == halfOne ? full : Known::computes;
  };
  Known known = rule(other, rules.operandEmpty, rules.operandFull);
  bool maskIsUniform = false;
  std::uint64_t maskPixel = 0;
  {
    const TileReader mine(mask, index);
    maskIsUniform = mine.isUniform();
    maskPixel = mine.pixel();
    if (known == Known::computes) known = rule(mine, rules.maskEmpty, rules.maskFull);
  }
  if (known == Known::takesOperand && operand.tile(index).has(TileTrait::irregular)) known = Known::computes;
  switch (known) {
    case Known::keepsMask:
      return;
    case Known::takesOperand:
      if (other.isUniform()) return mask.setUniform(index, other.pixel());
      return mask.setTile(index, operand.tile(index));
    case Known::emptiesMask:
      return mask.setUniform(index, 0);
    case Known::fillsMask:
      return mask.setUniform(index, halfOne);
    case Known::computes:
      break;
  }
  if (maskIsUniform && other.isUniform()) {
    return mask.setUniform(index, onePixel(row, maskPixel, other.pixel()));
  }
  TileEditor editor(mask, index);
  for (int y = 0; y < tileSide; ++y) {
    row(halves(editor.source(y)), other.halves(y), halves(editor.target(y)), tileSide);
  }
  mask.collapseIfUniform(index);
}

template <typename Row>
void combine(const Dispatch& dispatch, const Combination& rules, const Row& row) {
  Surface& mask = *dispatch.textures[0];
  const Surface& operand = *dispatch.textures[1];
  if (!fitInSize(mask, operand)) return;
  forEachTile(mask, [&](int index) { combineTile(mask, operand, index, rules, row); });
}

constexpr Combination unionRules{Known::keepsMask, Known::fillsMask, Known::takesOperand, Known::keepsMask};

}  // namespace

void fillMask(const Dispatch& dispatch) {
  dispatch.textures[0]->fill(floatToHalf(coverage(inlineRecord<float>(dispatch))));
}

void invertMask(const Dispatch& dispatch) {
  Surface& mask = *dispatch.textures[0];
  const auto row = [](const std::uint16_t* in, const std::uint16_t*, std::uint16_t* out, int count) {
    invertMaskRow(in, out, count);
  };
  forEachTile(mask, [&](int index) {
    if (mask.tile(index).isUniform()) {
      const std::uint64_t pixel = TileReader(mask, index).pixel();
      return mask.setUniform(index, onePixel(row, pixel, 0));
    }
    TileEditor editor(mask, index);
    for (int y = 0; y < tileSide; ++y) {
      invertMaskRow(halves(editor.source(y)), halves(editor.target(y)), tileSide);
    }
  });
}

void addMasks(const Dispatch& dispatch) {
  combine(dispatch, unionRules, maximumMaskRow);
}

void unionMasks(const Dispatch& dispatch) {
  combine(dispatch, unionRules, maximumMaskRow);
}

void subtractMasks(const Dispatch& dispatch) {
  combine(dispatch, {Known::keepsMask, Known::emptiesMask, Known::keepsMask, Known::computes},
          subtractMaskRow);
}

void intersectMasks(const Dispatch& dispatch) {
  combine(dispatch, {Known::emptiesMask, Known::keepsMask, Known::keepsMask, Known::takesOperand},
          minimumMaskRow);
}

void fillMaskWithSelection(const Dispatch& dispatch) {
  const float value = coverage(inlineRecord<float>(dispatch));
  const Known full = value == 0.0F ? Known::emptiesMask : value == 1.0F ? Known::fillsMask : Known::computes;
  combine(dispatch, {Known::keepsMask, full, Known::computes, Known::computes},
          [value](const std::uint16_t* mask, const std::uint16_t* selection, std::uint16_t* out, int count) {
            fillMaskRow(mask, selection, value, out, count);
          });
}

}  // namespace orvanel::kernels
