#include "tools/navigation/EyedropperToolHandler.h"

#include <algorithm>
#include <cmath>

#include "raster/kernels/PixelAccess.h"

namespace orvanel {
namespace {

/// A pixel of the composite as a display colour. Half floats may go beyond what a display shows.
DisplayColor displayColor(const Surface& composite, int x, int y) {
  Color4 channels = kernels::colorOfPixel(composite.pixelAt(x, y), composite.format());
  for (float& channel : channels) channel = std::clamp(channel, 0.0F, 1.0F);
  return {channels[0], channels[1], channels[2], channels[3]};
}

void sample(const EventRecord& event, const ToolContext& context, QPointF viewPoint) {
  const DocumentPtr document = context.document.lock();
  if (document == nullptr || context.view == nullptr) return;
  const std::optional<QPointF> point = context.view->viewToDocument(viewPoint);
  if (!point) return;
  const double x = std::floor(point->x());
  const double y = std::floor(point->y());
  if (x < 0.0 || y < 0.0 || x >= document->canvasWidth.value() || y >= document->canvasHeight.value()) return;
  const DisplayColor color = displayColor(*document->composite(), static_cast<int>(x), static_cast<int>(y));
  if ((event.modifiers & modifier::option) != 0) {
    document->setBackgroundColor(color);
  } else {
    document->setForegroundColor(color);
  }
}

}  // namespace

CursorShape EyedropperToolHandler::cursor(std::uint32_t modifiers, const ToolContext& context) const {
  (void)modifiers;
  (void)context;
  return CursorShape::crosshair;
}

void EyedropperToolHandler::mouseDown(const EventRecord& event, const ToolContext& context,
                                      QPointF viewPoint) {
  sample(event, context, viewPoint);
}

void EyedropperToolHandler::mouseDragged(const EventRecord& event, const ToolContext& context,
                                         QPointF viewPoint) {
  sample(event, context, viewPoint);
}

}  // namespace orvanel
