#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <vector>

#include "raster/fragments/FragmentUniforms.h"
#include "raster/fragments/ScreenMapping.h"

namespace orvanel::fragments {
namespace {

constexpr double squareSideInViewPoints = 8.0;
constexpr std::array<std::uint32_t, 2> squareColors{0xFFF7F7F7U, 0xFFE3E3E3U};

/// 0 or 1: which of the two colours the squares of this column or row begin with.
std::int64_t parity(std::int64_t device, std::int64_t canvasStart, std::int64_t side) {
  return ((device - canvasStart) / side) & 1;
}

}  // namespace

// Squares keep their size on the screen at every zoom and move with the canvas's corner; their side is a
// whole number of device pixels, so that all of them look alike at fractional scales.
void checkerboard(const FragmentInvocation& invocation, const FragmentBand& band) {
  const auto view = fragmentUniforms<CanvasViewUniforms>(invocation);
  const AxisMapping horizontal = AxisMapping::horizontal(view);
  const AxisMapping vertical = AxisMapping::vertical(view);
  const PixelSpan columns = horizontal.inside(0, band.width);
  const PixelSpan rows = vertical.inside(band.y, band.y + band.rows);
  if (columns.isEmpty() || rows.isEmpty()) return;

  const auto side = static_cast<std::int64_t>(
      std::max(1.0, std::round(squareSideInViewPoints * static_cast<double>(view.scale))));
  const auto width = static_cast<std::size_t>(columns.length());
  std::array<std::vector<std::uint32_t>, 2> patterns{std::vector<std::uint32_t>(width),
                                                     std::vector<std::uint32_t>(width)};
  for (std::size_t i = 0; i < width; ++i) {
    const auto first = static_cast<std::size_t>(
        parity(columns.begin + static_cast<std::int64_t>(i), horizontal.canvasStart(), side));
    patterns[0][i] = squareColors[first];
    patterns[1][i] = squareColors[1 - first];
  }
  for (int y = rows.begin; y < rows.end; ++y) {
    const auto& pattern = patterns[static_cast<std::size_t>(parity(y, vertical.canvasStart(), side))];
    std::memcpy(bandRow(band, y - band.y) + columns.begin, pattern.data(), width * sizeof(std::uint32_t));
  }
}

}  // namespace orvanel::fragments
