#include "app/dialogs/NewDocumentDialog.h"

#include <QComboBox>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>

#include "look/TranslatedName.h"
#include "raster/ColorMode.h"

namespace orvanel {

namespace {

constexpr QSize proposedSize{1024, 768};
constexpr int popupWidth = 150;

}  // namespace

NewDocumentDialog::NewDocumentDialog(QWidget* parent)
    : SizeDialog({.message = tr("New Document"),
                  .informativeText = tr("Enter the dimensions and color mode for the new document."),
                  .acceptTitle = tr("Create"),
                  .accessorySize = {280, 100},
                  .fieldsLeft = 70},
                 parent),
      colorModePopup(new QComboBox) {
  addSizeFields(0, proposedSize);
  for (QLineEdit* field : {widthField, heightField}) field->setPlaceholderText(field->text());

  for (const ColorMode mode : allColorModes) colorModePopup->addItem(look::translatedName(displayName(mode)));
  colorModePopup->setCurrentIndex(static_cast<int>(rawValue(ColorMode::rgb8)));
  colorModePopup->setMinimumWidth(popupWidth);
  colorModePopup->setAccessibleName(tr("Color Mode"));
  addLabel(2, tr("Color Mode:"), colorModePopup);
  grid().addWidget(colorModePopup, 2, 1, 1, 3, Qt::AlignLeft);
  finish();
}

NewDocumentEntry NewDocumentDialog::entry() const {
  return {widthField->text(), heightField->text(), colorModePopup->currentIndex()};
}

}  // namespace orvanel
