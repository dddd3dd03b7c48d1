#include "app/FileMessage.h"

#include <QFileInfo>

namespace orvanel {

QString fileMessage(const QString& path, const QString& message) {
  return QFileInfo(path).fileName() + QStringLiteral(": ") + message;
}

}  // namespace orvanel
