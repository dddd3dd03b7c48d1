#include "tools/selection/EllipseSelectToolHandler.h"

namespace orvanel {

SelectionPath EllipseSelectToolHandler::pathOf(const QRectF& box) const {
  const QPointF center = box.center();
  return SelectionPath::ellipse(center.x(), center.y(), box.width() / 2.0, box.height() / 2.0);
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
