// The commands on the selection. None of them makes the document dirty.
#include "model/Document.h"
#include "model/records/SelectionChangeOperation.h"

namespace orvanel {

void Document::ensureSelection() {
  if (selection.value() == nullptr) resetSelection();
}

void Document::resetSelection() {
  selection = Selection::create(canvasWidth.value(), canvasHeight.value(), context_);
}

std::shared_ptr<Selection> Document::activeSelection() const {
  const std::shared_ptr<Selection>& current = selection.value();
  return current != nullptr && current->hasSelection.value() ? current : nullptr;
}

void Document::changeSelection(const QString& actionName, const std::function<void(Selection&)>& change) {
  const std::shared_ptr<Selection> current = selection.value();
  if (current == nullptr) return;
  // Without a record the selection changes all the same; only the step back is missing.
  const std::shared_ptr<SelectionChangeOperation> record =
      SelectionChangeOperation::create(actionName, shared_from_this());
  change(*current);
  if (record == nullptr) return;
  record->captureAfter();
  undoStack.push(record);
}

void Document::selectAll() {
  ensureSelection();
  changeSelection(QStringLiteral("Select All"), [this](Selection& current) { current.selectAll(context_); });
}

void Document::deselect() {
  if (activeSelection() == nullptr) return;
  changeSelection(QStringLiteral("Deselect"), [this](Selection& current) { current.clear(context_); });
}

void Document::invertSelection() {
  changeSelection(QStringLiteral("Invert Selection"),
                  [this](Selection& current) { current.invert(context_); });
}

void Document::selectLayerTransparency(const Layer& layer) {
  const Texture pixels = layer.texture.value();
  if (pixels == nullptr) return;
  ensureSelection();
  changeSelection(QStringLiteral("Select Layer Transparency"), [&](Selection& current) {
    context_.extractAlpha(*pixels, *current.maskTexture->texture, colorMode.value());
    current.restoreFlags({.hasSelection = true, .isFullSelection = false});
  });
}

void Document::selectChannel(int index) {
  const Texture composited = compositedTexture.value();
  if (composited == nullptr) return;
  ensureSelection();
  changeSelection(QStringLiteral("Select Channel"), [&](Selection& current) {
    context_.extractChannel(*composited, *current.maskTexture->texture, index);
    current.restoreFlags({.hasSelection = true, .isFullSelection = false});
  });
}

void Document::selectMask(const LayerMask& mask) {
  ensureSelection();
  changeSelection(QStringLiteral("Select Mask"), [&](Selection& current) {
    current.maskTexture->copyContents(*mask.maskTexture);
    current.restoreFlags({.hasSelection = true, .isFullSelection = false});
  });
}

}  // namespace orvanel
