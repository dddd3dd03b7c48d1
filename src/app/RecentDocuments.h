// The most recently opened files, for the "Open Recent" menu. Also published to the desktop's own list of
// recent files. Owned by the application state; main thread only.
#pragma once

#include <QString>
#include <QStringList>
#include <set>

namespace orvanel {

class UserDefaults;

class RecentDocuments {
 public:
  static constexpr int maximumCount = 10;

  explicit RecentDocuments(UserDefaults& defaults) : defaults_(defaults) {}

  /// Absolute paths, newest first.
  [[nodiscard]] QStringList paths() const;
  /// Moves the file to the front. It is published to the desktop in the background; errors are ignored.
  void record(const QString& path);
  void clear();

 private:
  UserDefaults& defaults_;
  /// Since the start of the program.
  std::set<QString> published_;
};

}  // namespace orvanel
