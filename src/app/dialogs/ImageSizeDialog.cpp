#include "app/dialogs/ImageSizeDialog.h"

#include <QComboBox>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QSignalBlocker>
#include <cmath>

#include "app/dialogs/SizeRule.h"
#include "look/Look.h"
#include "panels/controls/SymbolButton.h"

namespace orvanel {

namespace {

constexpr QSize lockSize{30, 50};
constexpr int popupWidth = 160;
/// The way of resampling stands apart from the size.
constexpr int gapBeforePopup = 6;

}  // namespace

ImageSizeDialog::ImageSizeDialog(DocumentPtr shownDocument, QWidget* parent)
    : SizeDialog({.message = tr("Image Size"),
                  .informativeText = tr("Resize the image and all layer content."),
                  .acceptTitle = tr("OK"),
                  .accessorySize = {280, 130},
                  .fieldsLeft = 60,
                  .besideLeft = 180},
                 parent),
      document(std::move(shownDocument)),
      originalWidth(document->canvasWidth.value()),
      originalHeight(document->canvasHeight.value()),
      lockButton(new SymbolButton(QStringLiteral("lock.fill"), look::size::symbol)),
      resamplePopup(new QComboBox) {
  addSizeFields(0, {originalWidth, originalHeight});
  for (const QLineEdit* field : {widthField, heightField}) {
    // Assistive technology sets the text without editing it.
    connect(field, &QLineEdit::textChanged, this, [this, field] { controlTextDidChange(*field); });
  }
  addLockButton();
  addResamplePopup();
  finish();
}

void ImageSizeDialog::addLockButton() {
  lockButton->setCheckable(true);
  lockButton->setFixedSize(lockSize);
  connect(lockButton, &QAbstractButton::toggled, this, &ImageSizeDialog::lockToggled);
  lockButton->setChecked(true);
  grid().addWidget(lockButton, 0, 3, 2, 1, Qt::AlignLeft | Qt::AlignVCenter);
}

void ImageSizeDialog::addResamplePopup() {
  resamplePopup->addItems({tr("Bicubic"), tr("Bilinear"), tr("Nearest Neighbor")});
  resamplePopup->setMinimumWidth(popupWidth);
  resamplePopup->setAccessibleName(tr("Resample"));
  grid().setRowMinimumHeight(2, gapBeforePopup);
  addLabel(3, tr("Resample:"), resamplePopup);
  grid().addWidget(resamplePopup, 3, 1, 1, 3, Qt::AlignLeft);
}

void ImageSizeDialog::lockToggled(bool isLocked) {
  aspectLocked = isLocked;
  lockButton->setSymbolName(isLocked ? QStringLiteral("lock.fill") : QStringLiteral("lock.open"));
  const QString description = isLocked ? tr("Lock aspect ratio") : tr("Unlock aspect ratio");
  lockButton->setAccessibleName(description);
  lockButton->setToolTip(description);
}

void ImageSizeDialog::controlTextDidChange(const QLineEdit& field) {
  const std::optional<std::int64_t> typed = typedNumber(field.text());
  if (!aspectLocked || !typed || *typed < 1) return;
  const bool isWidth = &field == widthField;
  const double ratio = isWidth ? static_cast<double>(originalHeight) : static_cast<double>(originalWidth);
  const double divisor = isWidth ? static_cast<double>(originalWidth) : static_cast<double>(originalHeight);
  QLineEdit& follower = isWidth ? *heightField : *widthField;
  const QSignalBlocker followsQuietly(follower);
  follower.setText(QString::number(std::llround(static_cast<double>(*typed) * ratio / divisor)));
}

ImageSizeEntry ImageSizeDialog::entry() const {
  return {widthField->text(), heightField->text(), resamplePopup->currentIndex()};
}

}  // namespace orvanel
