#include "raster/kernels/Footprint.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "raster/ColorMode.h"
#include "raster/kernels/PixelAccess.h"
#include "raster/kernels/PremultipliedRows.h"

namespace orvanel::kernels {
namespace {

using Sum = std::array<double, 4>;

void add(Sum& sum, const std::array<float, 4>& pixel, double weight) {
  for (std::size_t channel = 0; channel < 4; ++channel) {
    sum[channel] += weight * static_cast<double>(pixel[channel]);
  }
}

std::array<float, 4> premultiplied(std::uint64_t pixel, PixelFormat format) {
  const Color4 color = colorOfPixel(pixel, format);
  // A mask is a white of that alpha.
  if (format == PixelFormat::r16Float) return color;
  return {color[0] * color[3], color[1] * color[3], color[2] * color[3], color[3]};
}

/// The columns [begin, end) of one row.
struct Span {
  double begin = 0.0;
  double end = 0.0;
  [[nodiscard]] double length() const { return end - begin; }
};

/// Scratch space for one row of a tile.
struct Floats {
  alignas(64) std::array<float, std::size_t{tileSide} * 4> values;
};

/// Reads rows of a source in place, tile by tile.
class RowReader {
 public:
  RowReader(const Surface& source, const PixelRect& clip) : source_(source), clip_(clip) {}

  /// Whether a line of this height takes anything from the clip.
  [[nodiscard]] bool reach(double v) const { return v > clip_.y - 0.5 && v < clip_.y + clip_.height + 0.5; }

  /// Adds `weight` times the row's integral over the span.
  void addSpan(Sum& sum, int row, const Span& span, double weight) const {
    if (row < clip_.y || row >= clip_.y + clip_.height) return;
    const double begin = std::max(span.begin, static_cast<double>(clip_.x));
    const double end = std::min(span.end, static_cast<double>(clip_.x + clip_.width));
    if (!(begin < end)) return;
    const int first = static_cast<int>(begin);
    const int last = static_cast<int>(std::ceil(end)) - 1;
    Sum inner{};
    for (int x = first; x <= last;) {
      const int next = std::min((x / tileSide + 1) * tileSide, last + 1);
      addRun(inner, row, x, next);
      x = next;
    }
    // The pixels at both ends are covered partially.
    add(inner, pixelAt(first, row), first - begin);
    add(inner, pixelAt(last, row), end - (last + 1));
    for (std::size_t channel = 0; channel < 4; ++channel) sum[channel] += weight * inner[channel];
  }

  /// Adds `weight` times the bilinear sample at a point.
  void addPoint(Sum& sum, double u, double v, double weight) const {
    const double x = std::floor(u - 0.5);
    const double y = std::floor(v - 0.5);
    if (!(x >= clip_.x - 1.0 && x < clip_.x + clip_.width)) return;
    if (!(y >= clip_.y - 1.0 && y < clip_.y + clip_.height)) return;
    const double across = u - 0.5 - x;
    const double down = v - 0.5 - y;
    addPair(sum, static_cast<int>(x), static_cast<int>(y), across, weight * (1.0 - down));
    addPair(sum, static_cast<int>(x), static_cast<int>(y) + 1, across, weight * down);
  }

 private:
  [[nodiscard]] std::array<float, 4> pixelAt(int x, int y) const {
    if (x < clip_.x || x >= clip_.x + clip_.width || y < clip_.y || y >= clip_.y + clip_.height) return {};
    return premultiplied(source_.pixelAt(x, y), source_.format());
  }

  /// Adds the pixel at (x, y) and the one to its right, whose share is `across`.
  void addPair(Sum& sum, int x, int y, double across, double weight) const {
    const bool isWithinTile = x >= clip_.x && x + 1 < clip_.x + clip_.width && y >= clip_.y &&
                              y < clip_.y + clip_.height && x % tileSide != tileSide - 1;
    if (!isWithinTile) {
      add(sum, pixelAt(x, y), weight * (1.0 - across));
      return add(sum, pixelAt(x + 1, y), weight * across);
    }
    const Tile& tile = tileAt(x, y);
    if (tile.isUniform()) return add(sum, premultiplied(tile.pixel(), source_.format()), weight);
    Floats floats;
    const float* pixels = premultipliedRun(tile, y, x, x + 2, floats);
    const double left = weight * (1.0 - across);
    const double right = weight * across;
    for (std::size_t channel = 0; channel < 4; ++channel) {
      sum[channel] +=
          left * static_cast<double>(pixels[channel]) + right * static_cast<double>(pixels[channel + 4]);
    }
  }

  /// Adds the pixels [begin, end) of a row, which lie in one tile.
  void addRun(Sum& sum, int row, int begin, int end) const {
    const Tile& tile = tileAt(begin, row);
    if (tile.isUniform()) return add(sum, premultiplied(tile.pixel(), source_.format()), end - begin);
    Floats floats;
    const float* pixel = premultipliedRun(tile, row, begin, end, floats);
    for (int x = begin; x < end; ++x, pixel += 4) {
      for (std::size_t channel = 0; channel < 4; ++channel)
        sum[channel] += static_cast<double>(pixel[channel]);
    }
  }

