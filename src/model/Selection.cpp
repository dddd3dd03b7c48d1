#include "model/Selection.h"

#include "model/edit/PropertyWriter.h"
#include "raster/HalfFloat.h"

namespace orvanel {
namespace {

bool isEverywhereOne(const Surface& mask, const MetalContext& context) {
  Surface full(mask.format(), mask.width(), mask.height());
  context.fillMask(full, 1.0F);
  return mask.equals(full);
}

}  // namespace

std::shared_ptr<Selection> Selection::create(int width, int height, const MetalContext& context) {
  std::shared_ptr<MaskTexture> mask = MaskTexture::create(width, height, context);
  if (mask == nullptr) return nullptr;
  return std::make_shared<Selection>(std::move(mask));
}

void Selection::selectAll(const MetalContext& context) {
  context.fillMask(pixels(), 1.0F);
  restoreFlags({.hasSelection = true, .isFullSelection = true});
}

void Selection::clear(const MetalContext& context) {
  context.fillMask(pixels(), 0.0F);
  restoreFlags({});
}

void Selection::invert(const MetalContext& context) {
  context.invertMask(pixels());
  if (isFullSelection.value()) {
    restoreFlags({});
  } else if (!hasSelection.value()) {
    restoreFlags({.hasSelection = true, .isFullSelection = true});
  }
}

void Selection::setRect(const PixelRect& rect, float feather, const MetalContext& context) {
  context.fillRectMask(pixels(), rect, feather);
  const bool isWholeCanvas = rect == maskTexture->texture->bounds();
  restoreFlags({.hasSelection = !rect.isEmpty(), .isFullSelection = isWholeCanvas});
}

void Selection::setEllipse(float centerX, float centerY, float radiusX, float radiusY, float feather,
                           const MetalContext& context) {
  context.fillEllipseMask(pixels(), centerX, centerY, radiusX, radiusY, feather);
  restoreFlags({.hasSelection = radiusX > 0.0F && radiusY > 0.0F, .isFullSelection = false});
}

void Selection::setPolygon(std::span<const PolygonPoint> points, const MetalContext& context) {
  if (points.size() <= 2) return;
  context.fillPolygonMask(pixels(), points);
  restoreFlags({.hasSelection = true, .isFullSelection = false});
}

bool Selection::isPointSelected(int x, int y) const {
  return halfToFloat(static_cast<std::uint16_t>(maskTexture->texture->pixelAt(x, y))) > 0.0F;
}

void Selection::restoreFlags(const Flags& flags) {
  PropertyWriter::write(hasSelection, flags.hasSelection);
  PropertyWriter::write(isFullSelection, flags.isFullSelection);
}

void Selection::refreshFlags(const MetalContext& context) {
  const Surface& mask = *maskTexture->texture;
  const std::optional<PixelRect> bounds = context.selectionBounds(mask);
  const bool mayBeFull = bounds == mask.bounds();
  restoreFlags(
      {.hasSelection = bounds.has_value(), .isFullSelection = mayBeFull && isEverywhereOne(mask, context)});
}

}  // namespace orvanel
