// Rasterises shapes into masks. A shape reports the coverage of each row of pixels; these functions write or
// blur it. Called on the main thread; a shape is queried from several threads at once.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "raster/Surface.h"

namespace orvanel::kernels {

/// Columns [begin, end) of a row with equal coverage.
struct CoverageRun {
  int begin = 0;
  int end = 0;
  float value = 0.0F;  ///< covered share of the area, 0 to 1
};

/// Runs from left to right within the canvas; gaps between them are not covered.
using RowCoverage = std::vector<CoverageRun>;

/// Appends the runs of the row at `y`; `row` is empty on entry.
using RowShape = std::function<void(int y, RowCoverage& row)>;

/// One row of a mask's tiles, written from top to bottom: either all of its pixel rows, or none. A tile
/// allocates memory at the first row that differs from the rows above it.
class MaskBand {
 public:
  MaskBand(Surface& mask, int tileY);

  [[nodiscard]] int firstRow() const { return firstRow_; }
  [[nodiscard]] int endRow() const { return endRow_; }
  [[nodiscard]] int tilesAcross() const { return mask_.tilesAcross(); }

  /// Writes one row of a tile with uniform coverage.
  void writeEven(int tileX, int y, float value);
  /// Writes one row of a tile: 128 values, aligned to 64 bytes.
  void write(int tileX, int y, const float* values);
  void write(int y, const RowCoverage& row);
  /// Evenly covered tiles become uniform; tiles that were not written are empty.
  void finish();

 private:
  struct TileState {
    float even = 0.0F;                ///< the coverage of all rows so far
    std::uint16_t* halves = nullptr;  ///< the tile's bytes, once there are some
  };

  /// A pointer to the tile's row; allocates the tile if needed.
  std::uint16_t* rowOf(int tileX, int y);

  Surface& mask_;
  int tileY_;
  int firstRow_;
  int endRow_;
  std::vector<TileState> tiles_;
};

/// Calls `write` for every band of a mask, in parallel.
void writeBands(Surface& mask, const std::function<void(MaskBand&)>& write);

/// Writes the whole mask; evenly covered tiles become uniform.
void writeCoverage(Surface& mask, const RowShape& shape);

/// As `writeCoverage`, blurred with a Gaussian of `sigma` pixels; the canvas's edges are replicated.
void writeBlurredCoverage(Surface& mask, const RowShape& shape, double sigma);

/// As `writeBlurredCoverage`, within 4e-4, in a time almost independent of `sigma`. `sigma` is at least
/// `leastWideSigma`.
void writeWidelyBlurredCoverage(Surface& mask, const RowShape& shape, double sigma);
inline constexpr double leastWideSigma = 64.0;

/// out[x] = sum over i of weights[i] * rows[i][x], for 128 columns. Rows need no alignment, `out` has 64.
void weightedRowSum(std::span<const float* const> rows, const float* weights, float* out);

/// 128 values 0 to 1 as half floats, both aligned to 64 bytes.
void storeCoverageRow(const float* values, std::uint16_t* out);

/// Rounding makes sums of many pieces miss 0 and 1 slightly. Values this close count as exactly 0 or 1; the
/// margin is smaller than a float's resolution near 1.
inline constexpr double coverageMargin = 1e-9;

/// Accumulates 128 changes into `sum` and clears them. `values`, aligned to 64 bytes, receives the running
/// sums. Returns false when all changes were zero.
bool sumChanges(double* changes, double& sum, float* values);

}  // namespace orvanel::kernels
