#include "raster/kernels/SampleRows.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <optional>

#include "raster/Prefetch.h"
#include "raster/Regularity.h"

namespace orvanel::kernels {
namespace {

/// How many rows ahead pixels are asked for; the processor doesn't foresee them where they lie far apart.
constexpr std::size_t rowsAhead = 4;

/// The samples of a row that lie in one column of tiles.
struct Run {
  int tileX = 0;
  std::size_t begin = 0;
  std::size_t end = 0;
  std::int64_t left = 0;  ///< of the tile, on the canvas
  bool isContiguous = false;
};

/// Where a row's samples are found in a surface that is moved by `dx`. Columns within one tile of the canvas
/// lie in two of the surface at most.
class Runs {
 public:
  Runs(const Surface& surface, std::span<const std::int32_t> columns, std::int64_t dx) {
    const auto before = [&](std::int64_t x) {
      const auto isBefore = [dx](std::int32_t column, std::int64_t at) { return column - dx < at; };
      return static_cast<std::size_t>(std::lower_bound(columns.begin(), columns.end(), x, isBefore) -
                                      columns.begin());
    };
    const std::size_t last = before(surface.width());
    for (std::size_t from = before(0); from < last;) {
      const auto tileX = static_cast<int>((columns[from] - dx) / tileSide);
      const std::size_t to = std::min(last, before((std::int64_t{tileX} + 1) * tileSide));
      const bool isContiguous = columns[to - 1] - columns[from] + 1 == static_cast<std::int32_t>(to - from);
      runs_[count_++] = {tileX, from, to, std::int64_t{tileX} * tileSide + dx, isContiguous};
      from = to;
    }
    isWholeRow_ = count_ > 0 && runs_[0].begin == 0 && runs_[count_ - 1].end == columns.size();
  }

  [[nodiscard]] std::span<const Run> all() const { return std::span(runs_).first(count_); }
  [[nodiscard]] bool isWholeRow() const { return isWholeRow_; }

 private:
  std::array<Run, 2> runs_;
  std::size_t count_ = 0;
  bool isWholeRow_ = false;
};

/// Gathers the samples of a block. `Pixel` is an integer as wide as the surface's pixels.
template <typename Pixel>
class Gathering {
 public:
  Gathering(const Surface& surface, const SampleBlock& samples, const OffsetParams& shift)
      : surface_(surface), samples_(samples), dy_(shift.dy), runs_(surface, samples.columns, shift.dx) {}

  void gather(Pixel* out) const {
    for (std::size_t row = 0; row < std::min(rowsAhead, samples_.rows.size()); ++row) askFor(row);
    for (std::size_t row = 0; row < samples_.rows.size(); ++row) {
      if (row + rowsAhead < samples_.rows.size()) askFor(row + rowsAhead);
      gatherRow(row, out + row * samples_.columns.size());
    }
  }

 private:
  /// The row of the surface, or nothing outside it.
  [[nodiscard]] std::optional<int> sourceRow(std::size_t row) const {
    const std::int64_t y = std::int64_t{samples_.rows[row]} - dy_;
    if (y < 0 || y >= surface_.height()) return std::nullopt;
    return static_cast<int>(y);
  }

  [[nodiscard]] const Tile& tileOf(const Run& run, int y) const {
    return surface_.tile(surface_.tileIndex(run.tileX, y / tileSide));
  }

  [[nodiscard]] static const Pixel* rowOf(const Tile& tile, int y) {
    return reinterpret_cast<const Pixel*>(tile.data()) + y % tileSide * tileSide;
  }

  void askFor(std::size_t row) const {
    const std::optional<int> y = sourceRow(row);
    if (!y) return;
    for (const Run& run : runs_.all()) {
      const Tile& tile = tileOf(run, *y);
      if (run.isContiguous || tile.isUniform()) continue;
      const Pixel* pixels = rowOf(tile, *y);
      for (std::size_t i = run.begin; i < run.end; ++i) {
        prefetch(pixels + (samples_.columns[i] - run.left));
      }
    }
  }

  void gatherRow(std::size_t row, Pixel* out) const {
    const std::optional<int> y = sourceRow(row);
    if (!y || !runs_.isWholeRow()) std::fill_n(out, samples_.columns.size(), Pixel{0});
    if (!y) return;
    for (const Run& run : runs_.all()) gatherRun(run, *y, out + run.begin);
  }

  void gatherRun(const Run& run, int y, Pixel* out) const {
    const Tile& tile = tileOf(run, y);
    const std::size_t count = run.end - run.begin;
    if (tile.isUniform()) {
      std::fill_n(out, count, static_cast<Pixel>(regularPixel(tile.pixel(), surface_.format())));
      return;
    }
    const Pixel* pixels = rowOf(tile, y);
    const std::int32_t* columns = samples_.columns.data() + run.begin;
    if (run.isContiguous) {
      std::memcpy(out, pixels + (*columns - run.left), count * sizeof(Pixel));
    } else {
      for (std::size_t i = 0; i < count; ++i) out[i] = pixels[columns[i] - run.left];
    }
    if (tile.has(TileTrait::irregular)) {
      auto* bytes = reinterpret_cast<std::byte*>(out);
      regularise(bytes, bytes, count, surface_.format());
    }
  }

  const Surface& surface_;
  const SampleBlock& samples_;
  std::int64_t dy_;
  Runs runs_;
};

template <typename Pixel>
void gather(const Surface& surface, const SampleBlock& samples, const OffsetParams& shift, std::byte* out) {
  Gathering<Pixel>(surface, samples, shift).gather(reinterpret_cast<Pixel*>(out));
}

}  // namespace

void gatherSamples(const Surface& surface, const SampleBlock& samples, const OffsetParams& shift,
                   std::byte* out) {
  switch (surface.pixelBytes()) {
    case 2:
      return gather<std::uint16_t>(surface, samples, shift, out);
    case 4:
      return gather<std::uint32_t>(surface, samples, shift, out);
    default:
      return gather<std::uint64_t>(surface, samples, shift, out);
  }
}

}  // namespace orvanel::kernels
