// What assistive technology learns about a slot of the tool palette: one choice of several, which it may
// press as the keyboard does, and whose tools it may ask for. Made by the toolkit for each button; main
// thread only.
#pragma once

#include <QAccessibleWidget>

namespace orvanel {

class ToolSlotButton;

class AccessibleToolSlot : public QAccessibleWidget {
 public:
  explicit AccessibleToolSlot(ToolSlotButton* button);
  /// Makes these interfaces known to the toolkit, once.
  static void install();

  /// A group's menu, which is a window of its own to the toolkit.
  [[nodiscard]] int childCount() const override;
  [[nodiscard]] QAccessibleInterface* child(int index) const override;
  [[nodiscard]] int indexOfChild(const QAccessibleInterface* child) const override;
  [[nodiscard]] QAccessible::State state() const override;
  [[nodiscard]] QStringList actionNames() const override;
  void doAction(const QString& name) override;

 private:
  [[nodiscard]] ToolSlotButton& button() const;
};

}  // namespace orvanel
