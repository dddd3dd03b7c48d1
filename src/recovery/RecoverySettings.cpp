#include "recovery/RecoverySettings.h"

#include <QDir>
#include <QFile>

namespace orvanel {

QString defaultRecoveryFolder() {
  const QString state = QFile::decodeName(qgetenv("XDG_STATE_HOME"));
  // Relative paths count as none.
  const QString base =
      QDir::isAbsolutePath(state) ? state : QDir::homePath() + QStringLiteral("/.local/state");
  return QDir::cleanPath(base + QStringLiteral("/orvanel/recovery"));
}

}  // namespace orvanel
