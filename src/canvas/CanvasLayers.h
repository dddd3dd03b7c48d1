// The passes of every canvas, bottom first: background, checkerboard, document, pixel grid, selection.
// Owned by the renderer; called inside a frame on the main thread. Pipelines are looked up once; a missing
// one is fatal.
#pragma once

#include "raster/MetalContext.h"
#include "tools/CanvasViewLayer.h"

namespace orvanel {

/// The grey around the canvas; covers every pixel.
class BackgroundLayer : public CanvasViewLayer {
 public:
  explicit BackgroundLayer(const MetalContext& context);
  [[nodiscard]] std::string name() const override { return "Background"; }
  [[nodiscard]] bool shouldRender(const CanvasViewContext& context, const Document* document) const override;
  void render(RenderEncoder& encoder, const CanvasViewContext& context,
              const Document* document) const override;

 private:
  RenderPipeline pipelineState_;
};

/// The checkerboard behind transparent parts of the document.
class CheckerboardLayer : public CanvasViewLayer {
 public:
  explicit CheckerboardLayer(const MetalContext& context);
  [[nodiscard]] std::string name() const override { return "Checkerboard"; }
  [[nodiscard]] bool shouldRender(const CanvasViewContext& context, const Document* document) const override;
  void render(RenderEncoder& encoder, const CanvasViewContext& context,
              const Document* document) const override;

 private:
  RenderPipeline pipelineState_;
};

/// The flattened image, filtered by the document's channel switches.
class DocumentLayer : public CanvasViewLayer {
 public:
  explicit DocumentLayer(const MetalContext& context);
  [[nodiscard]] std::string name() const override { return "Document"; }
  [[nodiscard]] bool shouldRender(const CanvasViewContext& context, const Document* document) const override;
  void render(RenderEncoder& encoder, const CanvasViewContext& context,
              const Document* document) const override;

 private:
  RenderPipeline pipelineState_;
};

/// Lines between document pixels, shown once these are large on the screen.
class PixelGridLayer : public CanvasViewLayer {
 public:
  explicit PixelGridLayer(const MetalContext& context);
  [[nodiscard]] std::string name() const override { return "Pixel Grid"; }
  [[nodiscard]] bool shouldRender(const CanvasViewContext& context, const Document* document) const override;
  void render(RenderEncoder& encoder, const CanvasViewContext& context,
              const Document* document) const override;

 private:
  RenderPipeline pipelineState_;
};

/// The moving outline around the selection.
class SelectionOverlayLayer : public CanvasViewLayer {
 public:
  explicit SelectionOverlayLayer(const MetalContext& context);
  [[nodiscard]] std::string name() const override { return "Selection Overlay"; }
  [[nodiscard]] bool shouldRender(const CanvasViewContext& context, const Document* document) const override;
  void render(RenderEncoder& encoder, const CanvasViewContext& context,
              const Document* document) const override;

  /// The phase of the outline's pattern, which repeats every 8; written for each frame.
  float selectionAnimationOffset = 0.0F;

 private:
  RenderPipeline pipelineState_;
};

}  // namespace orvanel
