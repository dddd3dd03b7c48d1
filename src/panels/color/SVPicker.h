// The square of all colours of one hue: saturation from left to right, brightness upward. A press or a drag,
// or the arrow keys, pick one. Owned by the colour picker; main thread only.
#pragma once

#include <QImage>
#include <QPropertyNotifier>
#include <QWidget>
#include <vector>

#include "panels/color/ColorPickerModel.h"

namespace orvanel {

class SVPicker : public QWidget {
  Q_OBJECT

 public:
  /// `model` must outlive the picker. The square has this edge; the widget has a margin for the marker.
  SVPicker(ColorPickerModel& model, int size, QWidget* parent);

  /// The square within the widget.
  [[nodiscard]] QRectF square() const;
  /// The colours as last drawn; made anew only for another hue or scale.
  [[nodiscard]] const QImage& cachedImage() const { return cachedImage_; }

 protected:
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void paintEvent(QPaintEvent* event) override;

 private:
  void pick(QPointF position);
  void describe();
  void updateImage();

  ColorPickerModel& model_;
  int size_;
  QImage cachedImage_;
  double cachedHue_ = -1.0;
  std::vector<QPropertyNotifier> notifiers_;
};

}  // namespace orvanel
