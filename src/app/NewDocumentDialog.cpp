#include "app/NewDocumentDialog.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include "raster/ColorMode.h"

namespace orvanel {

namespace {

constexpr int fieldWidth = 80;
constexpr int popupWidth = 170;

QLineEdit* makeSizeField(const QString& value, const QString& accessibleName) {
  auto* field = new QLineEdit(value);
  field->setPlaceholderText(value);
  field->setFixedWidth(fieldWidth);
  field->setAccessibleName(accessibleName);
  return field;
}

QWidget* withUnit(QLineEdit* field) {
  auto* box = new QWidget;
  auto* row = new QHBoxLayout(box);
  row->setContentsMargins(0, 0, 0, 0);
  row->addWidget(field);
  row->addWidget(new QLabel(QStringLiteral("px")));
  row->addStretch(1);
  return box;
}

}  // namespace

NewDocumentDialog::NewDocumentDialog(QWidget* parent)
    : QDialog(parent),
      widthField(makeSizeField(QStringLiteral("1024"), QStringLiteral("Width"))),
      heightField(makeSizeField(QStringLiteral("768"), QStringLiteral("Height"))),
      colorModePopup(new QComboBox) {
  setWindowTitle(QStringLiteral("New Document"));

  auto* message = new QLabel(QStringLiteral("New Document"));
  QFont messageFont = message->font();
  messageFont.setWeight(QFont::DemiBold);
  message->setFont(messageFont);
  auto* informative = new QLabel(QStringLiteral("Enter the dimensions and color mode for the new document."));

  for (const ColorMode mode : allColorModes) {
    const std::string_view name = displayName(mode);
    colorModePopup->addItem(QString::fromUtf8(name.data(), static_cast<qsizetype>(name.size())));
  }
  colorModePopup->setCurrentIndex(static_cast<int>(rawValue(ColorMode::rgb8)));
  colorModePopup->setFixedWidth(popupWidth);
  colorModePopup->setAccessibleName(QStringLiteral("Color Mode"));

  auto* form = new QFormLayout;
  form->setLabelAlignment(Qt::AlignRight | Qt::AlignVCenter);
  form->setHorizontalSpacing(10);
  form->setVerticalSpacing(8);
  form->addRow(QStringLiteral("Width:"), withUnit(widthField));
  form->addRow(QStringLiteral("Height:"), withUnit(heightField));
  form->addRow(QStringLiteral("Color Mode:"), colorModePopup);

  auto* buttons = new QDialogButtonBox;
  QPushButton* create = buttons->addButton(QStringLiteral("Create"), QDialogButtonBox::AcceptRole);
  buttons->addButton(QStringLiteral("Cancel"), QDialogButtonBox::RejectRole);
  create->setDefault(true);
  connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(20, 18, 20, 16);
  column->setSpacing(4);
  column->addWidget(message);
  column->addWidget(informative);
  column->addSpacing(12);
  column->addLayout(form);
  column->addSpacing(14);
  column->addWidget(buttons);
  column->setSizeConstraint(QLayout::SetFixedSize);

  widthField->setFocus();
  widthField->selectAll();
}

NewDocumentEntry NewDocumentDialog::entry() const {
  return {widthField->text(), heightField->text(), colorModePopup->currentIndex()};
}

}  // namespace orvanel
