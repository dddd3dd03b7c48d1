// The new colour beside the one that the picker was opened with. Owned by the colour picker; main thread
// only.
#pragma once

#include <QPropertyNotifier>
#include <QWidget>
#include <vector>

#include "panels/color/ColorPickerModel.h"

namespace orvanel {

class ColorPreview : public QWidget {
  Q_OBJECT

 public:
  /// `model` must outlive the preview.
  ColorPreview(ColorPickerModel& model, QWidget* parent);

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  ColorPickerModel& model_;
  std::vector<QPropertyNotifier> notifiers_;
};

}  // namespace orvanel
