// The common frame of the dialogs that ask for a size: what is asked, a line that explains it, the controls,
// and two buttons. Lives while it is shown; main thread only.
#pragma once

#include <QDialog>

class QGridLayout;
class QLabel;
class QLineEdit;

namespace orvanel {

class SizeDialog : public QDialog {
  Q_OBJECT

 public:
  QLineEdit* widthField;
  QLineEdit* heightField;

  /// Everything between the explanation and the buttons.
  [[nodiscard]] QWidget& accessory() const { return *accessory_; }

 protected:
  struct Frame {
    QString message;
    QString informativeText;
    QString acceptTitle;
    /// In view points at the default font; larger fonts make it grow.
    QSize accessorySize;
    /// Where the fields begin, and what stands beside their units, if the labels leave room.
    int fieldsLeft = 0;
    int besideLeft = 0;
  };

  SizeDialog(const Frame& frame, QWidget* parent);

  /// Holds labels in column 0, controls in column 1, units in column 2, and what stands beside them in column
  /// 3. The columns have no distance: labels and units bring their own.
  [[nodiscard]] QGridLayout& grid() const { return *grid_; }
  /// A label at the right of column 0, whose mnemonic leads to the control beside it.
  QLabel* addLabel(int row, const QString& text, QWidget* control);
  /// The rows of width and height, from this row on.
  void addSizeFields(int row, const QSize& size);
  /// Gives the width field the focus and a frame that can't be resized.
  void finish();

 private:
  QWidget* accessory_;
  QGridLayout* grid_;
  int besideLeft_;
};

}  // namespace orvanel
