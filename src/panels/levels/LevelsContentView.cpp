#include "panels/levels/LevelsContentView.h"

#include <QFormLayout>
#include <QHBoxLayout>
#include <QSignalBlocker>
#include <QVBoxLayout>
#include <cmath>

#include "look/Look.h"

namespace orvanel {
namespace {

constexpr double fieldFontSize = 11.0;
constexpr int ratioPositions = 1000;
constexpr int smallestWidth = 300;

}  // namespace

LevelsContentView::Scale LevelsContentView::linearScale(float smallest, float largest) {
  return {.smallest = smallest,
          .largest = largest,
          .decimals = 0,
          .positions = static_cast<int>(largest - smallest),
          .valueAt = [smallest](int position) { return smallest + static_cast<float>(position); },
          .positionOf = [smallest](float value) { return static_cast<int>(std::lround(value - smallest)); }};
}

LevelsContentView::Scale LevelsContentView::ratioScale(float smallest, float largest) {
  const float range = std::log(largest / smallest);
  return {.smallest = smallest,
          .largest = largest,
          .decimals = 2,
          .positions = ratioPositions,
          .valueAt =
              [smallest, range](int position) {
                constexpr float hundredths = 100.0F;
                const float part = static_cast<float>(position) / static_cast<float>(ratioPositions);
                return std::round(smallest * std::exp(part * range) * hundredths) / hundredths;
              },
          .positionOf =
              [smallest, range](float value) {
                const float part = std::log(value / smallest) / range;
                return static_cast<int>(std::lround(part * static_cast<float>(ratioPositions)));
              }};
}

LevelsContentView::LevelsContentView(LevelsModel& model, QWidget* parent) : QWidget(parent) {
  setFont(look::font(fieldFontSize));
  setMinimumWidth(smallestWidth);
  auto* column = new QVBoxLayout(this);
  column->addWidget(new HistogramView(model, this));

  auto* form = new QFormLayout;
  column->addLayout(form);
  black = addRow(*form, QStringLiteral("Black:"), model.blackPoint,
                 linearScale(LevelsModel::smallestBlack, LevelsModel::largestBlack));
  gamma = addRow(*form, QStringLiteral("Gamma:"), model.gamma,
                 ratioScale(LevelsModel::smallestGamma, LevelsModel::largestGamma));
  white = addRow(*form, QStringLiteral("White:"), model.whitePoint,
                 linearScale(LevelsModel::smallestWhite, LevelsModel::largestWhite));

  auto* buttons = new QHBoxLayout;
  column->addLayout(buttons);
  buttons->addStretch();
  cancelButton = new QPushButton(QStringLiteral("Cancel"), this);
  okButton = new QPushButton(QStringLiteral("OK"), this);
  okButton->setDefault(true);
  buttons->addWidget(cancelButton);
  buttons->addWidget(okButton);
  connect(cancelButton, &QPushButton::clicked, this, [this] {
    if (onCancel) onCancel();
  });
  connect(okButton, &QPushButton::clicked, this, [this] {
    if (onOK) onOK();
  });
}

LevelsContentView::Row LevelsContentView::addRow(QFormLayout& form, const QString& label,
                                                 QProperty<float>& value, const Scale& scale) {
  const Row row{.slider = new QSlider(Qt::Horizontal, this), .field = new QDoubleSpinBox(this)};
  const QString name = label.chopped(1);
  row.slider->setAccessibleName(name);
  row.slider->setRange(0, scale.positions);
  row.field->setAccessibleName(name);
  row.field->setDecimals(scale.decimals);
  row.field->setRange(double{scale.smallest}, double{scale.largest});
  row.field->setSingleStep(scale.decimals > 0 ? 0.1 : 1.0);
  row.field->setKeyboardTracking(false);
  row.field->setAlignment(Qt::AlignRight);
  auto* line = new QHBoxLayout;
  line->addWidget(row.slider, 1);
  line->addWidget(row.field);
  form.addRow(label, line);

  const auto show = [row, &value, positionOf = scale.positionOf] {
    const QSignalBlocker slider(row.slider);
    const QSignalBlocker field(row.field);
    row.slider->setValue(positionOf(value.value()));
    row.field->setValue(double{value.value()});
  };
  notifiers_.push_back(value.addNotifier(show));
  show();
  connect(row.slider, &QSlider::valueChanged, this,
          [this, &value, valueAt = scale.valueAt](int position) { userSet(value, valueAt(position)); });
  connect(row.field, &QDoubleSpinBox::valueChanged, this,
          [this, &value](double typed) { userSet(value, static_cast<float>(typed)); });
  connect(row.slider, &QSlider::sliderPressed, this, [this] {
    if (onEditingChanged) onEditingChanged(true);
  });
  connect(row.slider, &QSlider::sliderReleased, this, [this] {
    if (onEditingChanged) onEditingChanged(false);
  });
  return row;
}

void LevelsContentView::userSet(QProperty<float>& value, float chosen) {
  if (value.value() == chosen) return;
  value = chosen;
  if (onChanged) onChanged();
}

}  // namespace orvanel
