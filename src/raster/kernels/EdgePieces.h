// The pieces of a polygon's edges within one slab of a row, and what they add to the columns they meet.
// Pure functions, safe on any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace orvanel::kernels {

/// Differences of coverage from column to column, which a piece of height 1 gives to the column of its left
/// end and to the next two. A column of -1 says that the piece reaches further, or beyond the canvas.
struct PieceShares {
  std::vector<std::int32_t> columns;
  std::vector<double> first;
  std::vector<double> second;
  std::vector<double> third;

  void resize(std::size_t count);
};

/// Arrays of pieces have room for a multiple of this many.
inline constexpr std::size_t piecesAtOnce = 8;

/// Shares of the pieces from `enter[i]` at the slab's top to `leave[i]` at its bottom. `count` is a multiple
/// of `piecesAtOnce`.
void sharePieces(const double* enter, const double* leave, std::size_t count, int canvasWidth,
                 PieceShares& shares);

}  // namespace orvanel::kernels
