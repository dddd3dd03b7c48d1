// Asks for the size and colour mode of a new document. Main thread only.
#pragma once

#include <QDialog>

#include "app/Dialogs.h"

class QComboBox;
class QLineEdit;

namespace orvanel {

class NewDocumentDialog : public QDialog {
  Q_OBJECT

 public:
  explicit NewDocumentDialog(QWidget* parent = nullptr);

  [[nodiscard]] NewDocumentEntry entry() const;

  QLineEdit* widthField;
  QLineEdit* heightField;
  QComboBox* colorModePopup;
};

}  // namespace orvanel
