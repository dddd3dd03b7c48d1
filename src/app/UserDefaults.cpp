#include "app/UserDefaults.h"

#include <algorithm>

namespace orvanel {

UserDefaults::UserDefaults() {
  registerDefault(confirmUnsavedChangesKey, true);
  registerDefault(inspectorWidthKey, 288);
  registerDefault(keepsRecoveryKey, true);
  registerDefault(layerThumbnailSizeKey, 48);
}

QVariant UserDefaults::value(const QString& key) const {
  QVariant registered = registered_.value(key);
  const QVariant stored = settings_.value(key);
  if (!stored.isValid()) return registered;
  // The file may have been edited by hand; values of the wrong type are ignored.
  QVariant converted = stored;
  if (registered.isValid() && !converted.convert(registered.metaType())) return registered;
  return converted;
}

int UserDefaults::inspectorWidth() const {
  return std::clamp(value(inspectorWidthKey).toInt(), narrowestInspector, widestInspector);
}

int UserDefaults::layerThumbnailSize() const {
  return std::clamp(value(layerThumbnailSizeKey).toInt(), smallestLayerThumbnail, largestLayerThumbnail);
}

}  // namespace orvanel
