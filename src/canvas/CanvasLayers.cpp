#include "canvas/CanvasLayers.h"

#include <array>
#include <span>

#include "raster/fragments/FragmentUniforms.h"

namespace orvanel {
namespace {

constexpr std::string_view vertexFunction = "layerVertexShader";
constexpr std::array backgroundColor{0.5803922F, 0.5803922F, 0.6117647F, 0.0F};
/// Smallest size of a document pixel, in device pixels, at which the grid shows.
constexpr double smallestGridCell = 40.0;

template <typename Uniforms>
std::span<const std::byte> bytesOf(const Uniforms& uniforms) {
  return std::as_bytes(std::span(&uniforms, 1));
}

}  // namespace

CanvasViewUniforms viewUniforms(const CanvasViewContext& context) {
  return {static_cast<float>(context.viewportWidth),
          static_cast<float>(context.viewportHeight),
          static_cast<float>(context.canvasWidth),
          static_cast<float>(context.canvasHeight),
          static_cast<float>(context.viewportOffsetX),
          static_cast<float>(context.viewportOffsetY),
          static_cast<float>(context.zoom),
          static_cast<float>(context.scaleFactor)};
}

BackgroundLayer::BackgroundLayer(const MetalContext& context)
    : pipelineState_(context.makeRenderPipeline(vertexFunction, "backgroundFragmentShader", false)) {}

bool BackgroundLayer::shouldRender(const CanvasViewContext& context, const Document* document) const {
  (void)context;
  (void)document;
  return true;
}

void BackgroundLayer::render(RenderEncoder& encoder, const CanvasViewContext& context,
                             const Document* document) const {
  (void)document;
  const BackgroundUniforms uniforms{viewUniforms(context), backgroundColor};
  encoder.draw(pipelineState_, bytesOf(uniforms));
}

CheckerboardLayer::CheckerboardLayer(const MetalContext& context)
    : pipelineState_(context.makeRenderPipeline(vertexFunction, "checkerboardFragmentShader", true)) {}

bool CheckerboardLayer::shouldRender(const CanvasViewContext& context, const Document* document) const {
  (void)context;
  return document != nullptr;
}

void CheckerboardLayer::render(RenderEncoder& encoder, const CanvasViewContext& context,
                               const Document* document) const {
  (void)document;
  encoder.draw(pipelineState_, bytesOf(viewUniforms(context)));
}

DocumentLayer::DocumentLayer(const MetalContext& context)
    : pipelineState_(context.makeRenderPipeline(vertexFunction, "documentFragmentShader", true)) {}

bool DocumentLayer::shouldRender(const CanvasViewContext& context, const Document* document) const {
  (void)context;
  return document != nullptr && document->compositedTexture.value() != nullptr;
}

void DocumentLayer::render(RenderEncoder& encoder, const CanvasViewContext& context,
                           const Document* document) const {
  const ChannelVisibility channels = document->channelVisibility.value();
  const DocumentUniforms uniforms{viewUniforms(context),
                                  {static_cast<float>(channels.red), static_cast<float>(channels.green),
                                   static_cast<float>(channels.blue)},
                                  0.0F};
  encoder.draw(pipelineState_, bytesOf(uniforms), document->compositedTexture.value().get());
}

PixelGridLayer::PixelGridLayer(const MetalContext& context)
    : pipelineState_(context.makeRenderPipeline(vertexFunction, "pixelGridFragmentShader", true)) {}

bool PixelGridLayer::shouldRender(const CanvasViewContext& context, const Document* document) const {
  return document != nullptr && context.zoom * context.scaleFactor >= smallestGridCell;
}

void PixelGridLayer::render(RenderEncoder& encoder, const CanvasViewContext& context,
                            const Document* document) const {
  (void)document;
  encoder.draw(pipelineState_, bytesOf(viewUniforms(context)));
}

}  // namespace orvanel
