#include "raster/fragments/SelectionOutline.h"

#include <algorithm>
#include <bit>
#include <cassert>
#include <cmath>

#include "raster/fragments/ScreenMapping.h"

namespace orvanel {
namespace {

/// View points of a black and a white dash together.
constexpr double patternLength = 8.0;
constexpr double placesPerViewPoint = 256.0 / patternLength;
constexpr int wordBits = 64;

/// From one half to the largest value, infinity included; negative numbers and NaN are below.
bool isSelected(std::uint16_t half) {
  return static_cast<std::uint16_t>(half - 0x3800U) <= 0x7C00U - 0x3800U;
}

/// Which device pixels are selected: one bit for each, over the band and a margin around it.
class SelectedPixels {
 public:
  SelectedPixels(int columns, int rows)
      // A word more, so that 64 pixels can be read from any column on.
      : words_((columns + wordBits - 1) / wordBits + 1), rows_(rows), bits_(size(words_) * size(rows)) {}

  [[nodiscard]] std::span<std::uint64_t> row(int index) {
    return std::span(bits_).subspan(size(index) * size(words_), size(words_));
  }
  [[nodiscard]] std::span<const std::uint64_t> row(int index) const {
    return std::span(bits_).subspan(size(index) * size(words_), size(words_));
  }
  /// The 64 pixels from a column on, the first in the lowest bit.
  [[nodiscard]] std::uint64_t from(int column, int row) const {
    const std::uint64_t* word = &bits_[size(row) * size(words_) + size(column / wordBits)];
    const int shift = column % wordBits;
    return shift == 0 ? word[0] : word[0] >> shift | word[1] << (wordBits - shift);
  }

  enum class Neighbours { four, eight };
  /// Takes away the pixels with a neighbour that isn't selected. Rows and columns beyond the margin count as
  /// not selected.
  void shrink(Neighbours neighbours);

 private:
  static std::size_t size(int value) { return static_cast<std::size_t>(value); }
  static std::vector<std::uint64_t> shrunkSideways(std::span<const std::uint64_t> row);

  int words_;
  int rows_;
  std::vector<std::uint64_t> bits_;
};

std::vector<std::uint64_t> SelectedPixels::shrunkSideways(std::span<const std::uint64_t> row) {
  std::vector<std::uint64_t> result(row.size());
  for (std::size_t i = 0; i < row.size(); ++i) {
    const std::uint64_t fromLeft = row[i] << 1U | (i > 0 ? row[i - 1] >> 63U : 0U);
    const std::uint64_t fromRight = row[i] >> 1U | (i + 1 < row.size() ? row[i + 1] << 63U : 0U);
    result[i] = row[i] & fromLeft & fromRight;
  }
  return result;
}

void SelectedPixels::shrink(Neighbours neighbours) {
  const SelectedPixels before = *this;
  for (int y = 0; y < rows_; ++y) {
    const std::span<std::uint64_t> target = row(y);
    std::ranges::copy(shrunkSideways(before.row(y)), target.begin());
    for (const int beside : {y - 1, y + 1}) {
      const std::vector<std::uint64_t> nothing(size(words_));
      const std::span<const std::uint64_t> other =
          beside < 0 || beside >= rows_ ? std::span<const std::uint64_t>(nothing) : before.row(beside);
      const bool isEight = neighbours == Neighbours::eight;
      const std::vector<std::uint64_t> narrowed =
          isEight ? shrunkSideways(other) : std::vector<std::uint64_t>(other.begin(), other.end());
      std::ranges::transform(target, narrowed, target.begin(), std::bit_and<>());
    }
  }
}

/// Looks selected pixels up in the mask, one device row at a time.
class MaskSampler {
 public:
  MaskSampler(const Surface& mask, const AxisMapping& mapping, PixelSpan columns, int firstColumn)
      : mask_(mask), firstBit_(columns.begin - firstColumn), indices_(mapping.indices(columns)) {
    assert(mask.format() == PixelFormat::r16Float);
  }

