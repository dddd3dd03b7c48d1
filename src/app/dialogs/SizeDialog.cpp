#include "app/dialogs/SizeDialog.h"

#include <QDialogButtonBox>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "look/Look.h"

namespace orvanel {

namespace {

constexpr QSize fieldSize{80, 24};
/// Rows of fields are 30 points apart.
constexpr int gapOfRows = 6;
constexpr int gapBeforeUnit = 5;

QLineEdit* makeSizeField(const QString& accessibleName) {
  auto* field = new QLineEdit;
  field->setAlignment(Qt::AlignRight);
  field->setAccessibleName(accessibleName);
  // Five digits and a sign, with room to spare; a larger font needs more of it.
  const int wide = field->fontMetrics().horizontalAdvance(QStringLiteral("-00000")) + 2 * look::space::normal;
  field->setFixedWidth(qMax(fieldSize.width(), wide));
  field->setMinimumHeight(fieldSize.height());
  return field;
}

}  // namespace

SizeDialog::SizeDialog(const Frame& frame, QWidget* parent)
    : QDialog(parent),
      widthField(makeSizeField(tr("Width"))),
      heightField(makeSizeField(tr("Height"))),
      accessory_(new QWidget),
      grid_(new QGridLayout(accessory_)),
      besideLeft_(frame.besideLeft) {
  setWindowTitle(frame.message);

  auto* message = new QLabel(frame.message);
  message->setFont(look::font(look::type::heading, QFont::DemiBold));
  auto* informative = new QLabel(frame.informativeText);
  look::setTextColor(*informative, look::color::secondaryText);
  // It takes as many lines as the controls leave it width for.
  informative->setWordWrap(true);
  QSizePolicy policy(QSizePolicy::Ignored, QSizePolicy::Preferred);
  policy.setHeightForWidth(true);
  informative->setSizePolicy(policy);

  accessory_->setMinimumSize(frame.accessorySize);
  grid_->setContentsMargins(0, gapOfRows, 0, 0);
  grid_->setHorizontalSpacing(0);
  grid_->setVerticalSpacing(gapOfRows);
  grid_->setColumnMinimumWidth(0, frame.fieldsLeft);
  grid_->setColumnStretch(3, 1);

  auto* buttons = new QDialogButtonBox;
  buttons->addButton(frame.acceptTitle, QDialogButtonBox::AcceptRole)->setDefault(true);
  buttons->addButton(tr("Cancel"), QDialogButtonBox::RejectRole);
  connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

  constexpr int margin = look::space::dialogMargin;
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(margin, margin, margin, margin);
  column->setSpacing(0);
  column->addWidget(message);
  column->addSpacing(look::space::tight);
  column->addWidget(informative);
  column->addSpacing(look::space::normal);
  column->addWidget(accessory_);
  column->addSpacing(look::space::normal);
  column->addWidget(buttons);
}

QLabel* SizeDialog::addLabel(int row, const QString& text, QWidget* control) {
  auto* label = new QLabel(text);
  label->setBuddy(control);
  label->setContentsMargins(0, 0, look::space::normal, 0);
  grid_->addWidget(label, row, 0, Qt::AlignRight | Qt::AlignVCenter);
  return label;
}

void SizeDialog::addSizeFields(int row, const QSize& size) {
  widthField->setText(QString::number(size.width()));
  heightField->setText(QString::number(size.height()));
  const auto addField = [this](int fieldRow, const QString& label, QLineEdit* field) {
    addLabel(fieldRow, label, field);
    grid_->addWidget(field, fieldRow, 1, Qt::AlignLeft);
    auto* unit = new QLabel(tr("px"));
    unit->setContentsMargins(gapBeforeUnit, 0, look::space::normal, 0);
    grid_->addWidget(unit, fieldRow, 2);
  };
  addField(row, tr("Width:"), widthField);
  addField(row + 1, tr("Height:"), heightField);
}

void SizeDialog::finish() {
  grid_->setRowStretch(grid_->rowCount(), 1);
  int fieldsLeft = grid_->columnMinimumWidth(0);
  for (int row = 0; row < grid_->rowCount(); ++row) {
    const QLayoutItem* label = grid_->itemAtPosition(row, 0);
    const QLayoutItem* control = grid_->itemAtPosition(row, 1);
    if (label != nullptr && label != control) fieldsLeft = qMax(fieldsLeft, label->sizeHint().width());
  }
  grid_->setColumnMinimumWidth(2, besideLeft_ - fieldsLeft - widthField->width());
  layout()->setSizeConstraint(QLayout::SetFixedSize);
  widthField->setFocus();
  widthField->selectAll();
}

}  // namespace orvanel
