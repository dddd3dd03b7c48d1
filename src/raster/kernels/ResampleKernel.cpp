// Resizing a whole texture: nearest neighbour, or a separable filter that widens when it shrinks. Edges
// are clamped: the outermost pixels stand for all beyond them.
#include <hwy/aligned_allocator.h>

#include <algorithm>
#include <cmath>
#include <optional>
#include <vector>

#include "raster/KernelRecords.h"
#include "raster/kernels/Kernels.h"
#include "raster/kernels/PremultipliedRows.h"
#include "raster/kernels/TileAccess.h"

namespace orvanel::kernels {
namespace {

enum class Filter { catmullRom = 0, triangle = 1 };

double filterReach(Filter filter) {
  return filter == Filter::catmullRom ? 2.0 : 1.0;
}

double filterValue(Filter filter, double x) {
  x = std::abs(x);
  if (filter == Filter::triangle) return std::max(1.0 - x, 0.0);
  if (x < 1.0) return (1.5 * x - 2.5) * x * x + 1.0;
  if (x < 2.0) return ((-0.5 * x + 2.5) * x - 4.0) * x + 2.0;
  return 0.0;
}

/// For each pixel along one axis of the destination, what it takes from the source.
class AxisFilter {
 public:
  AxisFilter(Filter filter, int sourceSize, int destinationSize) {
    const double perPixel = static_cast<double>(sourceSize) / destinationSize;
    const double widening = std::max(perPixel, 1.0);
    const double reach = filterReach(filter) * widening;
    std::vector<std::size_t> offsets;
    std::vector<double> sums;
    for (int i = 0; i < destinationSize; ++i) {
      const double center = (i + 0.5) * perPixel;
      const int begin = static_cast<int>(std::ceil(center - reach - 0.5));
      const int end = static_cast<int>(std::floor(center + reach - 0.5)) + 1;
      const int first = std::clamp(begin, 0, sourceSize - 1);
      const int last = std::clamp(end - 1, 0, sourceSize - 1);
      sums.assign(static_cast<std::size_t>(last - first) + 1, 0.0);
      double total = 0.0;
      for (int k = begin; k < end; ++k) {
        const double weight = filterValue(filter, (k + 0.5 - center) / widening);
        sums[static_cast<std::size_t>(std::clamp(k, first, last) - first)] += weight;
        total += weight;
      }
      offsets.push_back(weights_.size());
      taps_.push_back({first, last - first + 1, nullptr});
      for (const double sum : sums) weights_.push_back(static_cast<float>(sum / total));
    }
    for (std::size_t i = 0; i < taps_.size(); ++i) taps_[i].weights = weights_.data() + offsets[i];
  }

  /// First and last tap never go back from one pixel to the next.
  [[nodiscard]] const FilterTaps& operator[](int i) const { return taps_[static_cast<std::size_t>(i)]; }

