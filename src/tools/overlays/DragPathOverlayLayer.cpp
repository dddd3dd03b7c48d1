#include "tools/overlays/DragPathOverlayLayer.h"

#include <array>
#include <cstdint>
#include <span>
#include <utility>
#include <variant>

#include "raster/fragments/OverlayStroke.h"

namespace orvanel {
namespace {

std::array<float, 4> floats(double a, double b, double c, double d) {
  return {static_cast<float>(a), static_cast<float>(b), static_cast<float>(c), static_cast<float>(d)};
}

}  // namespace

DragPathOverlayLayer::DragPathOverlayLayer(const MetalContext& context)
    : pipelineState_(context.makeRenderPipeline(layerVertexFunction, "dragPathFragmentShader", true)) {}

bool DragPathOverlayLayer::shouldRender(const CanvasViewContext& context, const Document* document) const {
  (void)context;
  if (document == nullptr || (documentID && *documentID != document->id)) return false;
  return dragPath || polylineSize() > 1;
}

std::size_t DragPathOverlayLayer::polylineSize() const {
  return lassoPoints.size() + (lassoScreenPoints ? lassoScreenPoints->size() : 0);
}

std::vector<FragmentPoint> DragPathOverlayLayer::polyline(const CanvasViewUniforms& view) const {
  std::vector<FragmentPoint> points;
  points.reserve(polylineSize());
  const OverlayMapping mapping(view);
  for (const QPointF& point : lassoPoints) {
    const DevicePoint device = mapping.devicePoint(point.x(), point.y());
    points.push_back(
        {static_cast<float>(device.x / mapping.scale()), static_cast<float>(device.y / mapping.scale())});
  }
  for (const QPointF& point : lassoScreenPoints.value_or(std::vector<QPointF>{})) {
    points.push_back({static_cast<float>(point.x()), static_cast<float>(point.y())});
  }
  return points;
}

void DragPathOverlayLayer::render(RenderEncoder& encoder, const CanvasViewContext& context,
                                  const Document* document) const {
  (void)document;
  DragPathUniforms uniforms{.view = viewUniforms(context)};
  if (polylineSize() > 1) {
    if (!std::in_range<std::int32_t>(polylineSize())) fatalFault("Too many points in a drag path");
    const std::vector<FragmentPoint> points = polyline(uniforms.view);
    uniforms.shapeMode = DragPathUniforms::polyline;
    uniforms.pointCount = static_cast<std::uint32_t>(points.size());
    encoder.draw(pipelineState_, uniformBytes(uniforms), nullptr, std::as_bytes(std::span(points)));
    return;
  }
  if (const auto* rect = std::get_if<SelectionPath::Rect>(&dragPath->shapeHint)) {
    uniforms.shapeMode = DragPathUniforms::rect;
    uniforms.shape = floats(rect->origin.x(), rect->origin.y(), rect->size.width(), rect->size.height());
  } else if (const auto* ellipse = std::get_if<SelectionPath::Ellipse>(&dragPath->shapeHint)) {
    uniforms.shapeMode = DragPathUniforms::ellipse;
    uniforms.shape =
        floats(ellipse->center.x(), ellipse->center.y(), ellipse->radii.width(), ellipse->radii.height());
  }
  encoder.draw(pipelineState_, uniformBytes(uniforms));
}

}  // namespace orvanel
