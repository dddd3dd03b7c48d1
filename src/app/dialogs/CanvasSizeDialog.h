// Asks for another size of the canvas, in pixels or as what is added on each axis, and for the place of the
// old canvas on the new one. Lives while it is shown; main thread only.
#pragma once

#include <array>

#include "app/dialogs/Dialogs.h"
#include "app/dialogs/SizeDialog.h"

class QAbstractButton;
class QCheckBox;

namespace orvanel {

class CanvasSizeDialog : public SizeDialog {
  Q_OBJECT

 public:
  explicit CanvasSizeDialog(DocumentPtr document, QWidget* parent = nullptr);

  [[nodiscard]] CanvasSizeEntry entry() const;

  const DocumentPtr document;
  QCheckBox* relativeCheckbox;
  /// Three rows of three buttons.
  std::array<QAbstractButton*, 9> anchorButtons{};
  /// -1 is left or top, 0 the centre, 1 right or bottom.
  int anchorX = 0;
  int anchorY = 0;

  /// Exchanges the fields' sizes for their differences to the current size, or back.
  void relativeToggled(bool isRelative);
  /// Puts the anchor on the button at this place, counted row by row.
  void anchorClicked(int tag);

 private:
  void addCurrentSize();
  void addNewSize();
  void addAnchorGrid();
  void showAnchor();
  [[nodiscard]] QSize canvasSize() const;
};

}  // namespace orvanel