  [[nodiscard]] const Tile& tileAt(int x, int y) const {
    return source_.tile(source_.tileIndex(x / tileSide, y / tileSide));
  }

  /// The pixels [begin, end) of a row of a tile, in a part of `floats`.
  const float* premultipliedRun(const Tile& tile, int row, int begin, int end, Floats& floats) const {
    // Row functions need whole vectors from an aligned address.
    const int alignment = std::max(16, 64 / source_.pixelBytes());
    const int from = begin % tileSide / alignment * alignment;
    const int count = ((end - 1) % tileSide - from) / 16 * 16 + 16;
    const auto offset = static_cast<std::size_t>(row % tileSide * tileSide + from);
    premultiplyRow(source_.format(), tile.data() + offset * static_cast<std::size_t>(source_.pixelBytes()),
                   floats.values.data(), count);
    return floats.values.data() + static_cast<std::ptrdiff_t>(begin % tileSide - from) * 4;
  }

  const Surface& source_;
  const PixelRect clip_;
};

using Corners = std::array<std::array<double, 2>, 4>;

Corners cornersOf(const Parallelogram& p) {
  const auto [a, b] = p.edge;
  const auto [c, d] = p.otherEdge;
  return {{{p.u, p.v}, {p.u + a, p.v + b}, {p.u + a + c, p.v + b + d}, {p.u + c, p.v + d}}};
}

/// Where a line of this height crosses the outline.
Span chordAt(const Corners& corners, double v) {
  Span chord{std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity()};
  for (std::size_t i = 0; i < corners.size(); ++i) {
    const auto& from = corners[i];
    const auto& to = corners[(i + 1) % corners.size()];
    if ((from[1] <= v) == (to[1] <= v)) continue;
    const double u = from[0] + (v - from[1]) / (to[1] - from[1]) * (to[0] - from[0]);
    chord.begin = std::min(chord.begin, u);
    chord.end = std::max(chord.end, u);
  }
  return chord;
}

/// Adds a chord's integral: the mean of two rows, since a picture may be stretched across its reduction.
void addChord(Sum& sum, const RowReader& rows, const Span& chord, double v) {
  if (!rows.reach(v)) return;
  constexpr double longestPoint = 2.0;
  if (chord.length() <= longestPoint) {
    return rows.addPoint(sum, (chord.begin + chord.end) / 2.0, v, chord.length());
  }
  const double above = std::floor(v - 0.5);
  const double share = v - 0.5 - above;
  rows.addSpan(sum, static_cast<int>(above), chord, 1.0 - share);
  if (share > 0.0) rows.addSpan(sum, static_cast<int>(above) + 1, chord, share);
}

}  // namespace

std::array<float, 4> meanOver(const Surface& source, const PixelRect& clip, const Parallelogram& footprint) {
  const Corners corners = cornersOf(footprint);
  const auto [left, right] = std::ranges::minmax(corners, {}, [](const auto& corner) { return corner[0]; });
  const auto [high, low] = std::ranges::minmax(corners, {}, [](const auto& corner) { return corner[1]; });
  const double top = high[1];
  const double height = low[1] - top;
  const double clipTop = clip.y - 1.0;
  const double clipBottom = clip.y + clip.height + 1.0;
  if (right[0] < clip.x - 1.0 || left[0] > clip.x + clip.width + 1.0) return {};
  if (top + height < clipTop || top > clipBottom) return {};

  constexpr double lowest = 2.0;
  const double lines = height > lowest ? std::min(std::ceil(height), double{maximumCanvasSide}) : 1.0;
  const double step = height / lines;
  const RowReader rows(source, clip);
  Sum sum{};
  double covered = 0.0;
  // Lines beyond the clip add nothing, so they are skipped.
  const double first = step > 0.0 ? std::clamp(std::floor((clipTop - top) / step), 0.0, lines) : 0.0;
  const double last = step > 0.0 ? std::clamp(std::ceil((clipBottom - top) / step), 0.0, lines) : lines;
  for (double line = first; line < last; ++line) {
    const double v = top + (line + 0.5) * step;
    Span chord = chordAt(corners, v);
    // A footprint without height is a single line.
    if (!(chord.begin <= chord.end)) chord = {left[0], right[0]};
    addChord(sum, rows, chord, v);
    covered += chord.length();
  }
  if (last - first < lines) {
    const double area =
        std::abs(footprint.edge[0] * footprint.otherEdge[1] - footprint.edge[1] * footprint.otherEdge[0]);
    covered = std::max(covered, area / step);
  }
  std::array<float, 4> mean{};
  if (!(covered > 0.0)) return mean;
  for (std::size_t channel = 0; channel < 4; ++channel)
    mean[channel] = static_cast<float>(sum[channel] / covered);
  return mean;
}

}  // namespace orvanel::kernels
