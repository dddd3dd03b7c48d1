// The floating colour picker: edits one colour at a time and reports every change at once, so that whoever
// asked for it shows it while it is chosen; what else changes it is shown here. "OK" leaves the last colour,
// "Cancel" and the frame's button give back the first. One for the program, owned by the main window; main
// thread only.
#pragma once

#include <QDialog>
#include <functional>

#include "panels/color/ColorPickerContentView.h"
#include "panels/color/ColorPickerModel.h"

namespace orvanel {

class ColorPickerWindow : public QDialog {
  Q_OBJECT

 public:
  /// The panel floats above `parent`.
  explicit ColorPickerWindow(QWidget* parent);
  ~ColorPickerWindow() override;

  /// Begins with another colour. One that was being chosen stays as it is. Never takes the keyboard.
  void open(const QString& name, const DisplayColor& color,
            std::function<void(const DisplayColor&)> onChange);

  /// The colour has been changed elsewhere while it is being chosen here; its owner isn't told.
  void follow(const DisplayColor& color);

  [[nodiscard]] ColorPickerModel& model() { return model_; }
  [[nodiscard]] ColorPickerContentView& content() { return *content_; }

  void accept() override;
  void reject() override;

 private:
  using QDialog::open;
  void changed(const DisplayColor& color);
  void closePanel();

  ColorPickerModel model_;
  ColorPickerContentView* content_;
  std::function<void(const DisplayColor&)> onChange_;
  DisplayColor initialColor_;
  /// The colour last sent to or received from the owner.
  DisplayColor lastColor_;
  bool hasChanged_ = false;
};

}  // namespace orvanel
