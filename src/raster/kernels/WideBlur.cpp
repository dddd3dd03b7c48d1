// Wide Gaussian blurs at a cost that doesn't grow with their width: the coverage is averaged over square
// cells, the cells are blurred, and a cubic B-spline through them gives the pixels. Averaging and the spline
// blur as well; the cells' Gaussian is narrower by these variances.
#include <tbb/parallel_for.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>

#include "raster/HalfFloat.h"
#include "raster/kernels/Coverage.h"

namespace orvanel::kernels {
namespace {

/// The largest power of two, up to a tile's side, of which a sigma holds at least eight. An edge that crosses
/// a cell is blurred by between 0 and a quarter of the cell's square more, as variance, than the average
/// sixth: here at most 0.2 % of the whole, which moves no value by more than 4e-4.
int cellSideFor(double sigma) {
  const auto most = static_cast<unsigned>(std::min(sigma / 8.0, 1.0 * tileSide));
  return static_cast<int>(std::bit_floor(most));
}

/// What remains to be blurred among cells of this side, in cells.
double sigmaOfCells(double sigma, double side) {
  const double averaging = (side * side - 1.0) / 12.0;
  const double spline = side * side / 3.0;
  return std::sqrt(sigma * sigma - averaging - spline) / side;
}

std::vector<float> gaussianWeights(double sigma) {
  // Beyond five sigma lie 3e-7 on each side.
  const int reach = static_cast<int>(std::ceil(5.0 * sigma));
  std::vector<double> weights;
  double sum = 0.0;
  for (int i = -reach; i <= reach; ++i) {
    weights.push_back(std::exp(-0.5 * (i / sigma) * (i / sigma)));
    sum += weights.back();
  }
  std::vector<float> normalized;
  for (const double weight : weights) normalized.push_back(static_cast<float>(weight / sum));
  return normalized;
}

/// The weights of the four cells about a place; `t` is how far it lies past the second one's centre.
/// Uniform cubic B-spline, as in C. de Boor, "A Practical Guide to Splines".
std::array<float, 4> splineWeights(double t) {
  const double s = 1.0 - t;
  return {
      static_cast<float>(s * s * s / 6.0), static_cast<float>((3.0 * t * t * t - 6.0 * t * t + 4.0) / 6.0),
      static_cast<float>((3.0 * s * s * s - 6.0 * s * s + 4.0) / 6.0), static_cast<float>(t * t * t / 6.0)};
}

/// Cells of a canvas and of a margin about it, row by row. Rows are whole blocks of 128 for `weightedRowSum`.
class CellGrid {
 public:
  CellGrid(int cellsAcross, int cellsDown, int margin)
      : margin_(margin),
        columns_(cellsAcross + 2 * margin),
        rows_(cellsDown + 2 * margin),
        stride_((columns_ + tileSide - 1) / tileSide * tileSide),
        values_(static_cast<std::size_t>(stride_) * static_cast<std::size_t>(rows_)) {}

  [[nodiscard]] int margin() const { return margin_; }
  [[nodiscard]] int columns() const { return columns_; }
  [[nodiscard]] int rows() const { return rows_; }
  [[nodiscard]] int stride() const { return stride_; }
  /// `index` counts from the margin's beginning.
  [[nodiscard]] float* row(int index) {
    return values_.data() + static_cast<std::size_t>(index) * static_cast<std::size_t>(stride_);
  }
  [[nodiscard]] const float* row(int index) const { return const_cast<CellGrid*>(this)->row(index); }

 private:
  int margin_;
  int columns_;
  int rows_;
  int stride_;
  std::vector<float> values_;
};

class WideBlur {
 public:
  WideBlur(Surface& mask, const RowShape& shape, double sigma)
      : mask_(mask),
        shape_(shape),
        side_(cellSideFor(sigma)),
        weights_(gaussianWeights(sigmaOfCells(sigma, side_))),
        reach_(static_cast<int>(weights_.size() / 2)),
        cells_((mask.width() + side_ - 1) / side_, (mask.height() + side_ - 1) / side_,
               reach_ + splineReach) {}

  void run() {
    tbb::parallel_for(0, cells_.rows(), [&](int row) { average(row); });
    blurAcross();
    blurDown();
    makeSpline();
    tbb::parallel_for(0, mask_.tileCount(), [&](int index) { writeTile(index); });
  }

 private:
  /// Cells beyond a tile's own that its pixels depend on, at each end.
  static constexpr int splineReach = 2;

  /// Averages the pixels of a row of cells. Beyond the canvas its outermost pixels repeat.
  void average(int row) {
    const int top = (row - cells_.margin()) * side_;
    float* cells = cells_.row(row);
    RowCoverage coverage;
    int previous = -1;
    std::vector<float> sums(static_cast<std::size_t>(cells_.columns()));
    for (int y = top; y < top + side_; ++y) {
      const int from = std::clamp(y, 0, mask_.height() - 1);
      if (from != previous) {
        coverage.clear();
        shape_(from, coverage);
        std::ranges::fill(sums, 0.0F);
        for (const CoverageRun& run : coverage) addRun(run, sums);
        previous = from;
      }
      for (std::size_t i = 0; i < sums.size(); ++i) cells[i] += sums[i];
    }
    const float scale = 1.0F / static_cast<float>(side_ * side_);
    for (int i = 0; i < cells_.columns(); ++i) cells[i] *= scale;
  }

