#include "model/records/SelectionChangeOperation.h"

#include <utility>

#include "model/edit/DocumentEdit.h"

namespace orvanel {

std::optional<SelectionChangeOperation::State> SelectionChangeOperation::currentState(
    const Document& document) {
  const std::shared_ptr<const Selection>& selection = document.selection.value();
  if (selection == nullptr) return std::nullopt;
  std::shared_ptr<TextureSnapshot> snapshot =
      TextureSnapshot::captureReady(*selection->maskTexture->texture, document.context());
  if (snapshot == nullptr) return std::nullopt;
  return State{.snapshot = std::move(snapshot), .flags = selection->flags()};
}

std::shared_ptr<SelectionChangeOperation> SelectionChangeOperation::create(QString actionName,
                                                                           const DocumentPtr& document) {
  std::optional<State> before = currentState(*document);
  if (!before) return nullptr;
  return std::shared_ptr<SelectionChangeOperation>(
      new SelectionChangeOperation(std::move(actionName), document, std::move(*before)));
}

SelectionChangeOperation::SelectionChangeOperation(QString actionName, const DocumentPtr& document,
                                                   State before)
    : DocumentOperation(std::move(actionName), document), before_(std::move(before)) {}

void SelectionChangeOperation::captureAfter() {
  const DocumentPtr target = document();
  if (target == nullptr) return;
  if (std::optional<State> now = currentState(*target)) after_ = std::move(now);
}

void SelectionChangeOperation::apply(const State& state) const {
  const DocumentPtr target = document();
  if (target == nullptr) return;
  DocumentEdit edit(*target, editKind::record);
  const std::shared_ptr<Selection> selection = edit.selection();
  if (selection == nullptr) return;
  state.snapshot->restore(selection->pixels(), target->context());
  selection->restoreFlags(state.flags);
}

void SelectionChangeOperation::redo() {
  if (after_) apply(*after_);
}

void SelectionChangeOperation::undo() {
  apply(before_);
}

void SelectionChangeOperation::setReady(bool isReady) {
  before_.snapshot->setReady(isReady);
  if (after_) after_->snapshot->setReady(isReady);
}

UndoableOperation::StepCost SelectionChangeOperation::costToStep() const {
  const DocumentPtr target = document();
  const std::shared_ptr<const Selection> standing = target != nullptr ? target->selection.value() : nullptr;
  if (standing == nullptr || (!isApplied() && !after_)) return {};
  const Surface& mask = *standing->maskTexture->texture;
  const TextureSnapshot& restored = isApplied() ? *before_.snapshot : *after_->snapshot;
  // The selection isn't part of the flattened image, so no tiles of the canvas change.
  return {.bytes = restored.tilesUnlike(mask).data.size() * mask.tileBytes()};
}

std::int64_t SelectionChangeOperation::memoryCost() const {
  return before_.snapshot->compressedSize() + (after_ ? after_->snapshot->compressedSize() : 0);
}

}  // namespace orvanel
