#include "panels/options/OptionsRow.h"

#include <QHBoxLayout>
#include <QLabel>

#include "look/Look.h"

namespace orvanel {

OptionsRow::OptionsRow(QWidget* parent) : QWidget(parent) {
  auto* row = new QHBoxLayout(this);
  row->setContentsMargins(0, 0, 0, 0);
  row->setSpacing(look::space::section);
  row->addStretch(1);
}

SliderDropdown* OptionsRow::makeSlider(const OptionText& text, double lowest, double highest,
                                       SliderDropdown::Display display) {
  auto* slider = new SliderDropdown(text.label, lowest, highest, display, this);
  slider->setToolTip(text.help);
  append(slider);
  return slider;
}

QCheckBox* OptionsRow::makeToggle(const OptionText& text) {
  auto* toggle = new QCheckBox(text.label, this);
  toggle->setToolTip(text.help);
  // A click leaves the keyboard with the canvas.
  toggle->setFocusPolicy(Qt::TabFocus);
  append(toggle);
  return toggle;
}

void OptionsRow::addText(const QString& text) {
  auto* label = new QLabel(text, this);
  label->setTextFormat(Qt::PlainText);
  look::setTextColor(*label, look::color::secondaryText);
  append(label);
}

void OptionsRow::endEditing() {
  for (SliderDropdown* slider : findChildren<SliderDropdown*>()) slider->endEditing();
}

void OptionsRow::append(QWidget* control) {
  auto* row = static_cast<QHBoxLayout*>(layout());
  row->insertWidget(row->count() - 1, control);
}

}  // namespace orvanel
