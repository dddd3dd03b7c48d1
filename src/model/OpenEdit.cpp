#include "model/OpenEdit.h"

#include <algorithm>
#include <vector>

#include "model/edit/DocumentEdit.h"

namespace orvanel {

OpenEdit::OpenEdit(const DocumentPtr& document, Ground ground) : document_(document), ground_(ground) {
  document->openEdits_.push_back(this);
}

OpenEdit::~OpenEdit() {
  close();
}

void OpenEdit::close() {
  isOpen_ = false;
  if (const DocumentPtr document = document_.lock()) std::erase(document->openEdits_, this);
}

void OpenEdit::endAll(Document& document, EndsOpenEdits which) {
  if (which == EndsOpenEdits::none) return;
  const auto mustEnd = [which](const OpenEdit* edit) {
    return which == EndsOpenEdits::all || edit->ground_ == Ground::selection;
  };
  const auto next = [&] { return std::ranges::find_if(document.openEdits_, mustEnd); };
  for (auto it = next(); it != document.openEdits_.end(); it = next()) {
    OpenEdit& edit = **it;
    edit.end();
    edit.close();
  }
}

}  // namespace orvanel
