#include "app/FileMessage.h"

#include "io/files/FileName.h"
#include "look/TranslatedSentence.h"

namespace orvanel {

QString fileMessage(const QString& path, const QString& message) {
  return displayName(path) + QStringLiteral(": ") + look::translatedSentence(message);
}

}  // namespace orvanel
