// Asks for the size and colour mode of a new document. Lives while it is shown; main thread only.
#pragma once

#include "app/dialogs/Dialogs.h"
#include "app/dialogs/SizeDialog.h"

class QComboBox;

namespace orvanel {

class NewDocumentDialog : public SizeDialog {
  Q_OBJECT

 public:
  explicit NewDocumentDialog(QWidget* parent = nullptr);

  [[nodiscard]] NewDocumentEntry entry() const;

  QComboBox* colorModePopup;
};

}  // namespace orvanel
