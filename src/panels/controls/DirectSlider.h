// A horizontal slider whose handle comes to where it is pressed and follows the pointer, as one drag. A notch
// of the wheel or an arrow key is a step of one, with Shift of ten. Main thread only.
#pragma once

#include <QSlider>
#include <QStyle>
#include <functional>

namespace orvanel {

class DirectSlider : public QSlider {
  Q_OBJECT

 public:
  explicit DirectSlider(QWidget* parent = nullptr);

  /// The user begins (true) and ends an edit: a drag, or a single step.
  std::function<void(bool)> onEditingChanged;

 protected:
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void wheelEvent(QWheelEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void hideEvent(QHideEvent* event) override;

 private:
  [[nodiscard]] QRect partRect(QStyle::SubControl part) const;
  /// Brings the handle's centre to `x`, in view points.
  void moveHandle(double x);
  void endDrag();
  void step(SliderAction action);
  void setEditing(bool isEditing);

  /// From the handle's centre to where it was grabbed.
  double grabOffset_ = 0.0;
  int wheelRemainder_ = 0;
};

}  // namespace orvanel