  /// Adds a run's pixels to the cells that hold them.
  void addRun(const CoverageRun& run, std::vector<float>& sums) const {
    const int begin = run.begin == 0 ? -cells_.margin() * side_ : run.begin;
    const int end = run.end == mask_.width() ? (cells_.columns() - cells_.margin()) * side_ : run.end;
    for (int x = begin; x < end;) {
      const int cell = (x + cells_.margin() * side_) / side_;
      const int next = std::min((cell + 1 - cells_.margin()) * side_, end);
      sums[static_cast<std::size_t>(cell)] += static_cast<float>(next - x) * run.value;
      x = next;
    }
  }

  /// `sourceRow(i)` is where the row under the i-th weight begins.
  template <typename SourceRow>
  void sumRow(const SourceRow& sourceRow, float* out) {
    std::vector<const float*> sources(weights_.size());
    alignas(64) std::array<float, tileSide> sums;
    for (int left = 0; left < cells_.stride(); left += tileSide) {
      for (std::size_t i = 0; i < sources.size(); ++i) sources[i] = sourceRow(static_cast<int>(i)) + left;
      weightedRowSum(sources, weights_.data(), sums.data());
      std::ranges::copy(sums, out + left);
    }
  }

  void blurAcross() {
    tbb::parallel_for(0, cells_.rows(), [&](int row) {
      // Shifted by the reach, so that every weight finds a cell; what lies in the margin is not used again.
      std::vector<float> shifted(static_cast<std::size_t>(cells_.stride() + 2 * reach_));
      std::copy_n(cells_.row(row), cells_.stride(), shifted.data() + reach_);
      sumRow([&](int i) { return shifted.data() + i; }, cells_.row(row));
    });
  }

  void blurDown() {
    CellGrid blurred = cells_;
    tbb::parallel_for(reach_, cells_.rows() - reach_, [&](int row) {
      sumRow([&](int i) { return cells_.row(row + i - reach_); }, blurred.row(row));
      // The weights add up to 1 only nearly.
      constexpr float nearlyOne = 1.0F - 1e-6F;
      float* cells = blurred.row(row);
      for (int i = 0; i < cells_.columns(); ++i) cells[i] = cells[i] >= nearlyOne ? 1.0F : cells[i];
    });
    cells_ = std::move(blurred);
  }

  /// What each of the cells about a tile gives to the columns of the tile; the same for all tiles and, down
  /// instead of across, for the rows.
  void makeSpline() {
    const int count = tileSide / side_ + 2 * splineReach;
    spline_.assign(static_cast<std::size_t>(count), {});
    for (int x = 0; x < tileSide; ++x) {
      const double place = (x + 0.5) / side_ - 0.5;
      const double before = std::floor(place);
      const std::array<float, 4> weights = splineWeights(place - before);
      for (int i = 0; i < 4; ++i) {
        spline_[static_cast<std::size_t>(static_cast<int>(before) - 1 + i + splineReach)]
               [static_cast<std::size_t>(x)] = weights[static_cast<std::size_t>(i)];
      }
    }
  }

  void writeTile(int index) {
    const PixelRect rect = mask_.tileRect(index);
    const int firstColumn = rect.x / side_ + cells_.margin() - splineReach;
    const int firstRow = rect.y / side_ + cells_.margin() - splineReach;
    const int lastColumn = (rect.x + rect.width - 1) / side_ + cells_.margin() + splineReach;
    const int lastRow = (rect.y + rect.height - 1) / side_ + cells_.margin() + splineReach;
    const float first = cells_.row(firstRow)[firstColumn];
    bool isEven = first == 0.0F || first == 1.0F;
    for (int row = firstRow; row <= lastRow && isEven; ++row) {
      isEven = std::all_of(cells_.row(row) + firstColumn, cells_.row(row) + lastColumn + 1,
                           [first](float value) { return value == first; });
    }
    if (isEven) return mask_.setUniform(index, floatToHalf(first));

    std::vector<const float*> columns;
    for (const auto& column : spline_) columns.push_back(column.data());
    columns.resize(static_cast<std::size_t>(lastColumn - firstColumn + 1));
    std::vector<float> cells(columns.size());
    auto* out = reinterpret_cast<std::uint16_t*>(mask_.overwriteTile(index));
    std::fill(out + rect.height * tileSide, out + tilePixels, std::uint16_t{0});
    for (int y = 0; y < rect.height; ++y, out += tileSide) {
      std::ranges::fill(cells, 0.0F);
      for (int row = firstRow; row <= lastRow; ++row) {
        const float weight = spline_[static_cast<std::size_t>(row - firstRow)][static_cast<std::size_t>(y)];
        if (weight == 0.0F) continue;
        const float* from = cells_.row(row) + firstColumn;
        for (std::size_t i = 0; i < cells.size(); ++i) cells[i] += weight * from[i];
      }
      alignas(64) std::array<float, tileSide> values;
      weightedRowSum(columns, cells.data(), values.data());
      storeCoverageRow(values.data(), out);
    }
    mask_.collapseIfUniform(index);
  }

  Surface& mask_;
  const RowShape& shape_;
  int side_;  ///< of a cell, in pixels
  std::vector<float> weights_;
  int reach_;
  CellGrid cells_;
  std::vector<std::array<float, tileSide>> spline_;
};

}  // namespace

void writeWidelyBlurredCoverage(Surface& mask, const RowShape& shape, double sigma) {
  WideBlur(mask, shape, sigma).run();
}

}  // namespace orvanel::kernels
