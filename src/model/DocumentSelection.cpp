// Commands on the selection. None of them makes the document dirty.
#include "model/Document.h"
#include "model/edit/DocumentEdit.h"
#include "model/edit/EditCost.h"
#include "model/records/SelectionChangeOperation.h"

namespace orvanel {

void Document::ensureSelection() {
  DocumentEdit edit(*this, editKind::state);
  edit.ensureSelection();
}

std::shared_ptr<const Selection> Document::activeSelection() const {
  const std::shared_ptr<const Selection>& current = selection.value();
  return current != nullptr && current->hasSelection.value() ? current : nullptr;
}

void Document::changeSelection(DocumentEdit& edit, const QString& actionName,
                               const std::function<void(Selection&)>& change) {
  const std::shared_ptr<Selection> current = edit.selection();
  if (current == nullptr) return;
  // If no record can be made the selection still changes; it just can't be undone.
  const std::shared_ptr<SelectionChangeOperation> record =
      SelectionChangeOperation::create(actionName, shared_from_this());
  change(*current);
  if (record == nullptr) return;
  record->captureAfter();
  edit.record(record);
}

void Document::selectAll() {
  DocumentEdit edit(*this, editKind::selection);
  edit.ensureSelection();
  changeSelection(edit, QStringLiteral("Select All"),
                  [this](Selection& current) { current.selectAll(context_); });
}

void Document::deselect() {
  DocumentEdit edit(*this, editKind::selection);
  if (activeSelection() == nullptr) return;
  changeSelection(edit, QStringLiteral("Deselect"), [this](Selection& current) { current.clear(context_); });
}

void Document::invertSelection() {
  DocumentEdit edit(*this, editKind::selection);
  const std::shared_ptr<const Selection>& standing = selection.value();
  if (standing == nullptr || !edit.admits(editCost::ofMaskLike(*standing->maskTexture->texture))) return;
  changeSelection(edit, QStringLiteral("Invert Selection"),
                  [this](Selection& current) { current.invert(context_); });
}

void Document::selectLayerTransparency(const Layer& layer) {
  DocumentEdit edit(*this, editKind::selection);
  const ConstTexture pixels = layer.texture.value();
  // The layer may have been removed before the canvas changed its size.
  if (pixels == nullptr || !haveSameSize(*pixels, *compositedTexture.value())) return;
  if (!edit.admits(editCost::ofMaskLike(*pixels))) return;
  edit.ensureSelection();
  changeSelection(edit, QStringLiteral("Select Layer Transparency"), [&](Selection& current) {
    context_.extractAlpha(*pixels, current.pixels(), colorMode.value());
    current.restoreFlags({.hasSelection = true, .isFullSelection = false});
  });
}

void Document::selectChannel(int index) {
  DocumentEdit edit(*this, editKind::selection);
  const ConstTexture flattened = composite();
  if (flattened == nullptr || !edit.admits(editCost::ofMaskLike(*flattened))) return;
  edit.ensureSelection();
  changeSelection(edit, QStringLiteral("Select Channel"), [&](Selection& current) {
    context_.extractChannel(*flattened, current.pixels(), index);
    current.restoreFlags({.hasSelection = true, .isFullSelection = false});
  });
}

void Document::selectMask(const LayerMask& mask) {
  DocumentEdit edit(*this, editKind::selection);
  edit.ensureSelection();
  changeSelection(edit, QStringLiteral("Select Mask"), [&](Selection& current) {
    current.mask().copyContents(*mask.maskTexture);
    current.restoreFlags({.hasSelection = true, .isFullSelection = false});
  });
}

}  // namespace orvanel
