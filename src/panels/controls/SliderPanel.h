// The borderless panel that a slider dropdown opens under itself. It takes the keyboard, and closes at
// Escape, at Return and at a click outside it. Owned by its control; main thread only.
#pragma once

#include <QWidget>

namespace orvanel {

class DirectSlider;

class SliderPanel : public QWidget {
  Q_OBJECT

 public:
  /// `slider` becomes the panel's. A click on `opener` closes the panel and does nothing else.
  SliderPanel(DirectSlider* slider, QWidget* opener);

  /// Opens below `anchor`, or above it at the lower edge of the screen.
  void openUnder(const QWidget& anchor);

 protected:
  void mousePressEvent(QMouseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void paintEvent(QPaintEvent* event) override;

 private:
  DirectSlider* slider_;
  QWidget* opener_;
};

}  // namespace orvanel
