// The files opened last, newest first: for the "Open Recent" menu, and published to the list that the
// desktop's file managers and panels share. Owned by the application state; main thread only.
#pragma once

#include <QString>
#include <QStringList>

namespace orvanel {

class UserDefaults;

class RecentDocuments {
 public:
  static constexpr int maximumCount = 10;

  explicit RecentDocuments(UserDefaults& defaults) : defaults_(defaults) {}

  /// Absolute paths, newest first.
  [[nodiscard]] QStringList paths() const;
  /// Puts a file at the front. Publishing it to the desktop happens in the background and may fail silently.
  void record(const QString& path);
  void clear();

 private:
  UserDefaults& defaults_;
};

}  // namespace orvanel
