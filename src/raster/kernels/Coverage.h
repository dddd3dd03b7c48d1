// From a shape to a mask: a shape says for each row of pixels how much of which it covers, and these
// functions write or blur that. Called on the main thread; shapes are asked from several threads at once.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "raster/Surface.h"

namespace orvanel::kernels {

/// Columns [begin, end) of a row, covered alike.
struct CoverageRun {
  int begin = 0;
  int end = 0;
  float value = 0.0F;  ///< 0 to 1; 0 means not at all, 1 wholly
};

/// Runs from left to right, within the canvas; what lies between them is not covered.
using RowCoverage = std::vector<CoverageRun>;

/// Fills in the row at `y`, which comes empty.
using RowShape = std::function<void(int y, RowCoverage& row)>;

/// A band of a mask's tiles, written row by row from the top: all of its rows, or none. A tile takes memory
/// from its first row on that isn't covered like those above.
class MaskBand {
 public:
  MaskBand(Surface& mask, int tileY);

  [[nodiscard]] int firstRow() const { return firstRow_; }
  [[nodiscard]] int endRow() const { return endRow_; }
  [[nodiscard]] int tilesAcross() const { return mask_.tilesAcross(); }

  /// A tile's columns of a row, covered alike.
  void writeEven(int tileX, int y, float value);
  /// A tile's columns of a row: 128 values, aligned to 64 bytes.
  void write(int tileX, int y, const float* values);
  void write(int y, const RowCoverage& row);
  /// Tiles that are covered evenly become uniform; what wasn't written is empty.
  void finish();

 private:
  struct TileState {
    float even = 0.0F;                ///< the coverage of all rows so far
    std::uint16_t* halves = nullptr;  ///< the tile's bytes, once there are some
  };

  /// A row of a tile that takes memory from now on.
  std::uint16_t* rowOf(int tileX, int y);

  Surface& mask_;
  int tileY_;
  int firstRow_;
  int endRow_;
  std::vector<TileState> tiles_;
};

/// Calls `write` for every band of a mask, in parallel.
void writeBands(Surface& mask, const std::function<void(MaskBand&)>& write);

/// Writes the whole mask; tiles that are covered evenly become uniform.
void writeCoverage(Surface& mask, const RowShape& shape);

/// The same blurred with a Gaussian of this sigma, in pixels, the canvas's edges replicated.
void writeBlurredCoverage(Surface& mask, const RowShape& shape, double sigma);

/// The same within 4e-4, in a time that hardly depends on sigma, which is at least `leastWideSigma`.
void writeWidelyBlurredCoverage(Surface& mask, const RowShape& shape, double sigma);
inline constexpr double leastWideSigma = 64.0;

/// out[x] = sum over i of weights[i] * rows[i][x], for 128 columns. Rows need no alignment, `out` has 64.
void weightedRowSum(std::span<const float* const> rows, const float* weights, float* out);

/// 128 values 0 to 1 as half floats, both aligned to 64 bytes.
void storeCoverageRow(const float* values, std::uint16_t* out);

/// Sums of many pieces miss 0 and 1 by a little; such pixels lie wholly outside or inside. A float next to
/// 1 is too coarse to see the margin.
inline constexpr double coverageMargin = 1e-9;

/// Adds the changes of 128 columns up, one by one, to `sum`, and empties them. `values` are the coverages on
/// the way, aligned to 64 bytes. False when nothing changed.
bool sumChanges(double* changes, double& sum, float* values);

}  // namespace orvanel::kernels
