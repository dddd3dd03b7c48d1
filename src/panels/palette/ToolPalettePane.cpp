#include "panels/palette/ToolPalettePane.h"

#include <QPainter>
#include <QVBoxLayout>

#include "look/Look.h"
#include "panels/palette/ActiveTooltip.h"

namespace orvanel {

ToolPalettePane::ToolPalettePane(ToolState& toolState, QWidget* parent) : QWidget(parent) {
  setObjectName(QStringLiteral("toolPalette"));
  setAccessibleName(tr("Tools"));
  setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Preferred);
  tooltip_ = new ActiveTooltip(this);

  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(look::space::tight, look::space::tight, look::space::tight, look::space::tight);
  column->setSpacing(0);
  for (const ToolSlot& slot : toolSlots()) {
    auto* button = new ToolSlotButton(slot, toolState, this);
    tooltip_->attach(button);
    column->addWidget(button, 0, Qt::AlignHCenter);
    buttons_.push_back(button);
  }
  swatches_ = new ColorSwatches(this);
  swatches_->onChooseColor = [this](Swatch which) {
    if (onChooseColor) onChooseColor(which);
  };
  column->addSpacing(look::space::normal);
  column->addWidget(swatches_, 0, Qt::AlignHCenter);
  column->addStretch();
  setDocument(nullptr);
}

void ToolPalettePane::setDocument(const DocumentPtr& document) {
  document_ = document;
  for (ToolSlotButton* button : buttons_) button->setEnabled(document != nullptr);
  swatches_->setDocument(document);
}

void ToolPalettePane::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  painter.fillRect(rect(), look::color::pane);
  const double line = look::hairline(*this);
  painter.fillRect(QRectF(width() - line, 0, line, height()), look::color::divider);
}

}  // namespace orvanel
