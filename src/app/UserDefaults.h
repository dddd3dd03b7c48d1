// Persistent settings with registered default values, stored in the user's configuration directory. Main
// thread only.
#pragma once

#include <QSettings>
#include <QString>
#include <QVariant>

namespace orvanel {

class UserDefaults {
 public:
  /// Whether closing or quitting asks about unsaved changes; if false, they are discarded silently.
  static constexpr const char* confirmUnsavedChangesKey = "confirmUnsavedChanges";
  /// Whether unsaved documents are kept in journals, to be offered after a crash.
  static constexpr const char* keepsRecoveryKey = "keepsRecovery";
  /// Where files were last opened from or written to.
  static constexpr const char* lastFolderKey = "lastFolder";
  /// Edge of the thumbnails in the layer panel, in view points.
  static constexpr const char* layerThumbnailSizeKey = "layerThumbnailSize";
  static constexpr int smallestLayerThumbnail = 16;
  static constexpr int largestLayerThumbnail = 256;
  /// Width of the column at the window's right, in view points.
  static constexpr const char* inspectorWidthKey = "inspectorWidth";
  static constexpr int narrowestInspector = 248;
  static constexpr int widestInspector = 480;

  UserDefaults();

  /// Sets the value of a key for as long as none is stored.
  void registerDefault(const QString& key, const QVariant& value) { registered_.insert(key, value); }

  [[nodiscard]] QVariant value(const QString& key) const;
  void setValue(const QString& key, const QVariant& value) { settings_.setValue(key, value); }
  void removeValue(const QString& key) { settings_.remove(key); }

  /// Writes pending changes to disk.
  void synchronize() { settings_.sync(); }

  [[nodiscard]] bool confirmUnsavedChanges() const { return value(confirmUnsavedChangesKey).toBool(); }
  [[nodiscard]] bool keepsRecovery() const { return value(keepsRecoveryKey).toBool(); }
  // The nearest possible value, whatever is stored.
  [[nodiscard]] int inspectorWidth() const;
  [[nodiscard]] int layerThumbnailSize() const;

 private:
  QSettings settings_;
  QVariantMap registered_;
};

}  // namespace orvanel
