#include "canvas/CanvasLayers.h"

#include <array>
#include <cstddef>

#include "raster/fragments/FragmentUniforms.h"

namespace orvanel {
namespace {

constexpr std::array backgroundColor{0.5803922F, 0.5803922F, 0.6117647F, 0.0F};
/// Smallest size of a document pixel, in device pixels, at which the grid shows.
constexpr double smallestGridCell = 40.0;

}  // namespace

BackgroundLayer::BackgroundLayer(const MetalContext& context)
    : pipelineState_(context.makeRenderPipeline(layerVertexFunction, "backgroundFragmentShader", false)) {}

bool BackgroundLayer::shouldRender(const CanvasViewContext& context, const Document* document) const {
  (void)context;
  (void)document;
  return true;
}

void BackgroundLayer::render(RenderEncoder& encoder, const CanvasViewContext& context,
                             const Document* document) const {
  (void)document;
  const BackgroundUniforms uniforms{viewUniforms(context), backgroundColor};
  encoder.draw(pipelineState_, uniformBytes(uniforms));
}

CheckerboardLayer::CheckerboardLayer(const MetalContext& context)
    : pipelineState_(context.makeRenderPipeline(layerVertexFunction, "checkerboardFragmentShader", true)) {}

bool CheckerboardLayer::shouldRender(const CanvasViewContext& context, const Document* document) const {
  (void)context;
  return document != nullptr;
}

void CheckerboardLayer::render(RenderEncoder& encoder, const CanvasViewContext& context,
                               const Document* document) const {
  (void)document;
  encoder.draw(pipelineState_, uniformBytes(viewUniforms(context)));
}

DocumentLayer::DocumentLayer(const MetalContext& context)
    : pipelineState_(context.makeRenderPipeline(layerVertexFunction, "documentFragmentShader", true)) {}

bool DocumentLayer::shouldRender(const CanvasViewContext& context, const Document* document) const {
  (void)context;
  return document != nullptr && document->compositedTexture.value() != nullptr;
}

void DocumentLayer::render(RenderEncoder& encoder, const CanvasViewContext& context,
                           const Document* document) const {
  ChannelVisibility channels = document->channelVisibility.value();
  // A grey composite has its value in all lanes, which its one switch shows or hides together.
  if (isGrayscale(document->colorMode.value())) channels.green = channels.blue = channels.red;
  const DocumentUniforms uniforms{viewUniforms(context),
                                  {static_cast<float>(channels.red), static_cast<float>(channels.green),
                                   static_cast<float>(channels.blue)},
                                  context.samples != nullptr ? 1.0F : 0.0F};
  encoder.draw(pipelineState_, uniformBytes(uniforms),
               context.samples != nullptr ? context.samples : document->compositedTexture.value().get());
}

PixelGridLayer::PixelGridLayer(const MetalContext& context)
    : pipelineState_(context.makeRenderPipeline(layerVertexFunction, "pixelGridFragmentShader", true)) {}

bool PixelGridLayer::shouldRender(const CanvasViewContext& context, const Document* document) const {
  return document != nullptr && context.zoom * context.scaleFactor >= smallestGridCell;
}

void PixelGridLayer::render(RenderEncoder& encoder, const CanvasViewContext& context,
                            const Document* document) const {
  (void)document;
  encoder.draw(pipelineState_, uniformBytes(viewUniforms(context)));
}

SelectionOverlayLayer::SelectionOverlayLayer(const MetalContext& context)
    : pipelineState_(
          context.makeRenderPipeline(layerVertexFunction, "selectionOverlayFragmentShader", true)) {}

bool SelectionOverlayLayer::shouldRender(const CanvasViewContext& context, const Document* document) const {
  (void)context;
  if (document == nullptr) return false;
  const auto& selection = document->selection.value();
  return selection != nullptr && selection->hasSelection.value();
}

void SelectionOverlayLayer::render(RenderEncoder& encoder, const CanvasViewContext& context,
                                   const Document* document) const {
  const SelectionOverlayUniforms uniforms{.view = viewUniforms(context),
                                          .selectionAnimationOffset = selectionAnimationOffset};
  encoder.drawAnimated(pipelineState_, uniformBytes(uniforms),
                       offsetof(SelectionOverlayUniforms, selectionAnimationOffset),
                       document->selection.value()->maskTexture->texture.get());
}

}  // namespace orvanel
