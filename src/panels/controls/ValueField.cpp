#include "panels/controls/ValueField.h"

#include <QKeyEvent>
#include <QMouseEvent>

namespace orvanel {

namespace {

constexpr int largeStep = 10;

}  // namespace

ValueField::ValueField(QWidget* parent) : QLineEdit(parent) {}

void ValueField::setValueText(const QString& text) {
  valueText_ = text;
  if (!isModified()) setText(text);
}

void ValueField::commit() {
  if (!isModified()) return;
  const QString typed = text();
  setModified(false);
  if (onCommit) onCommit(typed);
  setText(valueText_);
}

void ValueField::keyPressEvent(QKeyEvent* event) {
  const int step = event->modifiers().testFlag(Qt::ShiftModifier) ? largeStep : 1;
  switch (event->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
      // An unchanged field leaves the key to the window's button.
      if (!isModified()) return event->ignore();
      commit();
      return selectAll();
    case Qt::Key_Escape:
      if (!isModified()) return event->ignore();
      setText(valueText_);
      return selectAll();
    case Qt::Key_Up:
    case Qt::Key_Down:
      commit();
      if (onStep) onStep(event->key() == Qt::Key_Up ? step : -step);
      return selectAll();
    default:
      QLineEdit::keyPressEvent(event);
  }
}

/// A number is one word, whatever its point divides.
void ValueField::mouseDoubleClickEvent(QMouseEvent* event) {
  event->accept();
  selectAll();
}

void ValueField::focusInEvent(QFocusEvent* event) {
  QLineEdit::focusInEvent(event);
  if (event->reason() == Qt::TabFocusReason || event->reason() == Qt::BacktabFocusReason) selectAll();
}

void ValueField::focusOutEvent(QFocusEvent* event) {
  if (event->reason() != Qt::PopupFocusReason) commit();
  QLineEdit::focusOutEvent(event);
}

}  // namespace orvanel
