#include "panels/color/ColorPickerContentView.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>
#include <algorithm>
#include <initializer_list>

#include "look/Look.h"
#include "panels/color/ColorPreview.h"
#include "panels/color/HexField.h"
#include "panels/color/HueStrip.h"
#include "panels/color/LabeledIntField.h"
#include "panels/color/PickerMetrics.h"
#include "panels/color/SVPicker.h"

namespace orvanel {

namespace {

constexpr QSize contentSize(420, 310);
constexpr int colorsHeight = 204;
constexpr int degrees = 360;
constexpr int percent = 100;

/// The fields of a column begin behind the widest of their labels.
void lineUp(std::initializer_list<QLabel*> labels) {
  int width = look::space::wide;
  for (const QLabel* label : labels) width = std::max(width, label->sizeHint().width());
  for (QLabel* label : labels) label->setFixedWidth(width);
}

}  // namespace

ColorPickerContentView::ColorPickerContentView(ColorPickerModel& model, QWidget* parent)
    : QWidget(parent), model_(model) {
  setMinimumSize(contentSize);
  auto* column = new QVBoxLayout(this);
  const int margin = look::space::section;
  column->setContentsMargins(margin - picker::overhang, margin, margin, margin);
  column->setSpacing(look::space::tight);
  name = new QLabel(this);
  name->setTextFormat(Qt::PlainText);
  name->setIndent(picker::overhang);
  name->setFont(look::font(look::type::normal, QFont::DemiBold));
  column->addWidget(name);

  auto* row = new QHBoxLayout;
  row->setSpacing(0);
  column->addLayout(row, 1);
  square = new SVPicker(model, colorsHeight, this);
  strip = new HueStrip(model, colorsHeight, this);
  row->addWidget(square, 0, Qt::AlignTop);
  row->addWidget(strip, 0, Qt::AlignTop);
  row->addSpacing(look::space::wide);
  auto* components = new QVBoxLayout;
  components->setContentsMargins(0, picker::overhang, 0, picker::overhang);
  components->setSpacing(look::space::tight);
  row->addLayout(components, 1);
  addPreview(*components);
  components->addStretch();
  auto* grid = new QGridLayout;
  components->addLayout(grid);
  addFields(*grid);
  components->addStretch();
  addButtons(*column);

  for (QProperty<double>* value : {&model.hue, &model.saturation, &model.brightness}) {
    notifiers_.push_back(value->addNotifier([this] {
      showComponents();
      if (onChange) onChange(model_.color());
    }));
  }
  showComponents();
}

void ColorPickerContentView::setName(const QString& text) {
  name->setText(text);
}

void ColorPickerContentView::addPreview(QVBoxLayout& column) {
  auto* captions = new QHBoxLayout;
  for (const QString& caption : {tr("New"), tr("Current")}) {
    auto* label = new QLabel(caption, this);
    label->setAlignment(Qt::AlignCenter);
    look::setTextColor(*label, look::color::secondaryText);
    captions->addWidget(label, 1);
  }
  preview = new ColorPreview(model_, this);
  column.addLayout(captions);
  column.addWidget(preview);
}

void ColorPickerContentView::addFields(QGridLayout& grid) {
  grid.setHorizontalSpacing(look::space::normal);
  grid.setColumnStretch(0, 1);
  grid.setColumnStretch(1, 1);
  grid.setVerticalSpacing(look::space::tight);
  const auto add = [&](int row, int column, const QString& label, const QString& meaning, int highest,
                       const QString& suffix) {
    auto* field = new LabeledIntField(label, meaning, {0, highest}, suffix, this);
    grid.addWidget(field, row, column);
    return field;
  };
  const QString degreeSign(QChar(0xb0));
  const QString percentSign = QStringLiteral("%");
  constexpr int largestComponent = 255;
  hue = add(0, 0, tr("H"), tr("Hue"), degrees, degreeSign);
  saturation = add(1, 0, tr("S"), tr("Saturation"), percent, percentSign);
  brightness = add(2, 0, tr("B"), tr("Brightness"), percent, percentSign);
  red = add(0, 1, tr("R"), tr("Red"), largestComponent, {});
  green = add(1, 1, tr("G"), tr("Green"), largestComponent, {});
  blue = add(2, 1, tr("B"), tr("Blue"), largestComponent, {});
  hex = new HexField(model_, this);
  grid.addWidget(hex, 3, 0, 1, 2);
  lineUp({&hue->label(), &saturation->label(), &brightness->label(), &hex->label()});
  lineUp({&red->label(), &green->label(), &blue->label()});

  hue->onValueChanged = [this](int value) { model_.setHue(value / double{degrees}); };
  saturation->onValueChanged = [this](int value) {
    model_.setSaturationAndBrightness(value / double{percent}, model_.brightness.value());
  };
  brightness->onValueChanged = [this](int value) {
    model_.setSaturationAndBrightness(model_.saturation.value(), value / double{percent});
  };
  const auto setComponents = [this](int /*value*/) {
    model_.setRGB(red->value(), green->value(), blue->value());
  };
  for (LabeledIntField* component : {red, green, blue}) component->onValueChanged = setComponents;
}

void ColorPickerContentView::addButtons(QVBoxLayout& column) {
  auto* row = new QHBoxLayout;
  row->setSpacing(look::space::normal);
  row->addStretch();
  cancelButton = new QPushButton(tr("Cancel"), this);
  okButton = new QPushButton(tr("OK"), this);
  cancelButton->setAutoDefault(false);
  okButton->setDefault(true);
  row->addWidget(cancelButton);
  row->addWidget(okButton);
  column.addLayout(row);
  connect(cancelButton, &QPushButton::clicked, this, [this] {
    if (onCancel) onCancel();
  });
  connect(okButton, &QPushButton::clicked, this, [this] {
    if (onOK) onOK();
  });
}

void ColorPickerContentView::showComponents() {
  hue->setValue(qRound(model_.hue.value() * degrees));
  saturation->setValue(qRound(model_.saturation.value() * percent));
  brightness->setValue(qRound(model_.brightness.value() * percent));
  const ColorPickerModel::RGB components = model_.rgb();
  red->setValue(components.red);
  green->setValue(components.green);
  blue->setValue(components.blue);
}

}  // namespace orvanel
