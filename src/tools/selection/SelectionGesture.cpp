#include "tools/selection/SelectionGesture.h"

#include <algorithm>
#include <cmath>

namespace orvanel {

SelectionMode selectionModeOf(std::uint32_t modifiers) {
  const bool adds = (modifiers & modifier::shift) != 0;
  const bool subtracts = (modifiers & modifier::option) != 0;
  if (adds && subtracts) return SelectionMode::intersect;
  if (adds) return SelectionMode::add;
  return subtracts ? SelectionMode::subtract : SelectionMode::replace;
}

void SelectionGesture::showShape(SelectionMode mode, const std::function<bool(Selection&)>& fill,
                                 std::uint64_t bytes) {
  // The mask that is combined has data only where that of the shape has.
  const std::uint64_t bytesOfBoth = mode == SelectionMode::replace ? bytes : 2 * bytes;
  edit_.show(bytesOfBoth, [&](const Document& document, Selection& selection) {
    const MetalContext& context = document.context();
    const MaskTexture& mask = *selection.maskTexture;
    const std::shared_ptr<Selection> shape = Selection::create(mask.width, mask.height, context);
    if (shape == nullptr || !fill(*shape)) return false;
    // A selection without pixels couldn't be seen, but would keep edits from changing anything.
    if (!context.selectionBounds(*shape->maskTexture->texture)) return false;
    if (mode != SelectionMode::replace && selection.hasSelection.value()) {
      combineMask(selection, *shape->maskTexture->texture, mode, context);
    } else {
      selection.pixels() = shape->pixels();
      selection.restoreFlags(shape->flags());
    }
    return true;
  });
}

void SelectionGesture::clear() {
  edit_.show(0, [](const Document& document, Selection& selection) {
    selection.clear(document.context());
    return true;
  });
}

void combineMask(Selection& selection, const Surface& shapeMask, SelectionMode mode,
                 const MetalContext& context) {
  Surface& mask = selection.pixels();
  switch (mode) {
    case SelectionMode::replace:
      mask = shapeMask;
      break;
    case SelectionMode::add:
      context.addMasks(mask, shapeMask);
      break;
    case SelectionMode::subtract:
      context.subtractMasks(mask, shapeMask);
      break;
    case SelectionMode::intersect:
      context.intersectMasks(mask, shapeMask);
      break;
  }
  selection.refreshFlags(context);
}

PixelRect drawnRect(const Document& document, double x, double y, double width, double height) {
  const double canvasWidth = document.canvasWidth.value();
  const double canvasHeight = document.canvasHeight.value();
  const double left = std::clamp(std::floor(std::min(x, x + width)), 0.0, canvasWidth);
  const double top = std::clamp(std::floor(std::min(y, y + height)), 0.0, canvasHeight);
  const double right = std::clamp(std::ceil(std::max(x, x + width)), left, canvasWidth);
  const double bottom = std::clamp(std::ceil(std::max(y, y + height)), top, canvasHeight);
  return {static_cast<int>(left), static_cast<int>(top), static_cast<int>(right - left),
          static_cast<int>(bottom - top)};
}

}  // namespace orvanel
