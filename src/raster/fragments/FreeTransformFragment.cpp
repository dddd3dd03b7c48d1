#include <algorithm>
#include <cmath>

#include "raster/fragments/OverlayStroke.h"

namespace orvanel::fragments {
namespace {

/// True for a rectangle whose sides run along rows and columns of pixels.
bool isUpright(const std::array<DevicePoint, 4>& corners) {
  constexpr double tolerance = 1e-2;
  for (std::size_t i = 0; i < corners.size(); ++i) {
    const DevicePoint& from = corners[i];
    const DevicePoint& to = corners[(i + 1) % corners.size()];
    if (std::abs(from.x - to.x) >= tolerance && std::abs(from.y - to.y) >= tolerance) return false;
  }
  return true;
}

}  // namespace

void freeTransform(const FragmentInvocation& invocation, const FragmentBand& band) {
  const auto uniforms = fragmentUniforms<FreeTransformUniforms>(invocation);
  const OverlayMapping mapping(uniforms.view);
  const auto onScreen = [&](FragmentPoint point) {
    return mapping.devicePoint(static_cast<double>(point.x), static_cast<double>(point.y));
  };
  OverlayBox box;
  std::ranges::transform(uniforms.corners, box.corners.begin(), onScreen);
  std::ranges::transform(uniforms.handles, box.handles.begin(), onScreen);
  if (isUpright(box.corners)) {
    const auto [left, right] = std::minmax(box.corners[0].x, box.corners[2].x);
    const auto [top, bottom] = std::minmax(box.corners[0].y, box.corners[2].y);
    box = uprightBox(mapping, {left, top}, {right, bottom});
  }
  drawBox(band, mapping, box);
}

}  // namespace orvanel::fragments
