// A line edit for one value: it follows the value unless something is being typed, takes over what was typed
// at Return or when it loses the keyboard, and shows the value again at Escape. Main thread only.
#pragma once

#include <QLineEdit>
#include <functional>

namespace orvanel {

class ValueField : public QLineEdit {
  Q_OBJECT

 public:
  explicit ValueField(QWidget* parent = nullptr);

  /// The value as a text; tells nobody.
  void setValueText(const QString& text);

  /// What was typed is complete.
  std::function<void(const QString&)> onCommit;
  /// An arrow key steps the value by so many units.
  std::function<void(int)> onStep;

 protected:
  void keyPressEvent(QKeyEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  void focusInEvent(QFocusEvent* event) override;
  void focusOutEvent(QFocusEvent* event) override;

 private:
  void commit();

  QString valueText_;
};

}  // namespace orvanel
