#include "tools/selection/RectSelectToolHandler.h"

namespace orvanel {

SelectionPath RectSelectToolHandler::pathOf(const QRectF& box) const {
  return SelectionPath::rect(box.x(), box.y(), box.width(), box.height());
}

void RectSelectToolHandler::fill(Selection& selection, const PixelRect& box, float feather,
                                 const MetalContext& context) const {
  selection.setRect(box.intersected(selection.maskTexture->texture->bounds()), feather, context);
}

}  // namespace orvanel
