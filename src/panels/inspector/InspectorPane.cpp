#include "panels/inspector/InspectorPane.h"

#include <QLabel>
#include <QPainter>
#include <QVBoxLayout>
#include <algorithm>

#include "look/Look.h"
#include "panels/inspector/DocumentInfoSection.h"
#include "panels/inspector/NodePropertiesSection.h"

namespace orvanel {

namespace {

constexpr int smallestWidth = 240;

}  // namespace

InspectorPane::InspectorPane(QWidget* parent)
    : QWidget(parent),
      noDocument_(new QLabel(tr("No Document"), this)),
      documentInfo_(new DocumentInfoSection(this)),
      nodeProperties_(new NodePropertiesSection(this)),
      layerPanelSlot_(new QVBoxLayout) {
  setObjectName(QStringLiteral("inspector"));
  setAccessibleName(tr("Inspector"));
  setMinimumWidth(smallestWidth);
  noDocument_->setAlignment(Qt::AlignCenter);
  noDocument_->setFixedHeight(3 * look::size::bar);
  look::setTextColor(*noDocument_, look::color::secondaryText);
  documentInfo_->hide();
  const int labelWidth = std::max(documentInfo_->labelWidth(), nodeProperties_->labelWidth());
  documentInfo_->setLabelWidth(labelWidth);
  nodeProperties_->setLabelWidth(labelWidth);

  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(1, 0, 0, 0);
  column->setSpacing(0);
  column->addWidget(noDocument_);
  column->addWidget(documentInfo_);
  column->addWidget(nodeProperties_);
  column->addLayout(layerPanelSlot_, 1);
}

void InspectorPane::setLayerPanel(QWidget* panel) {
  layerPanelSlot_->addWidget(panel);
}

void InspectorPane::setDocument(const DocumentPtr& document) {
  document_ = document;
  documentInfo_->setDocument(document);
  nodeProperties_->setDocument(document);
  noDocument_->setVisible(document == nullptr);
  documentInfo_->setVisible(document != nullptr);
}

void InspectorPane::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  painter.fillRect(rect(), look::color::pane);
  painter.fillRect(QRectF(0, 0, look::hairline(*this), height()), look::color::divider);
}

}  // namespace orvanel
