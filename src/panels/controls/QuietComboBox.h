// A choice among names that the wheel can't change by accident while the list is closed, and that doesn't
// take the keyboard when it is clicked. Main thread only.
#pragma once

#include <QComboBox>
#include <QWheelEvent>

namespace orvanel {

class QuietComboBox : public QComboBox {
 public:
  explicit QuietComboBox(QWidget* parent = nullptr) : QComboBox(parent) { setFocusPolicy(Qt::TabFocus); }

 protected:
  void wheelEvent(QWheelEvent* event) override { event->ignore(); }
};

}  // namespace orvanel
