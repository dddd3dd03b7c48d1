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

/// Fills in the rows from `firstRow` on. The rows come empty.
using BandCoverage = std::function<void(int firstRow, std::span<RowCoverage> rows)>;

/// Writes the whole mask; tiles that are covered evenly become uniform.
void writeCoverage(Surface& mask, const BandCoverage& shape);

/// The same blurred with a Gaussian of this sigma, in pixels, the canvas's edges replicated.
void writeBlurredCoverage(Surface& mask, const BandCoverage& shape, double sigma);

/// out[x] = sum over i of weights[i] * rows[i][x], for 128 columns. Rows need no alignment, `out` has 64.
void weightedRowSum(std::span<const float* const> rows, const float* weights, float* out);

/// 128 values 0 to 1 as half floats, both aligned to 64 bytes.
void storeCoverageRow(const float* values, std::uint16_t* out);

}  // namespace orvanel::kernels
