#include "app/OpenRecentCommand.h"

#include <QDir>
#include <QFileInfo>
#include <map>

namespace orvanel {

namespace {

/// The file's name; files of the same name are told apart by their folders.
QString itemTitle(const QString& path, bool isAmbiguous) {
  const QFileInfo file(path);
  QString title =
      isAmbiguous ? QStringLiteral("%1 — %2").arg(file.fileName(), file.dir().dirName()) : file.fileName();
  // A single one would underline the letter behind it.
  return title.replace(u'&', QStringLiteral("&&"));
}

}  // namespace

OpenRecentCommand::OpenRecentCommand(QMenu& fileMenu, RecentDocuments& recentDocuments, DocumentFiles& files)
    : recentDocuments_(recentDocuments),
      files_(files),
      menu_(fileMenu.addMenu(QStringLiteral("Open Recent"))),
      subscription_(NotificationCenter::standard().observe(notification::recentDocumentsChanged,
                                                           [this](const std::any&) { rebuild(); })) {
  menu_->setToolTipsVisible(true);
  rebuild();
}

void OpenRecentCommand::rebuild() {
  menu_->clear();
  const QStringList paths = recentDocuments_.paths();
  std::map<QString, int> sameName;
  for (const QString& path : paths) ++sameName[QFileInfo(path).fileName()];
  for (const QString& path : paths) {
    QAction* item = menu_->addAction(itemTitle(path, sameName[QFileInfo(path).fileName()] > 1));
    item->setToolTip(QStringLiteral("<span>%1</span>").arg(QDir::toNativeSeparators(path).toHtmlEscaped()));
    item->setData(path);
    QObject::connect(item, &QAction::triggered, item, [this, path] { files_.open({path}); });
  }
  if (!paths.isEmpty()) menu_->addSeparator();
  QAction* clear = menu_->addAction(QStringLiteral("Clear Menu"));
  clear->setEnabled(!paths.isEmpty());
  QObject::connect(clear, &QAction::triggered, clear, [this] {
    recentDocuments_.clear();
    // The item that was clicked goes with the menu's rebuilding, so that waits for the click to end.
    QMetaObject::invokeMethod(
        menu_, [] { NotificationCenter::standard().post(notification::recentDocumentsChanged); },
        Qt::QueuedConnection);
  });
}

}  // namespace orvanel
