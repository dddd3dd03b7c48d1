// The "Open Recent" submenu: the files opened last, and an item that empties the list. Owned by the main
// menu; main thread only.
#pragma once

#include <QMenu>

#include "app/DocumentFiles.h"
#include "app/RecentDocuments.h"
#include "tools/NotificationCenter.h"

namespace orvanel {

class OpenRecentCommand {
 public:
  /// All must outlive the command.
  OpenRecentCommand(QMenu& fileMenu, RecentDocuments& recentDocuments, DocumentFiles& files);

  [[nodiscard]] QMenu& menu() { return *menu_; }

 private:
  void rebuild();

  RecentDocuments& recentDocuments_;
  DocumentFiles& files_;
  QMenu* menu_;
  NotificationCenter::Subscription subscription_;
};

}  // namespace orvanel
