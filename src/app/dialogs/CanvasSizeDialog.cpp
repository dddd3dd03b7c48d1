#include "app/dialogs/CanvasSizeDialog.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <cstdlib>

#include "app/dialogs/AnchorButton.h"
#include "app/dialogs/SizeRule.h"
#include "look/Look.h"

namespace orvanel {

namespace {

constexpr int sideOfGrid = 3;
constexpr int gapInGrid = 2;
constexpr int currentSizeHeight = 50;

/// From the top left of the grid, arrows that point from its centre to that place.
const std::array<QString, 9> arrows{QStringLiteral("↖"), QStringLiteral("↑"), QStringLiteral("↗"),
                                    QStringLiteral("←"), QStringLiteral("●"), QStringLiteral("→"),
                                    QStringLiteral("↙"), QStringLiteral("↓"), QStringLiteral("↘")};

constexpr std::array placeNames{QT_TRANSLATE_NOOP("orvanel::CanvasSizeDialog", "Top left"),
                                QT_TRANSLATE_NOOP("orvanel::CanvasSizeDialog", "Top"),
                                QT_TRANSLATE_NOOP("orvanel::CanvasSizeDialog", "Top right"),
                                QT_TRANSLATE_NOOP("orvanel::CanvasSizeDialog", "Left"),
                                QT_TRANSLATE_NOOP("orvanel::CanvasSizeDialog", "Center"),
                                QT_TRANSLATE_NOOP("orvanel::CanvasSizeDialog", "Right"),
                                QT_TRANSLATE_NOOP("orvanel::CanvasSizeDialog", "Bottom left"),
                                QT_TRANSLATE_NOOP("orvanel::CanvasSizeDialog", "Bottom"),
                                QT_TRANSLATE_NOOP("orvanel::CanvasSizeDialog", "Bottom right")};

/// What a cell of the grid shows, by its distance from the anchor: the anchor's neighbours point at it.
QString cellTitle(int dx, int dy) {
  if (std::abs(dx) > 1 || std::abs(dy) > 1) return QStringLiteral("·");
  return arrows.at(static_cast<std::size_t>((1 - dy) * sideOfGrid + (1 - dx)));
}

QLabel* makeHeading(const QString& text) {
  auto* heading = new QLabel(text);
  heading->setFont(look::font(look::type::normal, QFont::Bold));
  return heading;
}

}  // namespace

CanvasSizeDialog::CanvasSizeDialog(DocumentPtr shownDocument, QWidget* parent)
    : SizeDialog({.message = tr("Canvas Size"),
                  .informativeText = tr("Enter the new canvas dimensions."),
                  .acceptTitle = tr("OK"),
                  .accessorySize = {280, 230},
                  .fieldsLeft = 70,
                  .besideLeft = 190},
                 parent),
      document(std::move(shownDocument)),
      relativeCheckbox(new QCheckBox(tr("Relative"))) {
  addCurrentSize();
  addNewSize();
  addAnchorGrid();
  finish();
}

QSize CanvasSizeDialog::canvasSize() const {
  return {document->canvasWidth.value(), document->canvasHeight.value()};
}

void CanvasSizeDialog::addCurrentSize() {
  auto* box = new QGroupBox(tr("Current Size"));
  box->setMinimumHeight(currentSizeHeight);
  auto* row = new QHBoxLayout(box);
  row->setContentsMargins(look::space::normal, look::space::tight, look::space::normal, 0);
  row->addWidget(new QLabel(tr("%1 × %2 px").arg(canvasSize().width()).arg(canvasSize().height())));
  grid().addWidget(box, 0, 0, 1, 4);
}

void CanvasSizeDialog::addNewSize() {
  grid().addWidget(makeHeading(tr("New Size:")), 1, 0, 1, 4);
  addSizeFields(2, canvasSize());
  relativeCheckbox->setToolTip(tr("Enter what is added to the current size instead of the new size"));
  connect(relativeCheckbox, &QCheckBox::toggled, this, &CanvasSizeDialog::relativeToggled);
  grid().addWidget(relativeCheckbox, 2, 3, 2, 1, Qt::AlignLeft | Qt::AlignVCenter);
}

void CanvasSizeDialog::addAnchorGrid() {
  QLabel* heading = makeHeading(tr("Anchor:"));
  heading->setContentsMargins(0, 0, look::space::normal, 0);
  grid().addWidget(heading, 4, 0, Qt::AlignRight | Qt::AlignTop);
  auto* cells = new QGridLayout;
  cells->setSpacing(gapInGrid);
  // As a group they are one stop of the Tab key, and the arrow keys move between them.
  auto* group = new QButtonGroup(this);
  for (std::size_t tag = 0; tag < anchorButtons.size(); ++tag) {
    auto* button = new AnchorButton(tr(placeNames.at(tag)));
    const int place = static_cast<int>(tag);
    anchorButtons.at(tag) = button;
    group->addButton(button, place);
    cells->addWidget(button, place / sideOfGrid, place % sideOfGrid);
  }
  // Assistive technology toggles where the mouse clicks.
  connect(group, &QButtonGroup::idToggled, this, [this](int place, bool isOn) {
    if (isOn) anchorClicked(place);
  });
  grid().addLayout(cells, 4, 1, 1, 3, Qt::AlignLeft | Qt::AlignTop);
  showAnchor();
}

void CanvasSizeDialog::anchorClicked(int tag) {
  anchorX = tag % sideOfGrid - 1;
  anchorY = tag / sideOfGrid - 1;
  showAnchor();
}

void CanvasSizeDialog::showAnchor() {
  for (std::size_t tag = 0; tag < anchorButtons.size(); ++tag) {
    const int dx = static_cast<int>(tag) % sideOfGrid - 1 - anchorX;
    const int dy = static_cast<int>(tag) / sideOfGrid - 1 - anchorY;
    anchorButtons.at(tag)->setText(cellTitle(dx, dy));
    anchorButtons.at(tag)->setChecked(dx == 0 && dy == 0);
  }
}

void CanvasSizeDialog::relativeToggled(bool isRelative) {
  const auto exchange = [isRelative](QLineEdit& field, int current) {
    const std::optional<std::int64_t> number = typedNumber(field.text());
    const std::int64_t size = isRelative ? number.value_or(current) - current : number.value_or(0) + current;
    field.setText(QString::number(size));
  };
  exchange(*widthField, canvasSize().width());
  exchange(*heightField, canvasSize().height());
}

CanvasSizeEntry CanvasSizeDialog::entry() const {
  return {widthField->text(), heightField->text(), relativeCheckbox->isChecked(), anchorX, anchorY};
}

}  // namespace orvanel
