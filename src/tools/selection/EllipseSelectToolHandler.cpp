#include "tools/selection/EllipseSelectToolHandler.h"

#include "tools/selection/ShapeCost.h"

namespace orvanel {

SelectionPath EllipseSelectToolHandler::pathOf(const QRectF& box) const {
  const QPointF center = box.center();
  return SelectionPath::ellipse(center.x(), center.y(), box.width() / 2.0, box.height() / 2.0);
}

std::uint64_t EllipseSelectToolHandler::cost(const Document& document, const PixelRect& box,
                                             float feather) const {
  const float radiusX = static_cast<float>(box.width) / 2.0F;
  const float radiusY = static_cast<float>(box.height) / 2.0F;
  return shapeCost::ofEllipse(document, static_cast<float>(box.x) + radiusX,
                              static_cast<float>(box.y) + radiusY, radiusX, radiusY, feather);
}

void EllipseSelectToolHandler::fill(Selection& selection, const PixelRect& box, float feather,
                                    const MetalContext& context) const {
  const float radiusX = static_cast<float>(box.width) / 2.0F;
  const float radiusY = static_cast<float>(box.height) / 2.0F;
  // An ellipse that extends beyond the canvas is cut off there, not squeezed into it.
  selection.setEllipse(static_cast<float>(box.x) + radiusX, static_cast<float>(box.y) + radiusY, radiusX,
                       radiusY, feather, context);
}

}  // namespace orvanel
