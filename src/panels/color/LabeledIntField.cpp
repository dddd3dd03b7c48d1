#include "panels/color/LabeledIntField.h"

#include <QHBoxLayout>
#include <QLabel>
#include <algorithm>

#include "look/Look.h"
#include "panels/controls/ValueField.h"

namespace orvanel {

LabeledIntField::LabeledIntField(const QString& label, const QString& name, Range range,
                                 const QString& suffix, QWidget* parent)
    : QWidget(parent),
      range_(range),
      suffix_(suffix),
      label_(new QLabel(label, this)),
      field_(new ValueField(this)) {
  label_->setBuddy(field_);
  look::setTextColor(*label_, look::color::secondaryText);
  field_->setAccessibleName(name);
  field_->setToolTip(name);
  field_->setAlignment(Qt::AlignRight);
  const int widest = fontMetrics().horizontalAdvance(QString::number(range.highest) + suffix);
  field_->setMinimumWidth(widest + look::space::section);
  field_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
  auto* row = new QHBoxLayout(this);
  row->setContentsMargins(0, 0, 0, 0);
  row->setSpacing(look::space::tight);
  row->addWidget(label_);
  row->addWidget(field_);

  field_->onCommit = [this](const QString& typed) {
    QString digits = typed.trimmed();
    if (!suffix_.isEmpty() && digits.endsWith(suffix_)) digits = digits.chopped(suffix_.size()).trimmed();
    bool isNumber = false;
    const qint64 number = digits.toLongLong(&isNumber);
    if (isNumber) userSet(number);
  };
  field_->onStep = [this](int step) { userSet(qint64{value_} + step); };
  field_->setValueText(QString::number(value_) + suffix_);
}

void LabeledIntField::setValue(int value) {
  value_ = value;
  field_->setValueText(QString::number(value_) + suffix_);
}

void LabeledIntField::userSet(qint64 value) {
  const auto kept = static_cast<int>(std::clamp<qint64>(value, range_.lowest, range_.highest));
  if (kept == value_) return;
  setValue(kept);
  if (onValueChanged) onValueChanged(kept);
}

}  // namespace orvanel
