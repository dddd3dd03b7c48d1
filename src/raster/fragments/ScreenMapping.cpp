#include "raster/fragments/ScreenMapping.h"

#include <algorithm>
#include <cmath>

#include "raster/SampleGrid.h"

namespace orvanel {

AxisMapping::AxisMapping(double viewport, double canvas, double offset, double pixelsPerDocumentPixel)
    : origin_(std::max(0.0, (viewport - canvas * pixelsPerDocumentPixel) * 0.5)),
      offset_(offset),
      canvas_(canvas),
      pixelsPerDocumentPixel_(pixelsPerDocumentPixel) {}

AxisMapping AxisMapping::horizontal(const CanvasViewUniforms& view) {
  const double scaled = static_cast<double>(view.zoom) * static_cast<double>(view.scale);
  return {static_cast<double>(view.viewportWidth), static_cast<double>(view.canvasWidth),
          static_cast<double>(view.offsetX), scaled};
}

AxisMapping AxisMapping::vertical(const CanvasViewUniforms& view) {
  const double scaled = static_cast<double>(view.zoom) * static_cast<double>(view.scale);
  return {static_cast<double>(view.viewportHeight), static_cast<double>(view.canvasHeight),
          static_cast<double>(view.offsetY), scaled};
}

std::int64_t AxisMapping::canvasStart() const {
  return static_cast<std::int64_t>(std::ceil(origin_ - offset_ * pixelsPerDocumentPixel_ - 0.5));
}

PixelSpan AxisMapping::inside(int begin, int end) const {
  const double canvasEnd = origin_ + (canvas_ - offset_) * pixelsPerDocumentPixel_ - 0.5;
  const auto bounded = [&](double position) {
    return static_cast<int>(
        std::clamp(std::ceil(position), static_cast<double>(begin), static_cast<double>(end)));
  };
  PixelSpan span{bounded(static_cast<double>(canvasStart())), bounded(canvasEnd)};
  // The estimate may be off by a rounding; what counts is where the centres really fall.
  while (span.begin > begin && documentAt(span.begin - 1) >= 0.0) --span.begin;
  while (span.begin < end && documentAt(span.begin) < 0.0) ++span.begin;
  while (span.end < end && documentAt(span.end) < canvas_) ++span.end;
  while (span.end > begin && documentAt(span.end - 1) >= canvas_) --span.end;
  return span;
}

std::vector<std::int32_t> AxisMapping::indices(PixelSpan inside) const {
  std::vector<std::int32_t> result(static_cast<std::size_t>(inside.length()));
  for (std::size_t i = 0; i < result.size(); ++i) result[i] = indexAt(inside.begin + static_cast<int>(i));
  return result;
}

bool AxisMapping::startsDocumentPixel(int device) const {
  const double before = documentAt(device - 1);
  return before >= 0.0 && static_cast<int>(before) != indexAt(device);
}

std::vector<std::int32_t> AxisMapping::samples(int viewport) const {
  std::vector<std::int32_t> result = indices(inside(0, viewport));
  result.erase(std::unique(result.begin(), result.end()), result.end());
  return result;
}

SampleGrid SampleGrid::ofView(const CanvasViewUniforms& view) {
  return {AxisMapping::horizontal(view).samples(static_cast<int>(view.viewportWidth)),
          AxisMapping::vertical(view).samples(static_cast<int>(view.viewportHeight))};
}

}  // namespace orvanel
