#include "panels/levels/LevelsContentView.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QSignalBlocker>
#include <QVBoxLayout>
#include <cmath>

#include "look/Look.h"
#include "panels/controls/DirectSlider.h"

namespace orvanel {
namespace {

constexpr double fieldFontSize = look::type::small;
constexpr int ratioPositions = 1000;
constexpr int smallestWidth = 320;
constexpr int fieldWidth = 52;

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
  auto* column = new QVBoxLayout(this);
  const int margin = look::space::section;
  column->setContentsMargins(margin, margin, margin, margin);
  column->setSpacing(look::space::section);
  auto* histogram = new HistogramView(model, this);
  histogram->setMinimumWidth(smallestWidth);
  column->addWidget(histogram);

  auto* grid = new QGridLayout;
  grid->setHorizontalSpacing(look::space::normal);
  grid->setVerticalSpacing(look::space::tight);
  grid->setColumnStretch(1, 1);
  column->addLayout(grid);
  black = addRow(*grid, tr("Black:"), tr("Black point"), model.blackPoint,
                 linearScale(LevelsModel::smallestBlack, LevelsModel::largestBlack));
  gamma = addRow(*grid, tr("Gamma:"), tr("Gamma"), model.gamma,
                 ratioScale(LevelsModel::smallestGamma, LevelsModel::largestGamma));
  white = addRow(*grid, tr("White:"), tr("White point"), model.whitePoint,
                 linearScale(LevelsModel::smallestWhite, LevelsModel::largestWhite));

  auto* buttons = new QHBoxLayout;
  buttons->setSpacing(look::space::normal);
  column->addLayout(buttons);
  buttons->addStretch();
  cancelButton = new QPushButton(tr("Cancel"), this);
  okButton = new QPushButton(tr("OK"), this);
  cancelButton->setAutoDefault(false);
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

LevelsContentView::Row LevelsContentView::addRow(QGridLayout& grid, const QString& label, const QString& name,
                                                 QProperty<float>& value, const Scale& scale) {
  const Row row{.slider = new DirectSlider(this), .field = new QDoubleSpinBox(this)};
  row.slider->setAccessibleName(name);
  row.slider->setRange(0, scale.positions);
  row.field->setFont(look::font(fieldFontSize));
  row.field->setAccessibleName(name);
  row.field->setDecimals(scale.decimals);
  row.field->setRange(double{scale.smallest}, double{scale.largest});
  row.field->setSingleStep(scale.decimals > 0 ? 0.1 : 1.0);
  row.field->setKeyboardTracking(false);
  row.field->setAlignment(Qt::AlignRight);
  row.field->setButtonSymbols(QAbstractSpinBox::NoButtons);
  row.field->setFixedWidth(fieldWidth);
  auto* text = new QLabel(label, this);
  text->setBuddy(row.field);
  look::setTextColor(*text, look::color::secondaryText);
  const int line = grid.rowCount();
  grid.addWidget(text, line, 0, Qt::AlignRight | Qt::AlignVCenter);
  grid.addWidget(row.slider, line, 1);
  grid.addWidget(row.field, line, 2);

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
  row.slider->onEditingChanged = [this](bool isEditing) {
    if (onEditingChanged) onEditingChanged(isEditing);
  };
  return row;
}

void LevelsContentView::userSet(QProperty<float>& value, float chosen) {
  if (value.value() == chosen) return;
  value = chosen;
  if (onChanged) onChanged();
}

}  // namespace orvanel
