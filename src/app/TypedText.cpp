#include "app/TypedText.h"

#include <QAbstractSpinBox>
#include <QApplication>
#include <QLineEdit>
#include <QPointer>

namespace orvanel {

void keepTypedText() {
  const QPointer<QWidget> field = QApplication::focusWidget();
  const bool isTypedInto = qobject_cast<QLineEdit*>(field.data()) != nullptr ||
                           qobject_cast<QAbstractSpinBox*>(field.data()) != nullptr;
  if (!isTypedInto) return;
  field->clearFocus();
  // One that stays open is typed into further.
  if (field != nullptr && field->isVisible() && QApplication::focusWidget() == nullptr) field->setFocus();
}

}  // namespace orvanel
