// The pieces of polygon edges within one horizontal slab of a row, and their contribution to each column.
// Pure functions, safe on any thread.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace orvanel::kernels {

/// Pieces from `enter` at the slab's top to `leave` at its bottom. `amount` is the slab's height, with the
/// sign that says whether the polygon begins or ends there.
struct PieceBlock {
  static constexpr std::size_t capacity = 64;
  std::array<double, capacity> enter{};
  std::array<double, capacity> leave{};
  std::array<double, capacity> amount{};
};

/// The coverage changes of each piece in the column of its left end and the next three. A column of -1 marks
/// a piece that extends further or beyond the canvas.
struct PieceShares {
  std::array<std::int32_t, PieceBlock::capacity> columns;
  std::array<std::array<double, PieceBlock::capacity>, 4> changes;
};

/// Computes the shares of the first `count` pieces; up to seven entries beyond them may be overwritten.
void sharePieces(const PieceBlock& pieces, std::size_t count, int canvasWidth, PieceShares& shares);

}  // namespace orvanel::kernels
