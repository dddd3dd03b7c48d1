#include "panels/color/HexField.h"

#include <QHBoxLayout>
#include <QLabel>
#include <algorithm>

#include "look/Look.h"
#include "panels/controls/ValueField.h"

namespace orvanel {

namespace {

constexpr qsizetype digitCount = 6;

bool isHexDigit(QChar character) {
  const char16_t c = character.toLower().unicode();
  return (c >= u'0' && c <= u'9') || (c >= u'a' && c <= u'f');
}

}  // namespace

HexField::HexField(ColorPickerModel& model, QWidget* parent)
    : QWidget(parent),
      model_(model),
      label_(new QLabel(QStringLiteral("#"), this)),
      field_(new ValueField(this)) {
  label_->setBuddy(field_);
  look::setTextColor(*label_, look::color::secondaryText);
  field_->setAccessibleName(tr("Hexadecimal color"));
  field_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
  field_->setToolTip(tr("Six hexadecimal digits: red, green and blue"));
  auto* row = new QHBoxLayout(this);
  row->setContentsMargins(0, 0, 0, 0);
  row->setSpacing(look::space::tight);
  row->addWidget(label_);
  row->addWidget(field_);

  connect(field_, &QLineEdit::textEdited, this, &HexField::read);
  for (QProperty<double>* value : {&model.hue, &model.saturation, &model.brightness}) {
    notifiers_.push_back(value->addNotifier([this] { showColor(); }));
  }
  showColor();
}

void HexField::showColor() {
  field_->setValueText(model_.color().hexText());
}

void HexField::read(const QString& text) {
  QString digits = text.trimmed();
  // As colours are often copied.
  if (digits.startsWith(QLatin1Char('#'))) digits.remove(0, 1);
  if (digits.size() != digitCount || !std::ranges::all_of(digits, isHexDigit)) return;
  constexpr int base = 16;
  const int value = digits.toInt(nullptr, base);
  model_.setRGB((value >> 16) & 255, (value >> 8) & 255, value & 255);
}

}  // namespace orvanel
