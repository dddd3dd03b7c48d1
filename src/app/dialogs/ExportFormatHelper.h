// Keeps the name and the format in an export panel in step: another format replaces the name's extension, and
// the extension of a typed name chooses the format. Lives as long as its panel; main thread only.
#pragma once

#include <QFileDialog>
#include <QObject>
#include <QString>

#include "app/dialogs/ExportFormats.h"

namespace orvanel {

class ExportFormatHelper : public QObject {
  Q_OBJECT

 public:
  ExportFormatHelper(QFileDialog& exportPanel, QString proposedName);

  /// Replaces whatever was typed by the base name with the row's extension.
  void selectRow(int row);
  [[nodiscard]] int selectedRow() const;
  /// The name as typed, if its extension is that of a format, which is then chosen; otherwise with the
  /// extension of the chosen format.
  [[nodiscard]] QString completedName(const QString& typed);

  QFileDialog& panel;
  const QString baseName;

 private:
  void formatChosen(const QString& nameFilter);
};

/// The panel's entry for a row, for example "JPEG (*.jpg *.jpeg)".
[[nodiscard]] QString nameFilterForRow(int row);

}  // namespace orvanel
