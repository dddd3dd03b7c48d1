// The box around the content that the move tool works on, with its handles. Owned by the tool; main thread
// only.
#pragma once

#include <optional>

#include "raster/MetalContext.h"
#include "tools/CanvasViewLayer.h"

namespace orvanel {

class MoveToolOverlayLayer : public CanvasViewLayer {
 public:
  explicit MoveToolOverlayLayer(const MetalContext& context);
  [[nodiscard]] std::string name() const override { return "Move Tool Overlay"; }
  [[nodiscard]] bool shouldRender(const CanvasViewContext& context, const Document* document) const override;
  void render(RenderEncoder& encoder, const CanvasViewContext& context,
              const Document* document) const override;

  struct Box {
    float x = 0.0F;
    float y = 0.0F;
    float width = 0.0F;
    float height = 0.0F;
    friend bool operator==(const Box&, const Box&) = default;
  };
  /// Canvas pixels.
  std::optional<Box> moveToolRect;
  /// Radians about the centre of the box.
  float moveToolRotation = 0.0F;

 private:
  RenderPipeline pipelineState_;
};

}  // namespace orvanel
