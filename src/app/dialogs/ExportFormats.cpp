#include "app/dialogs/ExportFormats.h"

#include <QFileInfo>
#include <QStringList>

namespace orvanel {

std::optional<int> exportRowForName(const QString& fileName) {
  const QString pattern = QStringLiteral("*.") + QFileInfo(fileName).suffix().toLower();
  for (std::size_t row = 0; row < exportFormats.size(); ++row) {
    const QStringList patterns = QString::fromLatin1(exportFormats[row].patterns).split(u' ');
    if (patterns.contains(pattern)) return static_cast<int>(row);
  }
  return std::nullopt;
}

}  // namespace orvanel
