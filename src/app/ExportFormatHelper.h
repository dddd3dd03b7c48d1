// Keeps an export panel's name in step with the format that is chosen in it. Lives as long as its panel;
// main thread only.
#pragma once

#include <QFileDialog>
#include <QObject>
#include <QString>

#include "app/ExportFormats.h"

namespace orvanel {

class ExportFormatHelper : public QObject {
  Q_OBJECT

 public:
  /// `completesNames`: the panel may add the format's extension to a name that was typed without one.
  ExportFormatHelper(QFileDialog& exportPanel, QString proposedName, bool completesNames);

  /// Proposes the base name with the row's extension, whatever was typed before.
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
