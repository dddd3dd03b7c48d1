#include <cmath>

#include "raster/fragments/OverlayStroke.h"

namespace orvanel::fragments {
namespace {

OverlayBox turned(OverlayBox box, double rotation) {
  const DevicePoint center{(box.corners[0].x + box.corners[2].x) * 0.5,
                           (box.corners[0].y + box.corners[2].y) * 0.5};
  const double cosine = std::cos(rotation);
  const double sine = std::sin(rotation);
  const auto turn = [&](DevicePoint& point) {
    const double x = point.x - center.x;
    const double y = point.y - center.y;
    point = {center.x + x * cosine - y * sine, center.y + x * sine + y * cosine};
  };
  for (DevicePoint& corner : box.corners) turn(corner);
  for (DevicePoint& handle : box.handles) turn(handle);
  return box;
}

}  // namespace

void moveTool(const FragmentInvocation& invocation, const FragmentBand& band) {
  const auto uniforms = fragmentUniforms<MoveToolUniforms>(invocation);
  const OverlayMapping mapping(uniforms.view);
  const auto [x, y] = uniforms.origin;
  const auto [width, height] = uniforms.size;
  const OverlayBox box =
      uprightBox(mapping, mapping.devicePoint(static_cast<double>(x), static_cast<double>(y)),
                 mapping.devicePoint(static_cast<double>(x) + static_cast<double>(width),
                                     static_cast<double>(y) + static_cast<double>(height)));
  drawBox(band, mapping,
          uniforms.rotation == 0.0F ? box : turned(box, static_cast<double>(uniforms.rotation)));
}

}  // namespace orvanel::fragments
