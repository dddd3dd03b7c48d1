// The contents of the colour picker: the square and the strip, the new and the current colour, fields for
// every component, and two buttons. It edits the model; its owner acts. Main thread only.
#pragma once

#include <QPropertyNotifier>
#include <QWidget>
#include <functional>
#include <vector>

#include "panels/color/ColorPickerModel.h"

class QGridLayout;
class QLabel;
class QPushButton;
class QVBoxLayout;

namespace orvanel {

class ColorPreview;
class HexField;
class HueStrip;
class LabeledIntField;
class SVPicker;

class ColorPickerContentView : public QWidget {
  Q_OBJECT

 public:
  /// `model` must outlive the view.
  explicit ColorPickerContentView(ColorPickerModel& model, QWidget* parent = nullptr);

  /// What the colour is for.
  void setName(const QString& text);

  /// The model has changed; may be told more than once of one change.
  std::function<void(const DisplayColor&)> onChange;
  std::function<void()> onOK;
  std::function<void()> onCancel;

  QLabel* name = nullptr;
  SVPicker* square = nullptr;
  HueStrip* strip = nullptr;
  ColorPreview* preview = nullptr;
  LabeledIntField* hue = nullptr;
  LabeledIntField* saturation = nullptr;
  LabeledIntField* brightness = nullptr;
  LabeledIntField* red = nullptr;
  LabeledIntField* green = nullptr;
  LabeledIntField* blue = nullptr;
  HexField* hex = nullptr;
  QPushButton* okButton = nullptr;
  QPushButton* cancelButton = nullptr;

 private:
  void addPreview(QVBoxLayout& column);
  void addFields(QGridLayout& grid);
  void addButtons(QVBoxLayout& column);
  void showComponents();

  ColorPickerModel& model_;
  std::vector<QPropertyNotifier> notifiers_;
};

}  // namespace orvanel
