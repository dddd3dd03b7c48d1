// Receives the folders that the desktop is asked to show, while it lives.
#pragma once

#include <QDesktopServices>
#include <QList>
#include <QObject>
#include <QUrl>

namespace orvanel {

class FolderOpener : public QObject {
  Q_OBJECT

 public:
  FolderOpener() { QDesktopServices::setUrlHandler(QStringLiteral("file"), this, "open"); }
  ~FolderOpener() override { QDesktopServices::unsetUrlHandler(QStringLiteral("file")); }

  QList<QUrl> opened;

 public Q_SLOTS:
  void open(const QUrl& url) { opened << url; }
};

}  // namespace orvanel