  void sample(int documentY, std::span<std::uint64_t> row) const {
    auto from = indices_.begin();
    while (from != indices_.end()) {
      const int tileX = *from / tileSide;
      const auto to = std::lower_bound(from, indices_.end(), (tileX + 1) * tileSide);
      const Tile& tile = mask_.tile(mask_.tileIndex(tileX, documentY / tileSide));
      const int bit = firstBit_ + static_cast<int>(from - indices_.begin());
      if (tile.isUniform()) {
        if (isSelected(static_cast<std::uint16_t>(tile.pixel()))) {
          setBits(row, bit, to - from, [](std::ptrdiff_t) { return true; });
        }
      } else {
        const auto* values = reinterpret_cast<const std::uint16_t*>(tile.data()) +
                             static_cast<std::size_t>(documentY % tileSide) * tileSide;
        setBits(row, bit, to - from,
                [&](std::ptrdiff_t i) { return isSelected(values[from[i] % tileSide]); });
      }
      from = to;
    }
  }

 private:
  /// Sets the bits from `first` on for which `isSet` says so, a word at a time.
  template <typename IsSet>
  static void setBits(std::span<std::uint64_t> row, int first, std::ptrdiff_t count, const IsSet& isSet) {
    for (std::ptrdiff_t i = 0; i < count;) {
      const auto shift = (first + i) % wordBits;
      const std::ptrdiff_t length = std::min(wordBits - shift, count - i);
      std::uint64_t word = 0;
      for (std::ptrdiff_t j = 0; j < length; ++j) word |= std::uint64_t{isSet(i + j)} << j;
      row[static_cast<std::size_t>((first + i) / wordBits)] |= word << shift;
      i += length;
    }
  }

