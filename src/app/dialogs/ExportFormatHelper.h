// Updates the file name in an export panel when another format is chosen. Lives as long as its panel; main
// thread only.
#pragma once

#include <QFileDialog>
#include <QObject>
#include <QString>

#include "app/dialogs/ExportFormats.h"

namespace orvanel {

class ExportFormatHelper : public QObject {
  Q_OBJECT

 public:
  /// With `completesNames` the panel adds the format's extension to names typed without one.
  ExportFormatHelper(QFileDialog& exportPanel, QString proposedName, bool completesNames);

  /// Replaces whatever was typed by the base name with the row's extension.
  void selectRow(int row);
  [[nodiscard]] int selectedRow() const;

  QFileDialog& panel;
  const QString baseName;

 private:
  void formatChosen(const QString& nameFilter);

  const bool completesNames_;
};

/// The panel's entry for a row, for example "JPEG (*.jpg *.jpeg)".
[[nodiscard]] QString nameFilterForRow(int row);

}  // namespace orvanel
