#include "tools/overlays/MoveToolOverlayLayer.h"

#include "raster/fragments/FragmentUniforms.h"

namespace orvanel {

MoveToolOverlayLayer::MoveToolOverlayLayer(const MetalContext& context)
    : pipelineState_(context.makeRenderPipeline(layerVertexFunction, "moveToolFragmentShader", true)) {}

bool MoveToolOverlayLayer::shouldRender(const CanvasViewContext& context, const Document* document) const {
  (void)context;
  return document != nullptr && moveToolRect.has_value();
}

void MoveToolOverlayLayer::render(RenderEncoder& encoder, const CanvasViewContext& context,
                                  const Document* document) const {
  (void)document;
  MoveToolUniforms uniforms{.view = viewUniforms(context), .rotation = moveToolRotation};
  uniforms.origin = {moveToolRect->x, moveToolRect->y};
  uniforms.size = {moveToolRect->width, moveToolRect->height};
  encoder.draw(pipelineState_, uniformBytes(uniforms));
}

}  // namespace orvanel
