#include "panels/palette/AccessibleToolSlot.h"

#include <QMenu>

#include "panels/palette/ToolSlotButton.h"

namespace orvanel {

namespace {

QAccessibleInterface* makeInterface(const QString& /*className*/, QObject* object) {
  auto* button = qobject_cast<ToolSlotButton*>(object);
  return button != nullptr ? new AccessibleToolSlot(button) : nullptr;
}

}  // namespace

AccessibleToolSlot::AccessibleToolSlot(ToolSlotButton* button)
    : QAccessibleWidget(button, QAccessible::RadioButton) {}

void AccessibleToolSlot::install() {
  static const bool isInstalled = (QAccessible::installFactory(makeInterface), true);
  static_cast<void>(isInstalled);
}

ToolSlotButton& AccessibleToolSlot::button() const {
  return *static_cast<ToolSlotButton*>(object());
}

int AccessibleToolSlot::childCount() const {
  return button().menu() != nullptr ? 1 : 0;
}

QAccessibleInterface* AccessibleToolSlot::child(int index) const {
  return index == 0 && button().menu() != nullptr ? QAccessible::queryAccessibleInterface(button().menu())
                                                  : nullptr;
}

int AccessibleToolSlot::indexOfChild(const QAccessibleInterface* child) const {
  return child != nullptr && button().menu() != nullptr && child->object() == button().menu() ? 0 : -1;
}

QAccessible::State AccessibleToolSlot::state() const {
  QAccessible::State state = QAccessibleWidget::state();
  state.checkable = true;
  state.checked = button().isSelected();
  state.hasPopup = button().menu() != nullptr;
  return state;
}

QStringList AccessibleToolSlot::actionNames() const {
  if (!button().isEnabled()) return {};
  QStringList names{pressAction()};
  if (button().menu() != nullptr) names << showMenuAction();
  return names + QAccessibleWidget::actionNames();
}

void AccessibleToolSlot::doAction(const QString& name) {
  if (name == pressAction()) {
    button().click();
  } else if (name == showMenuAction() && button().menu() != nullptr) {
    button().openMenu();
  } else {
    QAccessibleWidget::doAction(name);
  }
}

}  // namespace orvanel
