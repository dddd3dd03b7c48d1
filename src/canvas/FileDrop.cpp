#include "canvas/FileDrop.h"

#include <QUrl>

namespace orvanel::fileDrop {

QStringList localFiles(const QMimeData& data) {
  QStringList files;
  for (const QUrl& url : data.urls()) {
    if (url.isLocalFile()) files.append(url.toLocalFile());
  }
  return files;
}

void acceptAsCopy(QDropEvent& event) {
  event.setDropAction(Qt::CopyAction);
  event.accept();
}

}  // namespace orvanel::fileDrop
