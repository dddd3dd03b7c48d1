#include "raster/kernels/SampleRows.h"

#include <algorithm>
#include <cstring>

#include "raster/Regularity.h"

namespace orvanel::kernels {
namespace {

/// One row of samples. `Pixel` is an integer as wide as the surface's pixels.
template <typename Pixel>
void gatherRow(const Surface& surface, std::span<const std::int32_t> columns, std::int64_t dx, int y,
               Pixel* out) {
  const int firstTile = surface.tileIndex(0, y / tileSide);
  const auto isBefore = [dx](std::int32_t column, std::int64_t x) { return column - dx < x; };
  auto from = std::lower_bound(columns.begin(), columns.end(), 0, isBefore);
  const auto last = std::lower_bound(from, columns.end(), surface.width(), isBefore);
  std::fill(out, out + (from - columns.begin()), Pixel{0});
  std::fill(out + (last - columns.begin()), out + columns.size(), Pixel{0});
  while (from != last) {
    const auto tileX = static_cast<int>((*from - dx) / tileSide);
    const std::int64_t left = std::int64_t{tileX} * tileSide + dx;
    // In a tile's own columns, which are the usual ones, no search is needed.
    const auto to =
        *(last - 1) - left < tileSide ? last : std::lower_bound(from, last, (tileX + 1) * tileSide, isBefore);
    const Tile& tile = surface.tile(firstTile + tileX);
    Pixel* target = out + (from - columns.begin());
    const auto count = static_cast<std::size_t>(to - from);
    if (tile.isUniform()) {
      std::fill_n(target, count, static_cast<Pixel>(regularPixel(tile.pixel(), surface.format())));
    } else {
      const Pixel* row = reinterpret_cast<const Pixel*>(tile.data()) + y % tileSide * tileSide;
      if (*(to - 1) - *from + 1 == to - from) {
        std::memcpy(target, row + (*from - left), count * sizeof(Pixel));
      } else {
        for (std::size_t i = 0; i < count; ++i) target[i] = row[from[static_cast<std::ptrdiff_t>(i)] - left];
      }
      if (tile.has(TileTrait::irregular)) {
        auto* bytes = reinterpret_cast<std::byte*>(target);
        regularise(bytes, bytes, count, surface.format());
      }
    }
    from = to;
  }
}

template <typename Pixel>
void gather(const Surface& surface, const SampleBlock& samples, const OffsetParams& shift, std::byte* out) {
  auto* row = reinterpret_cast<Pixel*>(out);
  for (const std::int32_t sampleY : samples.rows) {
    const std::int64_t y = std::int64_t{sampleY} - shift.dy;
    if (y < 0 || y >= surface.height()) {
      std::fill_n(row, samples.columns.size(), Pixel{0});
    } else {
      gatherRow(surface, samples.columns, shift.dx, static_cast<int>(y), row);
    }
    row += samples.columns.size();
  }
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
