#include "app/UserDefaults.h"

namespace orvanel {

UserDefaults::UserDefaults() {
  registerDefault(confirmUnsavedChangesKey, true);
  registerDefault(layerThumbnailSizeKey, 48);
}

QVariant UserDefaults::value(const QString& key) const {
  QVariant registered = registered_.value(key);
  const QVariant stored = settings_.value(key);
  if (!stored.isValid()) return registered;
  // A hand-edited file may hold anything; what can't be read as the setting's type doesn't count.
  QVariant converted = stored;
  if (registered.isValid() && !converted.convert(registered.metaType())) return registered;
  return converted;
}

}  // namespace orvanel
