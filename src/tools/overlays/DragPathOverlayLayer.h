// The outline of a shape while it is being drawn. Shared by the tools that draw shapes; main thread only.
#pragma once

#include <QPointF>
#include <QUuid>
#include <optional>
#include <vector>

#include "model/SelectionPath.h"
#include "raster/MetalContext.h"
#include "raster/fragments/FragmentUniforms.h"
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
  // A polyline of at least two points: those that stay on the document, in its coordinates, and then those
  // that stay in the view. Takes precedence over the path.
  std::vector<QPointF> lassoPoints;
  std::optional<std::vector<QPointF>> lassoScreenPoints;
  /// The only document that the shape is drawn over; any if not set.
  std::optional<QUuid> documentID;

 private:
  [[nodiscard]] std::size_t polylineSize() const;
  /// The polyline in view coordinates.
  [[nodiscard]] std::vector<FragmentPoint> polyline(const CanvasViewUniforms& view) const;

  RenderPipeline pipelineState_;
};

}  // namespace orvanel
