// The strip of all hues, from red at the bottom through the circle to red at the top, with a triangle at the
// one that is chosen. Owned by the colour picker; main thread only.
#pragma once

#include <QPropertyNotifier>
#include <QWidget>

#include "panels/color/ColorPickerModel.h"

namespace orvanel {

class HueStrip : public QWidget {
  Q_OBJECT

 public:
  /// `model` must outlive the strip, which is `height` high without the margin for the triangle.
  HueStrip(ColorPickerModel& model, int height, QWidget* parent);

  /// The hues within the widget.
  [[nodiscard]] QRectF track() const;

 protected:
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void wheelEvent(QWheelEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void paintEvent(QPaintEvent* event) override;

 private:
  void pick(double y);
  void describe();

  ColorPickerModel& model_;
  int height_;
  QPropertyNotifier notifier_;
};

}  // namespace orvanel
