// A choice among names that the wheel can't change by accident while the list is closed, and that doesn't
// take the keyboard when it is clicked. Main thread only.
#pragma once

#include <QComboBox>
#include <QCoreApplication>
#include <QEvent>
#include <QWheelEvent>

namespace orvanel {

class QuietComboBox : public QComboBox {
 public:
  explicit QuietComboBox(QWidget* parent = nullptr) : QComboBox(parent) { setFocusPolicy(Qt::TabFocus); }

  void showPopup() override {
    // Opening the list sends no leave event, so the box would stay highlighted.
    QEvent leaving(QEvent::Leave);
    QCoreApplication::sendEvent(this, &leaving);
    setAttribute(Qt::WA_UnderMouse, false);
    QComboBox::showPopup();
  }

 protected:
  void wheelEvent(QWheelEvent* event) override { event->ignore(); }
};

}  // namespace orvanel
