// The "Open Recent" submenu: the most recent files, and an item that clears the list. Owned by the main
// window; main thread only.
#pragma once

#include <QCoreApplication>
#include <QMenu>

#include "app/DocumentFiles.h"
#include "app/RecentDocuments.h"
#include "tools/NotificationCenter.h"

namespace orvanel {

class OpenRecentCommand {
  Q_DECLARE_TR_FUNCTIONS(orvanel::OpenRecentCommand)

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
