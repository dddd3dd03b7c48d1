#include "panels/layers/LayerPanelView.h"

#include <QPainter>
#include <QStackedWidget>
#include <QVBoxLayout>

#include "look/Look.h"
#include "panels/channels/ChannelListView.h"
#include "panels/controls/PanelTabBar.h"
#include "panels/controls/SymbolButton.h"
#include "panels/layers/LayerNSOutlineView.h"

namespace orvanel {

LayerPanelView::LayerPanelView(QWidget* parent)
    : QWidget(parent),
      tabs_(new PanelTabBar(this)),
      pages_(new QStackedWidget(this)),
      outline_(new LayerNSOutlineView(this)),
      channels_(new ChannelListView(this)) {
  setObjectName(QStringLiteral("layerPanel"));
  tabs_->setAccessibleName(tr("Layers and channels"));
  tabs_->addTab(tr("Layers"));
  tabs_->addTab(tr("Channels"));
  auto* layerPage = new QWidget(this);
  auto* layerColumn = new QVBoxLayout(layerPage);
  layerColumn->setContentsMargins(0, 0, 0, 0);
  layerColumn->setSpacing(0);
  layerColumn->addWidget(outline_);
  layerColumn->addWidget(makeBar());
  pages_->addWidget(layerPage);
  pages_->addWidget(channels_);
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(0, 0, 0, 0);
  column->setSpacing(0);
  column->addWidget(tabs_);
  column->addWidget(pages_);

  connect(tabs_, &QTabBar::currentChanged, pages_, &QStackedWidget::setCurrentIndex);
  outline_->onDeleteNode = [this](const QUuid& nodeID) {
    if (onDeleteNode) onDeleteNode(nodeID);
  };
  updateButtons();
}

LayerPanelView::~LayerPanelView() = default;

// The bar.

QWidget* LayerPanelView::makeBar() {
  bar_ = new QWidget(this);
  bar_->setFixedHeight(look::size::bar);
  auto* row = new QHBoxLayout(bar_);
  row->setContentsMargins(look::space::tight, 0, look::space::tight, 0);
  row->setSpacing(look::space::tight);
  addLayerButton_ = addButton(QStringLiteral("plus"), tr("New Layer"), tr("Adds an empty layer."));
  addFolderButton_ = addButton(QStringLiteral("folder.badge.plus"), tr("New Folder"), tr("Adds a folder."));
  maskButton_ = addButton(QStringLiteral("layerMaskButton"), {}, {});
  row->addStretch();
  deleteButton_ = addButton(QStringLiteral("minus"), tr("Delete"), tr("Deletes the active layer or folder."));

  connect(addLayerButton_, &QAbstractButton::clicked, this, [this] {
    if (onAddLayer) onAddLayer();
  });
  connect(addFolderButton_, &QAbstractButton::clicked, this, [this] {
    if (onAddFolder) onAddFolder();
  });
  connect(maskButton_, &QAbstractButton::clicked, this, &LayerPanelView::toggleMask);
  connect(deleteButton_, &QAbstractButton::clicked, this, [this] {
    const DocumentPtr document = document_.lock();
    const std::optional<LayerNode> node = document != nullptr ? document->activeNode() : std::nullopt;
    if (node && onDeleteNode) onDeleteNode(node->id());
  });
  return bar_;
}

SymbolButton* LayerPanelView::addButton(const QString& symbol, const QString& name, const QString& help) {
  auto* button = new SymbolButton(symbol, look::size::symbol, bar_);
  button->setAccessibleName(name);
  button->setToolTip(QStringLiteral("%1\n%2").arg(name, help));
  bar_->layout()->addWidget(button);
  return button;
}

QAbstractButton* LayerPanelView::addLayerButton() const {
  return addLayerButton_;
}
QAbstractButton* LayerPanelView::addFolderButton() const {
  return addFolderButton_;
}
QAbstractButton* LayerPanelView::maskButton() const {
  return maskButton_;
}
QAbstractButton* LayerPanelView::deleteButton() const {
  return deleteButton_;
}

void LayerPanelView::toggleMask() const {
  const DocumentPtr document = document_.lock();
  const std::shared_ptr<Layer> layer = document != nullptr ? document->activeLayer() : nullptr;
  if (layer == nullptr) return;
  if (layer->mask.value() != nullptr) {
    document->removeLayerMask(layer);
  } else {
    document->addLayerMask(layer);
  }
}

void LayerPanelView::updateButtons() {
  const DocumentPtr document = document_.lock();
  const std::optional<LayerNode> node = document != nullptr ? document->activeNode() : std::nullopt;
  const std::shared_ptr<Layer> layer = node ? node->layer() : nullptr;
  addLayerButton_->setEnabled(document != nullptr);
  addFolderButton_->setEnabled(document != nullptr);
  maskButton_->setEnabled(layer != nullptr);
  const bool hasMask = layer != nullptr && layer->mask.value() != nullptr;
  const QString name = hasMask ? tr("Remove Layer Mask") : tr("Add Layer Mask");
  maskButton_->setAccessibleName(name);
  maskButton_->setToolTip(QStringLiteral("%1\n%2").arg(
      name, hasMask ? tr("Removes the mask and leaves the pixels as they are.")
                    : tr("Shows what is selected, or everything if nothing is.")));
  deleteButton_->setEnabled(node && (layer == nullptr || document->layerCount() > 1));
}

// The document.

void LayerPanelView::setDocument(const DocumentPtr& document) {
  if (document == document_.lock() && document != nullptr) return;
  document_ = document;
  changes_ = {};
  if (document != nullptr) {
    changes_ = document->changes().observe([this](const DocumentChanges& changes) { follow(changes); });
  }
  outline_->setDocument(document);
  channels_->setDocument(document);
  updateButtons();
  updateViewing();
}

void LayerPanelView::follow(const DocumentChanges& changes) {
  const bool isConcerned = contains<change::ActiveNodeChanged>(changes) ||
                           contains<change::NodeInserted>(changes) ||
                           contains<change::NodeRemoved>(changes) ||
                           containsAny<change::NodePropertyChanged>(changes, NodeProperty::mask);
  if (isConcerned) updateButtons();
}

void LayerPanelView::setThumbnailSize(int viewPoints) {
  outline_->setThumbnailSize(viewPoints);
  channels_->setThumbnailSize(viewPoints);
}

LayerPanelView::Tab LayerPanelView::tab() const {
  return tabs_->currentIndex() == 0 ? Tab::layers : Tab::channels;
}

void LayerPanelView::setTab(Tab tab) {
  tabs_->setCurrentIndex(tab == Tab::layers ? 0 : 1);
}

void LayerPanelView::showEvent(QShowEvent* event) {
  QWidget::showEvent(event);
  updateViewing();
}

void LayerPanelView::hideEvent(QHideEvent* event) {
  QWidget::hideEvent(event);
  updateViewing();
}

void LayerPanelView::updateViewing() {
  const DocumentPtr document = document_.lock();
  viewing_ =
      isVisible() && document != nullptr ? ThumbnailManager::viewing(document) : ThumbnailManager::Hold();
}

void LayerPanelView::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  painter.fillRect(rect(), look::color::pane);
  const double line = look::hairline(*this);
  const double barTop = pages_->mapTo(this, QPoint(0, 0)).y() + bar_->geometry().top();
  if (bar_->isVisible()) painter.fillRect(QRectF(0, barTop, width(), line), look::color::divider);
}

}  // namespace orvanel
