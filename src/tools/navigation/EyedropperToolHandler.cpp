#include "tools/navigation/EyedropperToolHandler.h"

#include <algorithm>
#include <cmath>

#include "raster/SampledComposite.h"
#include "raster/kernels/PixelAccess.h"

namespace orvanel {
namespace {

/// A pixel as a display colour. Half floats may go beyond what a display shows.
DisplayColor displayColor(const Surface& surface, int x, int y) {
  Color4 channels = kernels::colorOfPixel(surface.pixelAt(x, y), surface.format());
  for (float& channel : channels) channel = std::clamp(channel, 0.0F, 1.0F);
  return {channels[0], channels[1], channels[2], channels[3]};
}

/// The colour seen at a pixel of the canvas. Flattens that pixel alone if the flattened image isn't current.
std::optional<DisplayColor> colorAt(const Document& document, int x, int y) {
  if (document.isCompositeCurrent()) return displayColor(*document.compositedTexture.value(), x, y);
  SampledComposite samples;
  const Surface* const pixel = document.sampleComposite(samples, {.columns = {x}, .rows = {y}});
  if (pixel == nullptr) return std::nullopt;
  return displayColor(*pixel, 0, 0);
}

void sample(const EventRecord& event, const ToolContext& context, QPointF viewPoint) {
  const DocumentPtr document = context.document.lock();
  if (document == nullptr || context.view == nullptr) return;
  const std::optional<QPointF> point = context.view->viewToDocument(viewPoint);
  if (!point) return;
  const double x = std::floor(point->x());
  const double y = std::floor(point->y());
  if (x < 0.0 || y < 0.0 || x >= document->canvasWidth.value() || y >= document->canvasHeight.value()) return;
  const std::optional<DisplayColor> color = colorAt(*document, static_cast<int>(x), static_cast<int>(y));
  if (!color) return;
  if ((event.modifiers & modifier::option) != 0) {
    document->setBackgroundColor(*color);
  } else {
    document->setForegroundColor(*color);
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
