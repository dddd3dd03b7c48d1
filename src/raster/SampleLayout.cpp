#include "raster/SampleLayout.h"

#include <algorithm>
#include <span>
#include <utility>

#include "raster/Tile.h"
#include "raster/kernels/CompositeStrip.h"

namespace orvanel {
namespace {

std::size_t roundedUp(std::size_t value, std::size_t step) {
  return (value + step - 1) / step * step;
}

/// The places [begin, end) of the samples within each tile.
std::vector<std::pair<int, int>> splitByTiles(const std::vector<std::int32_t>& samples) {
  std::vector<std::pair<int, int>> parts;
  auto from = samples.begin();
  while (from != samples.end()) {
    const auto to = std::lower_bound(from, samples.end(), (*from / tileSide + 1) * tileSide);
    parts.emplace_back(static_cast<int>(from - samples.begin()), static_cast<int>(to - samples.begin()));
    from = to;
  }
  return parts;
}

std::span<const std::int32_t> part(const std::vector<std::int32_t>& samples, int begin, int end) {
  return std::span(samples).subspan(static_cast<std::size_t>(begin), static_cast<std::size_t>(end - begin));
}

}  // namespace

SampleLayout::SampleLayout(const SampleGrid& sampled) : grid(sampled) {
  const auto rowParts = splitByTiles(grid.rows);
  const auto columnParts = splitByTiles(grid.columns);
  for (const auto& [rowBegin, rowEnd] : rowParts) {
    for (const auto& [columnBegin, columnEnd] : columnParts) {
      Block& block = blocks.emplace_back();
      block.tileX = grid.columns[static_cast<std::size_t>(columnBegin)] / tileSide;
      block.tileY = grid.rows[static_cast<std::size_t>(rowBegin)] / tileSide;
      block.columnBegin = columnBegin;
      block.columnEnd = columnEnd;
      block.rowBegin = rowBegin;
      block.rowEnd = rowEnd;
      const int rowsOfStrip = kernels::stripPixels / (columnEnd - columnBegin);
      for (int row = rowBegin; row < rowEnd; row += rowsOfStrip) {
        const int end = std::min(row + rowsOfStrip, rowEnd);
        const std::size_t room =
            roundedUp(static_cast<std::size_t>((end - row) * (columnEnd - columnBegin)), alignment);
        block.strips.push_back({row, end, samples, room});
        samples += room;
      }
    }
  }
  const auto span = [](const std::vector<std::int32_t>& places) {
    return static_cast<double>(places.back() - places.front() + 1);
  };
  isSparse = 2.0 * static_cast<double>(grid.columns.size()) * static_cast<double>(grid.rows.size()) <
             span(grid.columns) * span(grid.rows);
}

kernels::SampleBlock SampleLayout::samplesOf(const Block& block) const {
  return {part(grid.columns, block.columnBegin, block.columnEnd),
          part(grid.rows, block.rowBegin, block.rowEnd)};
}

kernels::SampleBlock SampleLayout::samplesOf(const Block& block, const Strip& strip) const {
  return {part(grid.columns, block.columnBegin, block.columnEnd),
          part(grid.rows, strip.rowBegin, strip.rowEnd)};
}

}  // namespace orvanel