 private:
  std::vector<FilterTaps> taps_;
  std::vector<float> weights_;
};

/// One pixel as it comes out of a filter that finds nothing else around it.
std::uint64_t filteredPixel(std::uint64_t pixel, PixelFormat format, ColorRange range) {
  alignas(64) std::byte bytes[16 * 8];
  alignas(64) float floats[16 * 4];
  fillPixels(bytes, 16, pixel, bytesPerPixel(format));
  premultiplyRow(format, bytes, floats, 16);
  unpremultiplyRow(format, floats, bytes, 16, range);
  return packPixel(bytes, bytesPerPixel(format));
}

/// Streams the source's rows past the tile: each is filtered across once and added to the destination
/// rows that take from it, so that memory doesn't grow with the reduction.
void filterTile(const Surface& source, Surface& destination, int index, const AxisFilter& across,
                const AxisFilter& down, ColorRange range) {
  const PixelRect rect = destination.tileRect(index);
  const PixelFormat format = source.format();
  const FilterTaps& rightmost = across[rect.x + rect.width - 1];
  const FilterTaps& lowest = down[rect.y + rect.height - 1];
  const int left = across[rect.x].first;
  const int top = down[rect.y].first;
  const PixelRect region{left, top, rightmost.first + rightmost.count - left,
                         lowest.first + lowest.count - top};
  if (const std::optional<std::uint64_t> pixel = uniformPixelOf(source, region)) {
    return destination.setUniform(index, filteredPixel(*pixel, format, range));
  }
  constexpr std::size_t rowFloats = std::size_t{tileSide} * 4;
  const std::size_t padded = (static_cast<std::size_t>(region.width) + 15) / 16 * 16;
  const auto pixelBytes = static_cast<std::size_t>(source.pixelBytes());
  const auto straight = hwy::AllocateAligned<std::byte>(padded * pixelBytes);
  const auto floats = hwy::AllocateAligned<float>(padded * 4);
  const auto filtered = hwy::AllocateAligned<float>(rowFloats);
  const auto sums = hwy::AllocateAligned<float>(rowFloats * tileSide);
  std::fill_n(straight.get(), padded * pixelBytes, std::byte{0});
  std::fill_n(filtered.get(), rowFloats, 0.0F);
  std::fill_n(sums.get(), rowFloats * tileSide, 0.0F);
  int firstTaker = rect.y;
  for (int y = region.y; y < region.y + region.height; ++y) {
    gatherRegion(source, {region.x, y, region.width, 1}, straight.get(), padded * pixelBytes);
    premultiplyRow(format, straight.get(), floats.get(), static_cast<int>(padded));
    filterRow(floats.get(), region.x, &across[rect.x], filtered.get(), rect.width);
    while (firstTaker < rect.y + rect.height && down[firstTaker].first + down[firstTaker].count <= y) {
      ++firstTaker;
    }
    for (int taker = firstTaker; taker < rect.y + rect.height && down[taker].first <= y; ++taker) {
      const int tap = y - down[taker].first;
      if (tap >= down[taker].count) continue;
      float* sum = sums.get() + static_cast<std::size_t>(taker - rect.y) * rowFloats;
      addWeightedRow(filtered.get(), down[taker].weights[tap], sum, static_cast<int>(rowFloats));
    }
  }
  std::byte* out = destination.overwriteTile(index);
  for (std::size_t y = 0; y < tileSide; ++y) {
    unpremultiplyRow(format, sums.get() + y * rowFloats, out + y * tileSide * pixelBytes, tileSide, range);
  }
  destination.collapseIfUniform(index);
}

/// The source pixel under the centre of a destination pixel.
int nearestTo(int i, int sourceSize, int destinationSize) {
  const std::int64_t at = (2 * std::int64_t{i} + 1) * sourceSize / (2 * std::int64_t{destinationSize});
  return static_cast<int>(std::min<std::int64_t>(at, sourceSize - 1));
}

void pickTile(const Surface& source, Surface& destination, int index) {
  const PixelRect rect = destination.tileRect(index);
  const auto column = [&](int x) { return nearestTo(x, source.width(), destination.width()); };
  const auto row = [&](int y) { return nearestTo(y, source.height(), destination.height()); };
  const int left = column(rect.x);
  const int top = row(rect.y);
  const PixelRect region{left, top, column(rect.x + rect.width - 1) - left + 1,
                         row(rect.y + rect.height - 1) - top + 1};
  if (const std::optional<std::uint64_t> pixel = uniformPixelOf(source, region)) {
    return destination.setUniform(index, *pixel);
  }
  const auto pixelBytes = static_cast<std::size_t>(source.pixelBytes());
  std::vector<std::byte> line(static_cast<std::size_t>(region.width) * pixelBytes);
  std::byte* out = destination.overwriteTile(index);
  std::fill_n(out, destination.tileBytes(), std::byte{0});
  for (int y = 0; y < rect.height; ++y, out += tileSide * pixelBytes) {
    gatherRegion(source, {region.x, row(rect.y + y), region.width, 1}, line.data(), line.size());
    for (int x = 0; x < rect.width; ++x) {
      const auto from = static_cast<std::size_t>(column(rect.x + x) - left) * pixelBytes;
      std::copy_n(line.data() + from, pixelBytes, out + static_cast<std::size_t>(x) * pixelBytes);
    }
  }
  destination.collapseIfUniform(index);
}

}  // namespace

void resampleTexture(const Dispatch& dispatch) {
  const Surface& source = *dispatch.textures[0];
  Surface& destination = *dispatch.textures[1];
  const auto& params = inlineRecord<ResampleParams>(dispatch);
  if (!fitInFormat(source, destination)) return;
  if (haveSameSize(source, destination)) {
    return copyPixels(source, source.bounds(), destination, 0, 0);
  }
  const auto method = static_cast<ResampleMethod>(params.method);
  if (method == ResampleMethod::nearestNeighbor) {
    return forEachTile(destination, [&](int index) { pickTile(source, destination, index); });
  }
  const Filter filter = method == ResampleMethod::bilinear ? Filter::triangle : Filter::catmullRom;
  const ColorRange range = filter == Filter::catmullRom ? ColorRange::unit : ColorRange::any;
  const AxisFilter across(filter, source.width(), destination.width());
  const AxisFilter down(filter, source.height(), destination.height());
  forEachTile(destination, [&](int index) { filterTile(source, destination, index, across, down, range); });
}

}  // namespace orvanel::kernels
