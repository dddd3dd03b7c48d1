#include <vector>

#include "raster/fragments/DisplayRows.h"
#include "raster/fragments/FragmentUniforms.h"
#include "raster/fragments/ScreenMapping.h"

namespace orvanel::fragments {
namespace {

/// Half-covering middle grey, premultiplied: it darkens light pixels and lightens dark ones.
constexpr std::uint32_t lineColor = 0x80404040U;

}  // namespace

void pixelGrid(const FragmentInvocation& invocation, const FragmentBand& band) {
  const auto view = fragmentUniforms<CanvasViewUniforms>(invocation);
  const AxisMapping horizontal = AxisMapping::horizontal(view);
  const AxisMapping vertical = AxisMapping::vertical(view);
  const PixelSpan columns = horizontal.inside(0, band.width);
  const PixelSpan rows = vertical.inside(band.y, band.y + band.rows);
  if (columns.isEmpty() || rows.isEmpty()) return;

  const std::vector<std::uint32_t> line(static_cast<std::size_t>(columns.length()), lineColor);
  std::vector<int> lineColumns;
  for (int x = columns.begin; x < columns.end; ++x) {
    if (horizontal.startsDocumentPixel(x)) lineColumns.push_back(x);
  }
  for (int y = rows.begin; y < rows.end; ++y) {
    std::uint32_t* row = bandRow(band, y - band.y);
    if (vertical.startsDocumentPixel(y)) {
      displayRows::blendOver(row + columns.begin, line.data(), line.size());
    } else {
      for (const int x : lineColumns) displayRows::blendOver(row + x, &lineColor, 1);
    }
  }
}

}  // namespace orvanel::fragments
