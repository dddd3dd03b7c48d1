#include "panels/layers/LayerOutlineCoordinator.h"

#include <QMenu>

#include "panels/layers/LayerTreeModel.h"

namespace orvanel {

bool LayerOutlineCoordinator::clickThumbnail(const QModelIndex& index, LayerRowPart part,
                                             Qt::KeyboardModifiers modifiers) const {
  const DocumentPtr document = model_.document();
  const std::shared_ptr<Layer> layer = model_.layerOf(index);
  if (document == nullptr || layer == nullptr) return false;
  const std::shared_ptr<LayerMask> mask = layer->mask.value();
  const bool loadsSelection = modifiers.testFlag(Qt::ControlModifier);
  if (part == LayerRowPart::maskThumbnail && mask != nullptr) {
    if (loadsSelection) {
      document->selectMask(*mask);
    } else {
      document->setMaskSelected(layer->id, true);
    }
    return true;
  }
  if (part != LayerRowPart::thumbnail) return false;
  if (loadsSelection) {
    document->selectLayerTransparency(*layer);
  } else if (mask != nullptr) {
    document->setMaskSelected(layer->id, false);
  }
  return loadsSelection || mask != nullptr;
}

void LayerOutlineCoordinator::pushButton(const QModelIndex& index, LayerRowPart part) const {
  const DocumentPtr document = model_.document();
  const std::optional<LayerNode> node = model_.nodeOf(index);
  if (document == nullptr || !node) return;
  if (part == LayerRowPart::lock) {
    document->setLocked(node->id(), !node->isLocked().value());
  } else if (part == LayerRowPart::chain && node->layer() != nullptr) {
    document->setMaskLinked(node->id(), !node->layer()->isMaskLinked.value());
  } else if (part == LayerRowPart::disclosure && node->folder() != nullptr) {
    document->setExpanded(node->id(), !node->folder()->isExpanded.value());
  }
}

void LayerOutlineCoordinator::toggleVisibility(const QModelIndex& index) const {
  const DocumentPtr document = model_.document();
  const std::optional<LayerNode> node = model_.nodeOf(index);
  if (document != nullptr && node) document->setVisible(node->id(), !node->isVisible().value());
}

void LayerOutlineCoordinator::setExpanded(const QModelIndex& index, bool isExpanded) const {
  if (const DocumentPtr document = model_.document()) document->setExpanded(model_.idOf(index), isExpanded);
}

void LayerOutlineCoordinator::beginSweep(const QModelIndex& index) {
  const DocumentPtr document = model_.document();
  const std::optional<LayerNode> node = model_.nodeOf(index);
  if (document == nullptr || !node) return;
  sweep_ = std::make_unique<VisibilitySweep>(document, !node->isVisible().value());
  sweepOver(index);
}

void LayerOutlineCoordinator::sweepOver(const QModelIndex& index) {
  if (sweep_ != nullptr && index.isValid()) sweep_->add(model_.idOf(index));
}

// The context menu and the help.

void LayerOutlineCoordinator::addItem(QMenu& menu, const QString& title, const QUuid& nodeID,
                                      const std::function<void()>& action, bool isEnabled) const {
  QAction* item = menu.addAction(title);
  item->setData(nodeID);
  item->setEnabled(isEnabled);
  QObject::connect(item, &QAction::triggered, &model_, action);
}

void LayerOutlineCoordinator::fillContextMenu(QMenu& menu, const QModelIndex& index,
                                              LayerRowPart part) const {
  const DocumentPtr document = model_.document();
  const std::optional<LayerNode> node = model_.nodeOf(index);
  if (document == nullptr || !node) return;
  const QUuid id = node->id();
  const std::shared_ptr<Layer> layer = node->layer();
  const std::weak_ptr<Document> weak = document;
  if (part == LayerRowPart::maskThumbnail && layer != nullptr) {
    const auto withMask = [&](const QString& title, auto command) {
      addItem(menu, title, id, [weak, layer, command] {
        if (const DocumentPtr target = weak.lock()) (target.get()->*command)(layer);
      });
    };
    withMask(tr("Delete Layer Mask"), &Document::removeLayerMask);
    withMask(tr("Apply Layer Mask"), &Document::applyLayerMask);
    return;
  }
  // A menu may outlive what was shown when it opened.
  const auto isShown = [this, weak] {
    const DocumentPtr target = weak.lock();
    return target != nullptr && target == model_.document();
  };
  addItem(menu, tr("Rename"), id, [this, id, isShown] {
    if (onRename && isShown()) onRename(model_.indexOf(id));
  });
  addItem(menu, tr("Duplicate"), id, [weak, id] {
    if (const DocumentPtr target = weak.lock()) target->duplicateNode(id);
  });
  menu.addSeparator();
  const bool isLastLayer = layer != nullptr && document->layerCount() < 2;
  addItem(
      menu, tr("Delete"), id,
      [this, id, isShown] {
        if (onDeleteNode && isShown()) onDeleteNode(id);
      },
      !isLastLayer);
}

QString LayerOutlineCoordinator::help(const QModelIndex& index, LayerRowPart part) const {
  const std::optional<LayerNode> node = model_.nodeOf(index);
  if (!node) return {};
  switch (part) {
    case LayerRowPart::visibility:
      return node->isVisible().value() ? tr("Hide (Space)\nDrag to hide several.")
                                       : tr("Show (Space)\nDrag to show several.");
    case LayerRowPart::lock:
      return node->isLocked().value() ? tr("Unlock (Shift+Space)\nLets the tools change it again.")
                                      : tr("Lock (Shift+Space)\nProtects it from the tools.");
    case LayerRowPart::disclosure:
      return node->folder() != nullptr && node->folder()->isExpanded.value() ? tr("Collapse (Left)")
                                                                             : tr("Expand (Right)");
    case LayerRowPart::thumbnail:
      return tr("Pixels\nClick to edit them. Ctrl-click to select what isn't transparent.");
    case LayerRowPart::chain:
    case LayerRowPart::maskThumbnail:
      return node->layer() != nullptr ? helpForMask(*node->layer(), part) : QString();
    default:
      return {};
  }
}

QString LayerOutlineCoordinator::helpForMask(const Layer& layer, LayerRowPart part) const {
  if (part == LayerRowPart::maskThumbnail) {
    return tr("Mask\nClick to edit it. Ctrl-click to load it as the selection.");
  }
  return layer.isMaskLinked.value()
             ? tr("Linked (Ctrl+Shift+Space)\nThe mask moves along with the pixels.")
             : tr("Unlinked (Ctrl+Shift+Space)\nThe mask and the pixels move on their own.");
}

}  // namespace orvanel
