// The outline of a shape while it is being drawn. Shared by the tools that draw shapes; main thread only.
#pragma once

#include <QPointF>
#include <QUuid>
#include <optional>
#include <vector>

#include "model/SelectionPath.h"
#include "raster/MetalContext.h"
#include "tools/CanvasViewLayer.h"

namespace orvanel {

class DragPathOverlayLayer : public CanvasViewLayer {
 public:
  explicit DragPathOverlayLayer(const MetalContext& context);
  [[nodiscard]] std::string name() const override { return "Drag Path"; }
  [[nodiscard]] bool shouldRender(const CanvasViewContext& context, const Document* document) const override;
  void render(RenderEncoder& encoder, const CanvasViewContext& context,
              const Document* document) const override;

  /// A rectangle or an ellipse, in document coordinates.
  std::optional<SelectionPath> dragPath;
  /// A polyline of at least two points, in view coordinates. Takes precedence over the path.
  std::optional<std::vector<QPointF>> lassoScreenPoints;
  /// The only document that the shape is drawn over; any if not set.
  std::optional<QUuid> documentID;

 private:
  RenderPipeline pipelineState_;
};

}  // namespace orvanel
