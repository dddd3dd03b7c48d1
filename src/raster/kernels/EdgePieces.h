// The pieces of a polygon's edges within one slab of a row, and what they add to the columns they meet.
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

/// Changes of coverage from column to column, which a piece gives to the column of its left end and to the
/// next three. A column of -1 says that the piece reaches further, or beyond the canvas.
struct PieceShares {
  std::array<std::int32_t, PieceBlock::capacity> columns;
  std::array<std::array<double, PieceBlock::capacity>, 4> changes;
};

/// Shares of the first `count` pieces; those of up to seven after them may be written as well.
void sharePieces(const PieceBlock& pieces, std::size_t count, int canvasWidth, PieceShares& shares);

}  // namespace orvanel::kernels
