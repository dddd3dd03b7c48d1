#include "tools/SelectionGesture.h"

#include <algorithm>
#include <cmath>

#include "model/records/SelectionChangeOperation.h"

namespace orvanel {

SelectionGesture::SelectionGesture(const DocumentPtr& document, const QString& actionName)
    : document_(document), hadSelection_(document->activeSelection() != nullptr) {
  document->ensureSelection();
  activeOp_ = SelectionChangeOperation::create(actionName, document);
}

SelectionGesture::~SelectionGesture() = default;

void SelectionGesture::selectShape(SelectionMode mode, const std::function<void(Selection&)>& fill) {
  const MetalContext& context = document_->context();
  const std::shared_ptr<Selection> selected = document_->activeSelection();
  if (mode != SelectionMode::replace && selected != nullptr) {
    const std::shared_ptr<Selection> shape =
        Selection::create(selected->maskTexture->width, selected->maskTexture->height, context);
    if (shape == nullptr) return;
    fill(*shape);
    combineMask(*selected, *shape->maskTexture->texture, mode, context);
    return;
  }
  if (const std::shared_ptr<Selection>& selection = document_->selection.value()) {
    selection->clear(context);
    fill(*selection);
  }
}

void SelectionGesture::clear() {
  if (const std::shared_ptr<Selection>& selection = document_->selection.value()) {
    selection->clear(document_->context());
  }
}

void SelectionGesture::close() {
  if (activeOp_ == nullptr) return;
  activeOp_->captureAfter();
  if (hadSelection_ || document_->activeSelection() != nullptr) document_->undoStack.push(activeOp_);
  activeOp_ = nullptr;
}

void combineMask(Selection& selection, const Surface& shapeMask, SelectionMode mode,
                 const MetalContext& context) {
  Surface& mask = *selection.maskTexture->texture;
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
