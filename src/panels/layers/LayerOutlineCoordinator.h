// What the gestures in the layer panel's outline mean for the document: clicks on thumbnails and buttons, the
// sweep over eyes, and the context menu. It knows rows and parts of rows, no pixels on the screen. Owned by
// the outline; main thread only.
#pragma once

#include <QCoreApplication>
#include <QModelIndex>
#include <functional>
#include <memory>

#include "model/VisibilitySweep.h"
#include "panels/layers/LayerRowLayout.h"

class QMenu;

namespace orvanel {

class LayerTreeModel;

class LayerOutlineCoordinator {
  Q_DECLARE_TR_FUNCTIONS(LayerOutlineCoordinator)

 public:
  explicit LayerOutlineCoordinator(LayerTreeModel& model) : model_(model) {}

  std::function<void(const QModelIndex&)> onRename;
  std::function<void(const QUuid&)> onDeleteNode;

  /// A click on a thumbnail chooses what edits go to; with Control it loads the selection. False if it means
  /// nothing more than a click on the row.
  bool clickThumbnail(const QModelIndex& index, LayerRowPart part, Qt::KeyboardModifiers modifiers) const;
  /// A click on the lock, the chain or the disclosure button.
  void pushButton(const QModelIndex& index, LayerRowPart part) const;
  void toggleVisibility(const QModelIndex& index) const;
  void setExpanded(const QModelIndex& index, bool isExpanded) const;

  /// Turns the eye of this row, and gives the same value to all rows that are swept over until the end.
  void beginSweep(const QModelIndex& index);
  void sweepOver(const QModelIndex& index);
  void endSweep() { sweep_ = nullptr; }
  [[nodiscard]] bool isSweeping() const { return sweep_ != nullptr; }

  /// The items for a row, or for the mask's thumbnail in it; none without a row.
  void fillContextMenu(QMenu& menu, const QModelIndex& index, LayerRowPart part) const;
  /// What a part of a row does; empty for parts that do nothing of their own.
  [[nodiscard]] QString help(const QModelIndex& index, LayerRowPart part) const;

 private:
  void addItem(QMenu& menu, const QString& title, const QUuid& nodeID, const std::function<void()>& action,
               bool isEnabled = true) const;
  [[nodiscard]] QString helpForMask(const Layer& layer, LayerRowPart part) const;

  LayerTreeModel& model_;
  std::unique_ptr<VisibilitySweep> sweep_;
};

}  // namespace orvanel
