#include <algorithm>
#include <vector>

#include "raster/fragments/DisplayRows.h"
#include "raster/fragments/FragmentUniforms.h"
#include "raster/fragments/ScreenMapping.h"

namespace orvanel::fragments {
namespace {

/// Some black on light pixels and some white on dark ones, premultiplied. A single colour would
/// vanish on some ground.
constexpr std::uint32_t onLight = 0x4D000000U;
constexpr std::uint32_t onDark = 0x40404040U;
constexpr std::uint32_t darkestLight = 0x60U;

/// Green counts most for the eye; its double and both others are close enough to brightness.
std::uint32_t lineColor(std::uint32_t ground) {
  const std::uint32_t sum = ((ground >> 16U) & 0xFFU) + 2U * ((ground >> 8U) & 0xFFU) + (ground & 0xFFU);
  return sum >= 4U * darkestLight ? onLight : onDark;
}

}  // namespace

void pixelGrid(const FragmentInvocation& invocation, const FragmentBand& band) {
  const auto view = fragmentUniforms<CanvasViewUniforms>(invocation);
  const AxisMapping horizontal = AxisMapping::horizontal(view);
  const AxisMapping vertical = AxisMapping::vertical(view);
  const PixelSpan columns = horizontal.inside(0, band.width);
  const PixelSpan rows = vertical.inside(band.y, band.y + band.rows);
  if (columns.isEmpty() || rows.isEmpty()) return;

  std::vector<std::uint32_t> line(static_cast<std::size_t>(columns.length()));
  std::vector<int> lineColumns;
  for (int x = columns.begin; x < columns.end; ++x) {
    if (horizontal.startsDocumentPixel(x)) lineColumns.push_back(x);
  }
  for (int y = rows.begin; y < rows.end; ++y) {
    std::uint32_t* row = bandRow(band, y - band.y);
    if (vertical.startsDocumentPixel(y)) {
      std::transform(row + columns.begin, row + columns.end, line.begin(), lineColor);
      displayRows::blendOver(row + columns.begin, line.data(), line.size());
    } else {
      for (const int x : lineColumns) {
        const std::uint32_t color = lineColor(row[x]);
        displayRows::blendOver(row + x, &color, 1);
      }
    }
  }
}

}  // namespace orvanel::fragments
