#include "tools/DocumentNotifications.h"

#include "tools/NotificationCenter.h"

namespace orvanel {
namespace {

void postChanges(const DocumentChanges& changes) {
  NotificationCenter& center = NotificationCenter::standard();
  if (contains<change::ActiveNodeChanged>(changes) ||
      containsAny<change::NodePropertyChanged>(changes, NodeProperty::isMaskSelected)) {
    center.post(notification::activeLayerChanged);
  }
  if (contains<change::ThumbnailsChanged>(changes)) center.post(notification::thumbnailsDidUpdate);
  if (contains<change::HistoryStepped>(changes)) center.post(notification::undoRedoPerformed);
}

}  // namespace

DocumentNotifications::DocumentNotifications(const Document& document)
    : changes_(document.changes().observe(postChanges)) {}

}  // namespace orvanel
