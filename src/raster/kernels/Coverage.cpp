#include "raster/kernels/Coverage.h"

#include <tbb/enumerable_thread_specific.h>
#include <tbb/parallel_for.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>

namespace orvanel::kernels {
namespace {

constexpr std::uint16_t halfOne = 0x3C00;

/// What a stretch of a row holds.
enum class Stretch { empty, full, mixed };

Stretch joined(Stretch a, Stretch b) {
  return a == b ? a : Stretch::mixed;
}

/// The first run that ends after column `x`.
RowCoverage::const_iterator runAt(const RowCoverage& row, int x) {
  return std::partition_point(row.begin(), row.end(), [x](const CoverageRun& run) { return run.end <= x; });
}

Stretch stretchOf(const RowCoverage& row, int begin, int end) {
  const auto run = runAt(row, begin);
  if (run == row.end() || run->begin >= end) return Stretch::empty;
  const bool isEven = run->begin <= begin && run->end >= end;
  if (isEven && run->value == 0.0F) return Stretch::empty;
  return isEven && run->value == 1.0F ? Stretch::full : Stretch::mixed;
}

void setTileTo(Surface& mask, int index, Stretch stretch) {
  mask.setUniform(index, stretch == Stretch::full ? halfOne : 0);
}

/// How many floats beyond its end `spreadRow` may write.
constexpr int spreadSlack = 16;

/// Columns [begin, begin + count) as floats. `from` is a run that begins no further right; gives the one
/// that the columns end in.
RowCoverage::const_iterator spreadRow(const RowCoverage& row, RowCoverage::const_iterator from, int begin,
                                      int count, float* out) {
  // Along slanting edges runs are short, and sixteen floats at once are sooner written than counted. What
  // a run has too many is written over by what follows it.
  const auto fill = [out](int first, int last, float value) {
    for (; first < last; first += spreadSlack) std::fill_n(out + first, spreadSlack, value);
  };
  int filled = 0;
  const auto end = row.end();
  for (; from != end && from->end <= begin; ++from) {
  }
  for (; from != end && from->begin < begin + count; ++from) {
    const int first = std::max(from->begin - begin, 0);
    const int last = std::min(from->end - begin, count);
    if (filled < first) fill(filled, first, 0.0F);
    fill(first, last, from->value);
    filled = last;
    if (from->end >= begin + count) return from;
  }
  fill(filled, count, 0.0F);
  return from;
}

/// Where the writing of tiles from left to right has come to in each row of a band.
using RowCursors = std::array<RowCoverage::const_iterator, tileSide>;

void writeTile(Surface& mask, int index, std::span<const RowCoverage> rows, RowCursors& cursors) {
  const PixelRect rect = mask.tileRect(index);
  Stretch stretch = stretchOf(rows[0], rect.x, rect.x + rect.width);
  for (int y = 1; y < rect.height && stretch != Stretch::mixed; ++y) {
    stretch = joined(stretch, stretchOf(rows[static_cast<std::size_t>(y)], rect.x, rect.x + rect.width));
  }
  if (stretch != Stretch::mixed) return setTileTo(mask, index, stretch);
  auto* out = reinterpret_cast<std::uint16_t*>(mask.overwriteTile(index));
  alignas(64) float values[tileSide + spreadSlack] = {};
  for (std::size_t y = 0; y < rows.size(); ++y) {
    cursors[y] = spreadRow(rows[y], cursors[y], rect.x, rect.width, values);
    storeCoverageRow(values, out + y * tileSide);
  }
  std::fill(out + rect.height * tileSide, out + tilePixels, std::uint16_t{0});
  mask.collapseIfUniform(index);
}

/// Half of a symmetric kernel's reach, and its weights from end to end, which sum to 1.
struct GaussianKernel {
  int reach = 0;
  std::vector<float> weights;
};

GaussianKernel gaussianOf(double sigma) {
  GaussianKernel kernel;
  // Beyond three sigma lies less than a half float can show beside the rest.
  kernel.reach = static_cast<int>(std::ceil(3.0 * sigma));
  std::vector<double> weights;
  double sum = 0.0;
  for (int i = -kernel.reach; i <= kernel.reach; ++i) {
    weights.push_back(std::exp(-0.5 * (i / sigma) * (i / sigma)));
    sum += weights.back();
  }
  for (const double weight : weights) kernel.weights.push_back(static_cast<float>(weight / sum));
  return kernel;
}

/// Blurs one column of tiles: every row across first, then down into the tiles. Only rows and tiles that
/// an edge of the shape comes near are computed.
class ColumnBlur {
 public:
  ColumnBlur(Surface& mask, std::span<const RowCoverage> rows, const GaussianKernel& kernel)
      : mask_(mask),
        rows_(rows),
        kernel_(kernel),
        kinds_(rows.size()),
        blurred_(rows.size() * tileSide),
        spread_(static_cast<std::size_t>(tileSide + 2 * kernel.reach + spreadSlack)),
        sources_(kernel.weights.size()) {}

