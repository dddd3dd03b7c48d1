// Asks for another size of the image and how its pixels are made anew. While the aspect ratio is locked, one
// field follows the other. Lives while it is shown; main thread only.
#pragma once

#include "app/dialogs/Dialogs.h"
#include "app/dialogs/SizeDialog.h"

class QComboBox;

namespace orvanel {

class SymbolButton;

class ImageSizeDialog : public SizeDialog {
  Q_OBJECT

 public:
  explicit ImageSizeDialog(DocumentPtr document, QWidget* parent = nullptr);

  [[nodiscard]] ImageSizeEntry entry() const;

  const DocumentPtr document;
  const int originalWidth;
  const int originalHeight;
  SymbolButton* lockButton;
  QComboBox* resamplePopup;
  bool aspectLocked = true;

 private:
  void addLockButton();
  void addResamplePopup();
  void lockToggled(bool isLocked);
  /// Has the other field follow the one that was typed in.
  void controlTextDidChange(const QLineEdit& field);
};

}  // namespace orvanel
