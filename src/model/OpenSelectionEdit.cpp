#include "model/OpenSelectionEdit.h"

#include <utility>

#include "model/edit/DocumentEdit.h"
#include "model/records/SelectionChangeOperation.h"

namespace orvanel {

OpenSelectionEdit::OpenSelectionEdit(const DocumentPtr& document, const QString& actionName)
    : OpenEdit(document, Ground::selection, actionName),
      hadSelection_(document->activeSelection() != nullptr) {
  document->ensureSelection();
  if (const std::shared_ptr<const Selection>& selection = document->selection.value()) {
    originalMask_ = *selection->maskTexture->texture;
    originalFlags_ = selection->flags();
  }
  record_ = SelectionChangeOperation::create(actionName, document);
}

OpenSelectionEdit::~OpenSelectionEdit() {
  OpenSelectionEdit::end();
}

void OpenSelectionEdit::show(
    std::uint64_t bytes, const std::function<bool(const Document& document, Selection& selection)>& write) {
  const DocumentPtr target = document();
  if (target == nullptr || record_ == nullptr) return;
  DocumentEdit edit(*target, editKind::selecting);
  const std::shared_ptr<Selection> selection = edit.selection();
  restoreOriginal(*selection);
  // Told once: a drag would be refused at every step.
  if (!edit.admits(bytes)) record_ = nullptr;
  const bool isWritten = record_ != nullptr && write(*target, *selection);
  if (!isWritten) restoreOriginal(*selection);
  noteShown(edit, isWritten);
}

void OpenSelectionEdit::takeBack() {
  const DocumentPtr target = document();
  if (target != nullptr && hasShown()) {
    DocumentEdit edit(*target, editKind::selecting);
    restoreOriginal(*edit.selection());
    noteShown(edit, false);
  }
  close();
}

void OpenSelectionEdit::restoreOriginal(Selection& selection) const {
  selection.pixels() = *originalMask_;
  selection.restoreFlags(originalFlags_);
}

void OpenSelectionEdit::keep() {
  const DocumentPtr target = document();
  if (target == nullptr) return;
  DocumentEdit edit(*target, editKind::selecting);
  const std::shared_ptr<SelectionChangeOperation> record = std::exchange(record_, nullptr);
  close();
  if (record == nullptr || (!hadSelection_ && target->activeSelection() == nullptr)) return;
  record->captureAfter();
  edit.record(record);
}

void OpenSelectionEdit::end() {
  if (hasShown()) {
    keep();
  } else {
    close();
  }
}

}  // namespace orvanel