  void run(int tileX) {
    for (int y = 0; y < mask_.height(); ++y) blurAcross(y, tileX * tileSide);
    for (int tileY = 0; tileY < mask_.tilesDown(); ++tileY) blurDown(mask_.tileIndex(tileX, tileY));
  }

 private:
  float* blurredRow(int y) { return blurred_.data() + static_cast<std::size_t>(y) * tileSide; }

  void blurAcross(int y, int left) {
    const RowCoverage& row = rows_[static_cast<std::size_t>(y)];
    const int first = std::max(left - kernel_.reach, 0);
    const int last = std::min(left + tileSide + kernel_.reach, mask_.width());
    const Stretch stretch = stretchOf(row, first, last);
    kinds_[static_cast<std::size_t>(y)] = stretch;
    if (stretch != Stretch::mixed) {
      std::fill_n(blurredRow(y), tileSide, stretch == Stretch::full ? 1.0F : 0.0F);
      return;
    }
    const int before = first - (left - kernel_.reach);
    const int count = last - first;
    spreadRow(row, runAt(row, first), first, count, spread_.data() + before);
    std::fill_n(spread_.begin(), before, spread_[static_cast<std::size_t>(before)]);
    std::fill(spread_.begin() + before + count, spread_.end(),
              spread_[static_cast<std::size_t>(before + count - 1)]);
    for (std::size_t i = 0; i < sources_.size(); ++i) sources_[i] = spread_.data() + i;
    alignas(64) float sums[tileSide];
    weightedRowSum(sources_, kernel_.weights.data(), sums);
    std::copy_n(sums, tileSide, blurredRow(y));
  }

  void blurDown(int index) {
    const PixelRect rect = mask_.tileRect(index);
    const int first = std::max(rect.y - kernel_.reach, 0);
    const int last = std::min(rect.y + rect.height + kernel_.reach, mask_.height());
    Stretch stretch = kinds_[static_cast<std::size_t>(first)];
    for (int y = first + 1; y < last && stretch != Stretch::mixed; ++y) {
      stretch = joined(stretch, kinds_[static_cast<std::size_t>(y)]);
    }
    if (stretch != Stretch::mixed) return setTileTo(mask_, index, stretch);
    auto* out = reinterpret_cast<std::uint16_t*>(mask_.overwriteTile(index));
    std::fill_n(out, tilePixels, std::uint16_t{0});
    for (int y = rect.y; y < rect.y + rect.height; ++y, out += tileSide) {
      for (std::size_t i = 0; i < sources_.size(); ++i) {
        const int from = y - kernel_.reach + static_cast<int>(i);
        sources_[i] = blurredRow(std::clamp(from, 0, mask_.height() - 1));
      }
      alignas(64) float sums[tileSide];
      weightedRowSum(sources_, kernel_.weights.data(), sums);
      storeCoverageRow(sums, out);
    }
    mask_.collapseIfUniform(index);
  }

  Surface& mask_;
  std::span<const RowCoverage> rows_;
  const GaussianKernel& kernel_;
  std::vector<Stretch> kinds_;
  std::vector<float> blurred_;
  std::vector<float> spread_;
  std::vector<const float*> sources_;
};

}  // namespace

void writeCoverage(Surface& mask, const BandCoverage& shape) {
  // Rows keep their memory from band to band.
  tbb::enumerable_thread_specific<std::array<RowCoverage, tileSide>> memory;
  tbb::parallel_for(0, mask.tilesDown(), [&](int tileY) {
    const int firstRow = tileY * tileSide;
    const auto count = static_cast<std::size_t>(std::min(tileSide, mask.height() - firstRow));
    const std::span<RowCoverage> rows = std::span(memory.local()).first(count);
    for (RowCoverage& row : rows) row.clear();
    shape(firstRow, rows);
    RowCursors cursors;
    for (std::size_t y = 0; y < count; ++y) cursors[y] = rows[y].begin();
    for (int tileX = 0; tileX < mask.tilesAcross(); ++tileX) {
      writeTile(mask, mask.tileIndex(tileX, tileY), rows, cursors);
    }
  });
}

void writeBlurredCoverage(Surface& mask, const BandCoverage& shape, double sigma) {
  std::vector<RowCoverage> rows(static_cast<std::size_t>(mask.height()));
  tbb::parallel_for(0, mask.tilesDown(), [&](int tileY) {
    const int firstRow = tileY * tileSide;
    const auto count = static_cast<std::size_t>(std::min(tileSide, mask.height() - firstRow));
    shape(firstRow, std::span(rows).subspan(static_cast<std::size_t>(firstRow), count));
  });
  const GaussianKernel kernel = gaussianOf(sigma);
  tbb::parallel_for(0, mask.tilesAcross(), [&](int tileX) { ColumnBlur(mask, rows, kernel).run(tileX); });
}

}  // namespace orvanel::kernels
