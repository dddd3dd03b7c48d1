#include "raster/kernels/Coverage.h"

#include <tbb/parallel_for.h>

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "raster/HalfFloat.h"

namespace orvanel::kernels {
namespace {

/// What a stretch of a row holds.
enum class Stretch { empty, full, mixed };

Stretch joined(Stretch a, Stretch b) {
  return a == b ? a : Stretch::mixed;
}

/// The first run that ends after column `x`.
RowCoverage::const_iterator runAt(const RowCoverage& row, int x) {
  return std::partition_point(row.begin(), row.end(), [x](const CoverageRun& run) { return run.end <= x; });
}

/// `run` is the first that ends after `begin`.
Stretch stretchFrom(const RowCoverage& row, RowCoverage::const_iterator run, int begin, int end) {
  if (run == row.end() || run->begin >= end) return Stretch::empty;
  const bool isEven = run->begin <= begin && run->end >= end;
  if (isEven && run->value == 0.0F) return Stretch::empty;
  return isEven && run->value == 1.0F ? Stretch::full : Stretch::mixed;
}

/// How many floats beyond its end `spreadRow` may write.
constexpr int spreadSlack = 16;

/// Columns [begin, begin + count) as floats. `run` is the first that ends after `begin`.
void spreadRow(const RowCoverage& row, RowCoverage::const_iterator run, int begin, int count, float* out) {
  // Along slanting edges runs are short, and sixteen floats at once are sooner written than counted. What
  // a run has too many is written over by what follows it.
  const auto fill = [out](int first, int last, float value) {
    for (; first < last; first += spreadSlack) std::fill_n(out + first, spreadSlack, value);
  };
  int filled = 0;
  for (; run != row.end() && run->begin < begin + count; ++run) {
    const int first = std::max(run->begin - begin, 0);
    const int last = std::min(run->end - begin, count);
    if (filled < first) fill(filled, first, 0.0F);
    fill(first, last, run->value);
    filled = last;
  }
  fill(filled, count, 0.0F);
}

/// Half of a symmetric kernel's reach, and its weights from end to end, which sum to 1.
struct GaussianKernel {
  int reach = 0;
  std::vector<float> weights;
};

GaussianKernel gaussianOf(double sigma) {
  GaussianKernel kernel;
  // Beyond four sigma lie 3e-5 on each side, less than a half float can tell from 1.
  kernel.reach = static_cast<int>(std::ceil(4.0 * sigma));
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
    const auto run = runAt(row, first);
    const Stretch stretch = stretchFrom(row, run, first, last);
    kinds_[static_cast<std::size_t>(y)] = stretch;
    if (stretch != Stretch::mixed) {
      std::fill_n(blurredRow(y), tileSide, stretch == Stretch::full ? 1.0F : 0.0F);
      return;
    }
    const int before = first - (left - kernel_.reach);
    const int count = last - first;
    spreadRow(row, run, first, count, spread_.data() + before);
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
    if (stretch != Stretch::mixed) return mask_.setUniform(index, stretch == Stretch::full ? halfOne : 0);
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

MaskBand::MaskBand(Surface& mask, int tileY)
    : mask_(mask),
      tileY_(tileY),
      firstRow_(tileY * tileSide),
      endRow_(std::min(firstRow_ + tileSide, mask.height())),
      tiles_(static_cast<std::size_t>(mask.tilesAcross())) {}

void MaskBand::writeEven(int tileX, int y, float value) {
  TileState& tile = tiles_[static_cast<std::size_t>(tileX)];
  if (tile.halves == nullptr && (y == firstRow_ || value == tile.even)) {
    tile.even = value;
  } else {
    std::fill_n(rowOf(tileX, y), tileSide, floatToHalf(value));
  }
}

void MaskBand::write(int tileX, int y, const float* values) {
  storeCoverageRow(values, rowOf(tileX, y));
}

void MaskBand::write(int y, const RowCoverage& row) {
  auto run = row.begin();
  for (int tileX = 0; tileX < tilesAcross(); ++tileX) {
    const int begin = tileX * tileSide;
    const int end = std::min(begin + tileSide, mask_.width());
    while (run != row.end() && run->end <= begin) ++run;
    const Stretch stretch = stretchFrom(row, run, begin, end);
    if (stretch == Stretch::mixed) {
      alignas(64) float values[tileSide + spreadSlack] = {};
      spreadRow(row, run, begin, end - begin, values);
      write(tileX, y, values);
    } else {
      writeEven(tileX, y, stretch == Stretch::full ? 1.0F : 0.0F);
    }
  }
}

void MaskBand::finish() {
  for (int tileX = 0; tileX < tilesAcross(); ++tileX) {
    const TileState& tile = tiles_[static_cast<std::size_t>(tileX)];
    const int index = mask_.tileIndex(tileX, tileY_);
    if (tile.halves == nullptr) {
      mask_.setUniform(index, floatToHalf(tile.even));
    } else {
      std::fill(tile.halves + (endRow_ - firstRow_) * tileSide, tile.halves + tilePixels, std::uint16_t{0});
      mask_.collapseIfUniform(index);
    }
  }
}

std::uint16_t* MaskBand::rowOf(int tileX, int y) {
  TileState& tile = tiles_[static_cast<std::size_t>(tileX)];
  const int row = y - firstRow_;
  if (tile.halves == nullptr) {
    tile.halves = reinterpret_cast<std::uint16_t*>(mask_.overwriteTile(mask_.tileIndex(tileX, tileY_)));
    std::fill_n(tile.halves, row * tileSide, floatToHalf(tile.even));
  }
  return tile.halves + row * tileSide;
}

void writeBands(Surface& mask, const std::function<void(MaskBand&)>& write) {
  tbb::parallel_for(0, mask.tilesDown(), [&](int tileY) {
    MaskBand band(mask, tileY);
    write(band);
    band.finish();
  });
}

void writeCoverage(Surface& mask, const RowShape& shape) {
  writeBands(mask, [&](MaskBand& band) {
    RowCoverage row;
    for (int y = band.firstRow(); y < band.endRow(); ++y) {
      row.clear();
      shape(y, row);
      band.write(y, row);
    }
  });
}

void writeBlurredCoverage(Surface& mask, const RowShape& shape, double sigma) {
  if (sigma >= leastWideSigma) return writeWidelyBlurredCoverage(mask, shape, sigma);
  std::vector<RowCoverage> rows(static_cast<std::size_t>(mask.height()));
  tbb::parallel_for(0, mask.height(), [&](int y) { shape(y, rows[static_cast<std::size_t>(y)]); });
  const GaussianKernel kernel = gaussianOf(sigma);
  tbb::parallel_for(0, mask.tilesAcross(), [&](int tileX) { ColumnBlur(mask, rows, kernel).run(tileX); });
}

}  // namespace orvanel::kernels