  const Surface& mask_;
  int firstBit_;
  std::vector<std::int32_t> indices_;
};

/// The selected pixels of a band with `margin` pixels around it.
SelectedPixels selectedPixels(const CanvasViewUniforms& view, const Surface& mask, const FragmentBand& band,
                              int margin) {
  const AxisMapping horizontal = AxisMapping::horizontal(view);
  const AxisMapping vertical = AxisMapping::vertical(view);
  SelectedPixels result(band.width + 2 * margin, band.rows + 2 * margin);
  const int firstRow = band.y - margin;
  const PixelSpan columns = horizontal.inside(-margin, band.width + margin);
  const PixelSpan rows = vertical.inside(firstRow, band.y + band.rows + margin);
  if (columns.isEmpty()) return result;
  const MaskSampler sampler(mask, horizontal, columns, -margin);
  for (int y = rows.begin; y < rows.end; ++y) {
    const bool isRepeated = y > rows.begin && vertical.indexAt(y) == vertical.indexAt(y - 1);
    if (isRepeated) {
      std::ranges::copy(result.row(y - 1 - firstRow), result.row(y - firstRow).begin());
    } else {
      sampler.sample(vertical.indexAt(y), result.row(y - firstRow));
    }
  }
  return result;
}

/// The way around the selection at a pixel of its outline: right or left, down or up, each 1 or -1.
struct Way {
  int x;
  int y;
};

/// The way at a pixel as its surroundings at some distance show it; 0 on an axis where they don't.
Way clockwiseSeenFrom(const SelectedPixels& selected, int column, int row, int distance) {
  const std::uint64_t above = selected.from(column - distance, row - distance);
  const std::uint64_t beside = selected.from(column - distance, row);
  const std::uint64_t below = selected.from(column - distance, row + distance);
  const auto at = [](std::uint64_t pixels, int index) { return static_cast<int>((pixels >> index) & 1U); };
  const int right = 2 * distance;
  const int corners = at(below, right) - at(above, 0);
  const int otherCorners = at(above, right) - at(below, 0);
  const int toRight = corners + otherCorners + at(beside, right) - at(beside, 0);
  const int toBottom = corners - otherCorners + at(below, distance) - at(above, distance);
  // What is selected lies on the right-hand side of somebody who walks clockwise.
  return {std::clamp(toBottom, -1, 1), std::clamp(-toRight, -1, 1)};
}

/// How far surroundings are looked at, in widths of the line: first near, for small shapes, then far, because
/// a slope isn't seen where its staircase is flat.
constexpr int near = 3;
constexpr int far = 8;
/// What is read of a row at once reaches as far to both sides.
constexpr int farthest = 31;

/// Along rows and columns both diagonals would do; the choice lets dashes run on around corners.
Way clockwise(const SelectedPixels& selected, int column, int row, int lineWidth) {
  Way way = clockwiseSeenFrom(selected, column, row, std::min(near * lineWidth, farthest));
  if (way.x == 0 || way.y == 0) {
    const Way fromAfar = clockwiseSeenFrom(selected, column, row, std::min(far * lineWidth, farthest));
    if (way.x == 0) way.x = fromAfar.x;
    if (way.y == 0) way.y = fromAfar.y;
  }
  if (way.x == 0) way.x = way.y;
  if (way.y == 0) way.y = way.x;
  return way.x == 0 ? Way{1, 1} : way;
}

}  // namespace

std::vector<OutlinePixel> findOutline(const CanvasViewUniforms& view, const Surface& mask,
                                      const FragmentBand& band) {
  assert(band.rows <= longestOutlineBand);
  const bool fits = mask.width() == static_cast<int>(view.canvasWidth) &&
                    mask.height() == static_cast<int>(view.canvasHeight);
  if (!fits) return {};

  const int lineWidth = std::max(1, static_cast<int>(std::lround(view.scale)));
  const int surroundings = far * lineWidth;
  const SelectedPixels selected = selectedPixels(view, mask, band, surroundings);
  SelectedPixels inner = selected;
  // Alternating keeps the outline as wide on slopes as along rows.
  for (int i = 0; i < lineWidth; ++i) {
    inner.shrink(i % 2 == 0 ? SelectedPixels::Neighbours::four : SelectedPixels::Neighbours::eight);
  }

  // The pattern is anchored to the canvas, so that it stays in place on the outline while the view scrolls.
  const std::int64_t left = AxisMapping::horizontal(view).canvasStart() + surroundings;
  const std::int64_t top = AxisMapping::vertical(view).canvasStart() + surroundings;
  const double places = placesPerViewPoint / static_cast<double>(view.scale);
  std::vector<OutlinePixel> outline;
  for (int row = surroundings; row < surroundings + band.rows; ++row) {
    const auto all = selected.row(row);
    const auto within = inner.row(row);
    for (std::size_t word = 0; word < all.size(); ++word) {
      for (std::uint64_t edge = all[word] & ~within[word]; edge != 0; edge &= edge - 1) {
        const int column = static_cast<int>(word) * wordBits + std::countr_zero(edge);
        if (column < surroundings || column >= surroundings + band.width) continue;
        const Way way = clockwise(selected, column, row, lineWidth);
        const auto along = way.x * (column - left) + way.y * (band.y + row - top);
        const auto place = static_cast<std::int64_t>(std::floor((static_cast<double>(along) + 0.5) * places));
        outline.push_back({static_cast<std::uint16_t>(column - surroundings),
                           static_cast<std::uint8_t>(row - surroundings), static_cast<std::uint8_t>(place)});
      }
    }
  }
  return outline;
}

OutlineColors::OutlineColors(float phase, float scale) {
  const double moved = std::fmod(static_cast<double>(phase), patternLength);
  for (std::size_t place = 0; place < colors_.size(); ++place) {
    double along = static_cast<double>(place) / placesPerViewPoint - moved;
    along -= patternLength * std::floor(along / patternLength);
    // Ends of dashes fade over one device pixel, so that they move smoothly.
    constexpr double dash = patternLength / 2.0;
    const double intoWhite =
        along < dash ? std::min(along, dash - along) : -std::min(along - dash, patternLength - along);
    const double white = std::clamp(0.5 + intoWhite * static_cast<double>(scale), 0.0, 1.0);
    colors_[place] = 0xFF000000U | static_cast<std::uint32_t>(std::lround(white * 255.0)) * 0x010101U;
  }
}

void OutlineColors::draw(std::span<const OutlinePixel> outline, const FragmentBand& band) const {
  for (const OutlinePixel& pixel : outline) bandRow(band, pixel.row)[pixel.x] = colors_[pixel.place];
}

}  // namespace orvanel
