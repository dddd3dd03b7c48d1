#include "app/OpenRecentCommand.h"

#include <QDir>
#include <QFileInfo>
#include <map>

namespace orvanel {

namespace {

/// The file's name, followed by its folder if another file has the same name.
QString itemTitle(const QString& path, bool isAmbiguous) {
  const QFileInfo file(path);
  QString title =
      isAmbiguous ? QStringLiteral("%1 — %2").arg(file.fileName(), file.dir().dirName()) : file.fileName();
  // A single ampersand would mark the next letter as a mnemonic.
  return title.replace(u'&', QStringLiteral("&&"));
}

}  // namespace

OpenRecentCommand::OpenRecentCommand(QMenu& fileMenu, RecentDocuments& recentDocuments, DocumentFiles& files)
    : recentDocuments_(recentDocuments),
      files_(files),
      menu_(fileMenu.addMenu(tr("Open Recent"))),
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
  QAction* clear = menu_->addAction(tr("Clear Menu"));
  clear->setEnabled(!paths.isEmpty());
  QObject::connect(clear, &QAction::triggered, clear, [this] {
    recentDocuments_.clear();
    // Rebuilding the menu deletes the clicked item, so wait until the click has been handled.
    QMetaObject::invokeMethod(
        menu_, [] { NotificationCenter::standard().post(notification::recentDocumentsChanged); },
        Qt::QueuedConnection);
  });
}

}  // namespace orvanel
