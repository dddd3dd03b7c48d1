// Draws the rows of the layer panel and opens the field in which a name is edited. Rows are painted rather
// than made of widgets, so that only those in sight cost anything. Owned by the outline; main thread only.
#pragma once

#include <QPersistentModelIndex>
#include <QStyledItemDelegate>

#include "panels/controls/RowPainting.h"
#include "panels/controls/ThumbnailPainter.h"
#include "panels/layers/LayerRowLayout.h"
#include "panels/layers/LayerTreeModel.h"

namespace orvanel {

/// What the pointer is on.
struct LayerRowPointer {
  QPersistentModelIndex row;
  LayerRowPart part = LayerRowPart::none;
  bool isPressed = false;
};

class LayerRowDelegate : public QStyledItemDelegate {
  Q_OBJECT

 public:
  LayerRowDelegate(const LayerTreeModel& model, const LayerRowPointer& pointer, QObject* parent);

  [[nodiscard]] int thumbnailSize() const { return thumbnailSize_; }
  void setThumbnailSize(int viewPoints) { thumbnailSize_ = viewPoints; }

  /// None if the node has left the document.
  [[nodiscard]] std::optional<LayerRowLayout> layoutOf(const QModelIndex& index, const QRect& row) const;
  /// The whole name if the row has no room for it.
  [[nodiscard]] QString cutOffName(const QModelIndex& index, const QRect& row) const;

  void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
  [[nodiscard]] QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
  QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& option,
                        const QModelIndex& index) const override;
  void setEditorData(QWidget* editor, const QModelIndex& index) const override;
  void setModelData(QWidget* editor, QAbstractItemModel* model, const QModelIndex& index) const override;
  void updateEditorGeometry(QWidget* editor, const QStyleOptionViewItem& option,
                            const QModelIndex& index) const override;

 private:
  struct Row;
  void paintThumbnails(QPainter& painter, const Row& row) const;
  void paintFolder(QPainter& painter, const Row& row) const;
  void paintName(QPainter& painter, const Row& row) const;
  [[nodiscard]] RowButtonState stateOf(const Row& row, LayerRowPart part) const;

  const LayerTreeModel& model_;
  const LayerRowPointer& pointer_;
  int thumbnailSize_ = 48;
  /// Scaled pictures are kept from one painting to the next.
  mutable ThumbnailPainter thumbnails_;
};

}  // namespace orvanel
