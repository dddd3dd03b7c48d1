#include "panels/options/ToolOptionsPane.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QStackedWidget>
#include <algorithm>

#include "look/Look.h"
#include "look/Symbol.h"
#include "look/TranslatedName.h"
#include "panels/options/ToolOptions.h"
#include "tools/NotificationCenter.h"

namespace orvanel {

namespace {

constexpr int barHeight = look::size::bar + look::space::normal;
/// The symbol at the left, before the tool's name.
constexpr int nameLeft = look::space::wide + look::size::symbol + look::space::normal;
constexpr int dividerHeight = look::size::control;

}  // namespace

ToolOptionsPane::ToolOptionsPane(ToolState& toolState, QWidget* parent)
    : QWidget(parent), toolState_(toolState), name_(new QLabel(this)), rows_(new QStackedWidget(this)) {
  setObjectName(QStringLiteral("toolOptions"));
  setAccessibleName(tr("Tool options"));
  setFixedHeight(barHeight);
  name_->setTextFormat(Qt::PlainText);
  name_->setFont(look::font(look::type::normal, QFont::Medium));
  // As wide as the longest name, so that the controls stay in place from tool to tool.
  int widestName = 0;
  for (const Tool tool : allTools) {
    name_->setText(look::translatedName(displayName(tool)));
    widestName = std::max(widestName, name_->sizeHint().width());
  }
  name_->setFixedWidth(widestName);
  auto* line = new QHBoxLayout(this);
  line->setContentsMargins(nameLeft, 0, look::space::wide, 0);
  line->setSpacing(2 * look::space::section);
  line->addWidget(name_);
  line->addWidget(rows_, 1);
  makeRows();
  notifier_ = toolState_.toolStack.addNotifier([this] { showCurrentTool(); });
  showCurrentTool();
  setDocument(nullptr);
}

void ToolOptionsPane::makeRows() {
  brush_ = new BrushOptions(toolState_.brushSettings);
  eraser_ = new EraserOptions(toolState_.eraserSettings);
  selection_ = new SelectionOptions(toolState_.selectionSettings);
  magicWand_ = new MagicWandOptions(toolState_.magicWandSettings);
  zoom_ = new ZoomOptions(toolState_.zoomSettings);
  freeTransform_ = new OptionsHint(tr("Press Enter to apply, Escape to cancel"));
  none_ = new OptionsHint(tr("No options available"));
  for (OptionsRow* row : {brush_, eraser_, selection_, magicWand_, zoom_, freeTransform_, none_}) {
    rows_->addWidget(row);
  }
}

OptionsRow* ToolOptionsPane::rowOf(Tool tool) const {
  switch (tool) {
    case Tool::brush:
      return brush_;
    case Tool::eraser:
      return eraser_;
    case Tool::rectangleSelect:
    case Tool::ellipseSelect:
    case Tool::lassoSelect:
    case Tool::polygonalLassoSelect:
      return selection_;
    case Tool::magicWand:
      return magicWand_;
    case Tool::zoom:
      return zoom_;
    case Tool::freeTransform:
      return freeTransform_;
    case Tool::hand:
    case Tool::move:
    case Tool::eyedropper:
      return none_;
  }
  return none_;
}

void ToolOptionsPane::setDocument(const DocumentPtr& document) {
  document_ = document;
  setEnabled(document != nullptr);
}

OptionsRow* ToolOptionsPane::currentRow() const {
  return static_cast<OptionsRow*>(rows_->currentWidget());
}

QString ToolOptionsPane::toolName() const {
  return name_->text();
}

void ToolOptionsPane::showCurrentTool() {
  const Tool tool = toolState_.currentTool();
  name_->setText(look::translatedName(displayName(tool)));
  OptionsRow* before = currentRow();
  OptionsRow* row = rowOf(tool);
  // What is being typed is meant for the tool before.
  before->endEditing();
  // The stack would hand the keyboard on to a control of the new row, where its keys would change a setting.
  if (row != before && before->isAncestorOf(window()->focusWidget())) {
    window()->focusWidget()->clearFocus();
    NotificationCenter::standard().post(notification::focusCanvas);
  }
  rows_->setCurrentWidget(row);
  update();
}

void ToolOptionsPane::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  painter.fillRect(rect(), look::color::pane);
  const double line = look::hairline(*this);
  painter.fillRect(QRectF(0, height() - line, width(), line), look::color::divider);
  const double x = rows_->x() - look::space::section;
  painter.fillRect(QRectF(x, (height() - dividerHeight) / 2.0, line, dividerHeight), look::color::divider);
  QRectF symbol(0, 0, look::size::symbol, look::size::symbol);
  symbol.moveCenter(QPointF(look::space::wide + look::size::symbol / 2.0, height() / 2.0));
  look::paintSymbol(painter, iconName(toolState_.currentTool()), symbol,
                    isEnabled() ? look::color::symbol : look::color::disabledText);
}

}  // namespace orvanel
