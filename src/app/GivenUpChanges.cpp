#include "app/GivenUpChanges.h"

namespace orvanel {

namespace {

/// Whether a save would write something else now.
bool changeTheWork(const DocumentChanges& changes) {
  return contains<change::NodeInserted>(changes) || contains<change::NodeRemoved>(changes) ||
         contains<change::NodeMoved>(changes) || contains<change::NodePropertyChanged>(changes) ||
         contains<change::PixelsChanged>(changes) || contains<change::PreviewChanged>(changes) ||
         contains<change::OpenEditChanged>(changes) || contains<change::CanvasChanged>(changes) ||
         contains<change::FileStateChanged>(changes) ||
         containsAny<change::ViewChanged>(changes, ViewProperty::colors);
}

}  // namespace

void GivenUpChanges::remember(const std::vector<DocumentPtr>& documents) {
  forget();
  for (const DocumentPtr& document : documents) {
    unchanged_[document->id] =
        document->changes().observe([this, id = document->id](const DocumentChanges& changes) {
          if (changeTheWork(changes)) unchanged_.erase(id);
        });
  }
}

}  // namespace orvanel
