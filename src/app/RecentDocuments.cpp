#include "app/RecentDocuments.h"

#include <QFileInfo>
#include <QThreadPool>

#include "app/DesktopRecentFiles.h"
#include "app/UserDefaults.h"

namespace orvanel {

namespace {

constexpr const char* recentDocumentsKey = "recentDocuments";

}  // namespace

QStringList RecentDocuments::paths() const {
  QStringList stored = defaults_.value(recentDocumentsKey).toStringList();
  stored.removeDuplicates();
  stored.removeAll(QString());
  return stored.mid(0, maximumCount);
}

void RecentDocuments::record(const QString& path) {
  const QString absolutePath = QFileInfo(path).absoluteFilePath();
  QStringList list = paths();
  const bool isFirst = !list.isEmpty() && list.front() == absolutePath;
  // The desktop's list may have lost it since an earlier run.
  const bool isNewInThisRun = published_.insert(absolutePath).second;
  if (isFirst && !isNewInThisRun) return;
  list.removeAll(absolutePath);
  list.prepend(absolutePath);
  defaults_.setValue(recentDocumentsKey, list.mid(0, maximumCount));
  QThreadPool::globalInstance()->start([absolutePath] { publishRecentFile(absolutePath); });
}

void RecentDocuments::clear() {
  defaults_.removeValue(recentDocumentsKey);
}

}  // namespace orvanel
