#include "app/FileMessage.h"

#include "io/files/FileName.h"

namespace orvanel {

QString fileMessage(const QString& path, const QString& message) {
  return displayName(path) + QStringLiteral(": ") + message;
}

}  // namespace orvanel
