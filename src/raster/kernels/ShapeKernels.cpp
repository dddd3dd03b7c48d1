// The kernels that draw a selection's shape into a mask. A feather of r blurs by a Gaussian of sigma r / 2.
#include <algorithm>
#include <cstring>

#include "raster/ColorMode.h"
#include "raster/KernelRecords.h"
#include "raster/kernels/Coverage.h"
#include "raster/kernels/Kernels.h"
#include "raster/kernels/Shapes.h"

namespace orvanel::kernels {
namespace {

void writeShape(Surface& mask, const RowShape& shape, float feather) {
  // A blur as wide as the largest canvas leaves nothing to tell apart; wider ones cost time for nothing.
  const float width = std::min(feather, static_cast<float>(maximumCanvasSide));
  if (feather > 0.0F) {
    writeBlurredCoverage(mask, shape, static_cast<double>(width) / 2.0);
  } else {
    writeCoverage(mask, shape);
  }
}

}  // namespace

void fillRectMask(const Dispatch& dispatch) {
  Surface& mask = *dispatch.textures[0];
  const auto& params = inlineRecord<ShapeRectParams>(dispatch);
  const auto clipped = [](std::uint64_t value, int limit) {
    return static_cast<int>(std::min(value, static_cast<std::uint64_t>(limit)));
  };
  const int left = clipped(params.x, mask.width());
  const int top = clipped(params.y, mask.height());
  const int right = clipped(std::uint64_t{params.x} + params.width, mask.width());
  const int bottom = clipped(std::uint64_t{params.y} + params.height, mask.height());
  const auto cover = [&](int y, RowCoverage& row) {
    if (left < right && y >= top && y < bottom) row.push_back({left, right, 1.0F});
  };
  writeShape(mask, cover, params.feather);
}

void fillEllipseMask(const Dispatch& dispatch) {
  Surface& mask = *dispatch.textures[0];
  const auto& params = inlineRecord<ShapeEllipseParams>(dispatch);
  const EllipseShape ellipse(static_cast<double>(params.centerX), static_cast<double>(params.centerY),
                             static_cast<double>(params.radiusX), static_cast<double>(params.radiusY),
                             mask.width());
  writeShape(
      mask, [&](int y, RowCoverage& row) { ellipse.cover(y, row); }, params.feather);
}

void fillPolygonMask(const Dispatch& dispatch) {
  Surface& mask = *dispatch.textures[0];
  const std::size_t count = inlineRecord<PolygonParams>(dispatch, 1).pointCount;
  std::vector<ShapePoint> points(count);
  for (std::size_t i = 0; i < count; ++i) {
    float pair[2];
    std::memcpy(pair, dispatch.bytes[0].data() + i * sizeof(pair), sizeof(pair));
    points[i] = {static_cast<double>(pair[0]), static_cast<double>(pair[1])};
  }
  const PolygonShape polygon(points, mask.width(), mask.height());
  writeBands(mask, [&](MaskBand& band) { polygon.cover(band); });
}

}  // namespace orvanel::kernels
