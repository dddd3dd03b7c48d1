// A translucent scroll indicator at an edge of the canvas. Owned by the canvas container; main thread only.
// Values run from 0 at the left or top end to 1; lengths are in view points.
#pragma once

#include <QWidget>
#include <functional>

namespace orvanel {

class OverlayScrollIndicator : public QWidget {
  Q_OBJECT

 public:
  OverlayScrollIndicator(Qt::Orientation orientation, QWidget* parent);

  /// Called with the new value while the user drags the knob.
  std::function<void(double)> onValueChanged;

  [[nodiscard]] bool isHorizontal() const { return isHorizontal_; }
  [[nodiscard]] double knobProportion() const { return knobProportion_; }
  [[nodiscard]] double doubleValue() const { return doubleValue_; }
  void show(double knobProportion, double doubleValue);

  [[nodiscard]] double trackLength() const { return isHorizontal_ ? width() : height(); }
  /// Has a minimum, so that the pointer can always grab the knob.
  [[nodiscard]] double knobLength() const;
  /// Distance of the knob's start from the left or top end of the track.
  [[nodiscard]] double knobPosition() const { return doubleValue_ * (trackLength() - knobLength()); }
  [[nodiscard]] bool isDragging() const { return isDragging_; }
  void endDrag() { isDragging_ = false; }

 protected:
  void paintEvent(QPaintEvent* event) override;
  void enterEvent(QEnterEvent* event) override;
  void leaveEvent(QEvent* event) override;
  void hideEvent(QHideEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;

 private:
  [[nodiscard]] double along(QPointF point) const { return isHorizontal_ ? point.x() : point.y(); }
  [[nodiscard]] QRectF knobRect() const;

  const bool isHorizontal_;
  double knobProportion_ = 0.5;
  double doubleValue_ = 0.5;
  bool isDragging_ = false;
  double dragStartValue_ = 0.0;
  double dragStartPosition_ = 0.0;
  bool isHovered_ = false;
};

}  // namespace orvanel
