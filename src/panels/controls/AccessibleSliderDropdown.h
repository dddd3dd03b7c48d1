// What assistive technology learns about a slider dropdown: a spin control with a name, a value and a range,
// which it may also set. Made by the toolkit for each control; main thread only.
#pragma once

#include <QAccessibleWidget>

namespace orvanel {

class SliderDropdown;

class AccessibleSliderDropdown : public QAccessibleWidget, public QAccessibleValueInterface {
 public:
  explicit AccessibleSliderDropdown(SliderDropdown* control);
  /// Makes these interfaces known to the toolkit, once.
  static void install();

  [[nodiscard]] void* interface_cast(QAccessible::InterfaceType type) override;
  [[nodiscard]] QString text(QAccessible::Text kind) const override;

  [[nodiscard]] QVariant currentValue() const override;
  void setCurrentValue(const QVariant& value) override;
  [[nodiscard]] QVariant maximumValue() const override;
  [[nodiscard]] QVariant minimumValue() const override;
  [[nodiscard]] QVariant minimumStepSize() const override;

 private:
  [[nodiscard]] SliderDropdown& control() const;
};

}  // namespace orvanel
