#include <algorithm>
#include <cmath>
#include <cstring>
#include <numbers>
#include <vector>

#include "raster/fragments/OverlayStroke.h"

namespace orvanel::fragments {
namespace {

/// A line that covers whole pixels when it is upright.
double onPixels(double position, int lineWidth) {
  const double half = (lineWidth % 2) * 0.5;
  return std::round(position - half) + half;
}

/// Lines just within the edges that the pointer has drawn. Whoever selects expands them to whole pixels.
std::vector<DevicePoint> rectangle(const DragPathUniforms& uniforms, const OverlayMapping& mapping) {
  const auto [x, y, width, height] = uniforms.shape;
  const DevicePoint from = mapping.devicePoint(static_cast<double>(x), static_cast<double>(y));
  const DevicePoint to = mapping.devicePoint(static_cast<double>(x) + static_cast<double>(width),
                                             static_cast<double>(y) + static_cast<double>(height));
  const double half = mapping.lineWidth() * 0.5;
  const double left = firstPixelOf(from.x) + half;
  const double top = firstPixelOf(from.y) + half;
  const double right = std::max(left, firstPixelOf(to.x) - half);
  const double bottom = std::max(top, firstPixelOf(to.y) - half);
  return {{left, top}, {right, top}, {right, bottom}, {left, bottom}};
}

/// An ellipse whose line touches the edge of the shape from within, as chords that stay within a tenth of a
/// pixel.
std::vector<DevicePoint> ellipse(const DragPathUniforms& uniforms, const OverlayMapping& mapping) {
  const auto [centerX, centerY, radiusX, radiusY] = uniforms.shape;
  const DevicePoint center = mapping.devicePoint(static_cast<double>(centerX), static_cast<double>(centerY));
  const DevicePoint corner = mapping.devicePoint(static_cast<double>(centerX) + static_cast<double>(radiusX),
                                                 static_cast<double>(centerY) + static_cast<double>(radiusY));
  const double half = mapping.lineWidth() * 0.5;
  const double across = std::max(0.0, corner.x - center.x - half);
  const double down = std::max(0.0, corner.y - center.y - half);
  constexpr double deviation = 0.1;
  const double largest = std::max({across, down, 1.0});
  // As many chords in every quarter, so that the drawing is symmetric.
  const double inQuarter = std::ceil(std::numbers::pi / std::acos(1.0 - deviation / largest) / 4.0);
  const auto chords = 4 * static_cast<std::size_t>(std::clamp(inQuarter, 4.0, 2048.0));
  std::vector<DevicePoint> points(chords);
  for (std::size_t i = 0; i < chords; ++i) {
    const double angle = 2.0 * std::numbers::pi * static_cast<double>(i) / static_cast<double>(chords);
    points[i] = {center.x + across * std::cos(angle), center.y + down * std::sin(angle)};
  }
  return points;
}

std::vector<FragmentPoint> boundPoints(const FragmentInvocation& invocation, std::uint32_t count) {
  std::vector<FragmentPoint> points(
      std::min<std::size_t>(count, invocation.points.size() / sizeof(FragmentPoint)));
  if (!points.empty()) {
    std::memcpy(points.data(), invocation.points.data(), points.size() * sizeof(FragmentPoint));
  }
  return points;
}

}  // namespace

void dragPath(const FragmentInvocation& invocation, const FragmentBand& band) {
  const auto uniforms = fragmentUniforms<DragPathUniforms>(invocation);
  const OverlayMapping mapping(uniforms.view);
  OverlayStroke stroke(mapping.lineWidth());
  if (uniforms.shapeMode == DragPathUniforms::rect) {
    stroke.addClosed(rectangle(uniforms, mapping));
  } else if (uniforms.shapeMode == DragPathUniforms::ellipse) {
    stroke.addClosed(ellipse(uniforms, mapping));
  } else if (uniforms.shapeMode == DragPathUniforms::polyline) {
    const auto onScreen = [&](FragmentPoint point) {
      return DevicePoint{onPixels(static_cast<double>(point.x) * mapping.scale(), mapping.lineWidth()),
                         onPixels(static_cast<double>(point.y) * mapping.scale(), mapping.lineWidth())};
    };
    const std::vector<FragmentPoint> points = boundPoints(invocation, uniforms.pointCount);
    for (std::size_t i = 1; i < points.size(); ++i) {
      stroke.addLine(onScreen(points[i - 1]), onScreen(points[i]));
    }
  }
  stroke.draw(band);
}

}  // namespace orvanel::fragments
