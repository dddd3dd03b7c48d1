#include "tools/overlays/FreeTransformOverlayLayer.h"

#include <algorithm>

#include "raster/fragments/FragmentUniforms.h"

namespace orvanel {
namespace {

FragmentPoint fragmentPoint(QPointF point) {
  return {static_cast<float>(point.x()), static_cast<float>(point.y())};
}

}  // namespace

FreeTransformOverlayLayer::FreeTransformOverlayLayer(const MetalContext& context)
    : pipelineState_(context.makeRenderPipeline(layerVertexFunction, "freeTransformFragmentShader", true)) {}

bool FreeTransformOverlayLayer::shouldRender(const CanvasViewContext& context,
                                             const Document* document) const {
  (void)context;
  return document != nullptr && corners && corners->size() == 4 && handles && handles->size() == 8;
}

void FreeTransformOverlayLayer::render(RenderEncoder& encoder, const CanvasViewContext& context,
                                       const Document* document) const {
  (void)document;
  FreeTransformUniforms uniforms{.view = viewUniforms(context)};
  std::ranges::transform(*corners, uniforms.corners.begin(), fragmentPoint);
  std::ranges::transform(*handles, uniforms.handles.begin(), fragmentPoint);
  encoder.draw(pipelineState_, uniformBytes(uniforms));
}

}  // namespace orvanel
