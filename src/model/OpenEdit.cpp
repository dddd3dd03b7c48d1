#include "model/OpenEdit.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "model/edit/DocumentEdit.h"

namespace orvanel {

OpenEdit::OpenEdit(const DocumentPtr& document, Ground ground, QString actionName)
    : document_(document), ground_(ground), actionName_(std::move(actionName)) {
  if (ground == Ground::surface) endAll(*document, EndsOpenEdits::ofTheSurfaces);
  if (ground == Ground::selection) endAll(*document, EndsOpenEdits::ofTheSelection);
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
  const bool isTold = document != nullptr && hasShown_;
  continuousEditing_ = {};
  if (const auto closed = std::exchange(onClosed, nullptr)) closed();
  // Last, because observers may destroy this edit.
  if (isTold) DocumentEdit(*document, editKind::state).tell(change::OpenEditChanged{});
}

void OpenEdit::holdThumbnailsBack() {
  continuousEditing_ = ThumbnailManager::editingContinuously(document());
}

void OpenEdit::endAll(Document& document, EndsOpenEdits which) {
  const auto mustEnd = [which](const OpenEdit* edit) {
    switch (which) {
      case EndsOpenEdits::none:
        return false;
      case EndsOpenEdits::ofTheSurfaces:
        return edit->ground_ == Ground::surface;
      case EndsOpenEdits::ofTheSelection:
        return edit->ground_ == Ground::selection;
      case EndsOpenEdits::all:
        return true;
    }
    return false;
  };
  // Ending one notifies observers, who may destroy it or end others.
  const auto next = [&] { return std::ranges::find_if(document.openEdits_, mustEnd); };
  for (auto it = next(); it != document.openEdits_.end(); it = next()) (*it)->end();
}

}  // namespace orvanel
