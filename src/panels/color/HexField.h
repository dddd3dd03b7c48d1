// The colour as six hexadecimal digits. What is typed or pasted counts as soon as it is six digits; anything
// else is ignored. Owned by the colour picker; main thread only.
#pragma once

#include <QPropertyNotifier>
#include <QWidget>
#include <vector>

#include "panels/color/ColorPickerModel.h"

class QLabel;

namespace orvanel {

class ValueField;

class HexField : public QWidget {
  Q_OBJECT

 public:
  /// `model` must outlive the field.
  HexField(ColorPickerModel& model, QWidget* parent);

  [[nodiscard]] ValueField& field() { return *field_; }
  [[nodiscard]] QLabel& label() { return *label_; }

 private:
  void showColor();
  void read(const QString& text);

  ColorPickerModel& model_;
  QLabel* label_;
  ValueField* field_;
  std::vector<QPropertyNotifier> notifiers_;
};

}  // namespace orvanel
