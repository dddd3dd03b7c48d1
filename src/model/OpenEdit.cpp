#include "model/OpenEdit.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "model/edit/DocumentEdit.h"

namespace orvanel {

EndsOpenEdits OpenEdit::onTheSameGround(Ground ground) {
  switch (ground) {
    case Ground::surfaces:
      return EndsOpenEdits::ofTheSurfaces;
    case Ground::selection:
      return EndsOpenEdits::ofTheSelection;
    case Ground::properties:
      return EndsOpenEdits::ofTheProperties;
  }
  return EndsOpenEdits::none;
}

OpenEdit::OpenEdit(const DocumentPtr& document, Ground ground, QString actionName)
    : document_(document), ground_(ground), actionName_(std::move(actionName)) {
  endAll(*document, onTheSameGround(ground));
  document->openEdits_.push_back(this);
}

OpenEdit::~OpenEdit() {
  close();
}

void OpenEdit::noteShown(DocumentEdit& edit, bool isShown) {
  if (std::exchange(hasShown_, isShown) != isShown) edit.tell(change::OpenEditChanged{});
}

void OpenEdit::close() {
  if (!std::exchange(isOpen_, false)) return;
  const DocumentPtr document = document_.lock();
  if (document != nullptr) std::erase(document->openEdits_, this);
  continuousEditing_ = {};
  if (const auto closed = std::exchange(onClosed, nullptr)) closed();
  // Last, because observers may destroy this edit.
  if (document != nullptr && (hasShown_ || isEndedByDocument_)) {
    DocumentEdit(*document, editKind::state).tell(change::OpenEditChanged{});
  }
}

void OpenEdit::holdThumbnailsBack() {
  continuousEditing_ = ThumbnailManager::editingContinuously(document());
}

void OpenEdit::endAll(Document& document, EndsOpenEdits which) {
  const auto mustEnd = [which](const OpenEdit* edit) {
    return which == EndsOpenEdits::all || which == onTheSameGround(edit->ground_);
  };
  // Ending one notifies observers, who may destroy it or end others.
  const auto next = [&] { return std::ranges::find_if(document.openEdits_, mustEnd); };
  for (auto it = next(); it != document.openEdits_.end(); it = next()) {
    (*it)->isEndedByDocument_ = true;
    (*it)->end();
  }
}

}  // namespace orvanel
