#include "panels/controls/AccessibleSliderDropdown.h"

#include "panels/controls/DirectSlider.h"
#include "panels/controls/SliderDropdown.h"

namespace orvanel {

namespace {

QAccessibleInterface* makeInterface(const QString& /*className*/, QObject* object) {
  auto* control = qobject_cast<SliderDropdown*>(object);
  return control != nullptr ? new AccessibleSliderDropdown(control) : nullptr;
}

}  // namespace

AccessibleSliderDropdown::AccessibleSliderDropdown(SliderDropdown* control)
    : QAccessibleWidget(control, QAccessible::SpinBox) {}

void AccessibleSliderDropdown::install() {
  static const bool isInstalled = (QAccessible::installFactory(makeInterface), true);
  static_cast<void>(isInstalled);
}

SliderDropdown& AccessibleSliderDropdown::control() const {
  return *static_cast<SliderDropdown*>(object());
}

void* AccessibleSliderDropdown::interface_cast(QAccessible::InterfaceType type) {
  if (type == QAccessible::ValueInterface) return static_cast<QAccessibleValueInterface*>(this);
  return QAccessibleWidget::interface_cast(type);
}

QString AccessibleSliderDropdown::text(QAccessible::Text kind) const {
  return kind == QAccessible::Value ? control().valueText() : QAccessibleWidget::text(kind);
}

QVariant AccessibleSliderDropdown::currentValue() const {
  return control().shownValue();
}

void AccessibleSliderDropdown::setCurrentValue(const QVariant& value) {
  control().edit(value.toDouble());
}

QVariant AccessibleSliderDropdown::maximumValue() const {
  return control().slider().maximum();
}

QVariant AccessibleSliderDropdown::minimumValue() const {
  return control().slider().minimum();
}

QVariant AccessibleSliderDropdown::minimumStepSize() const {
  return 1;
}

}  // namespace orvanel
