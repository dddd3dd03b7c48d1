// The outline of the content under a free transform, with its handles. Owned by the tool; main thread only.
#pragma once

#include <QPointF>
#include <optional>
#include <vector>

#include "raster/MetalContext.h"
#include "tools/CanvasViewLayer.h"

namespace orvanel {

class FreeTransformOverlayLayer : public CanvasViewLayer {
 public:
  explicit FreeTransformOverlayLayer(const MetalContext& context);
  [[nodiscard]] std::string name() const override { return "Free Transform Overlay"; }
  [[nodiscard]] bool shouldRender(const CanvasViewContext& context, const Document* document) const override;
  void render(RenderEncoder& encoder, const CanvasViewContext& context,
              const Document* document) const override;

  /// The four corners in order around the outline, in canvas pixels.
  std::optional<std::vector<QPointF>> corners;
  /// The eight handles, row by row, in canvas pixels.
  std::optional<std::vector<QPointF>> handles;

 private:
  RenderPipeline pipelineState_;
};

}  // namespace orvanel
