#include "tools/selection/RectSelectToolHandler.h"

#include "tools/selection/ShapeCost.h"

namespace orvanel {

SelectionPath RectSelectToolHandler::pathOf(const QRectF& box) const {
  return SelectionPath::rect(box.x(), box.y(), box.width(), box.height());
}

std::uint64_t RectSelectToolHandler::cost(const Document& document, const PixelRect& box,
                                          float feather) const {
  return shapeCost::ofRect(document, box.intersected(document.compositedTexture.value()->bounds()), feather);
}

void RectSelectToolHandler::fill(Selection& selection, const PixelRect& box, float feather,
                                 const MetalContext& context) const {
  selection.setRect(box.intersected(selection.maskTexture->texture->bounds()), feather, context);
}

}  // namespace orvanel
