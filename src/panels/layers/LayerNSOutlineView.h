// The tree in the layer panel: selection, expansion and renaming, and what pointer and keys do on the parts
// of its rows. It shows the document's state and changes it by commands only. Owned by the layer panel; main
// thread only.
#pragma once

#include <QBasicTimer>
#include <QDrag>
#include <QTreeView>
#include <chrono>
#include <functional>

#include "panels/layers/LayerOutlineCoordinator.h"
#include "panels/layers/LayerRowDelegate.h"
#include "panels/layers/LayerTreeModel.h"

namespace orvanel {

class LayerNSOutlineView : public QTreeView {
  Q_OBJECT

 public:
  explicit LayerNSOutlineView(QWidget* parent = nullptr);
  ~LayerNSOutlineView() override;

  std::function<void(const QUuid&)> onDeleteNode;
  /// Performs a drag until its end; the desktop's by default.
  std::function<void(QDrag&)> runDrag;
  /// How long a drag rests on a closed folder before it opens.
  std::chrono::milliseconds springDelay{700};

  void setDocument(const DocumentPtr& document);
  void setThumbnailSize(int viewPoints);
  [[nodiscard]] LayerTreeModel& treeModel() { return model_; }
  /// While a name is being edited.
  [[nodiscard]] bool isEditing() const { return state() == EditingState; }

  /// Makes the row active and opens the field for its name.
  void beginRename(const QModelIndex& index);
  void fillContextMenu(QMenu& menu, const QModelIndex& index, LayerRowPart part) const;

  // Places in the viewport.
  [[nodiscard]] QRect rectOf(const QModelIndex& index, LayerRowPart part) const;
  [[nodiscard]] LayerRowPart partAt(const QPoint& point) const;

  /// The columns beside the row's own lie where the row shows them.
  [[nodiscard]] QRect visualRect(const QModelIndex& index) const override;
  /// Stays put for a row in a closed folder, which would open it.
  void scrollTo(const QModelIndex& index, ScrollHint hint = EnsureVisible) override;
  /// Letters choose tools.
  void keyboardSearch(const QString& /*search*/) override {}

 protected:
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void contextMenuEvent(QContextMenuEvent* event) override;
  void focusInEvent(QFocusEvent* event) override;
  void closeEditor(QWidget* editor, QAbstractItemDelegate::EndEditHint hint) override;
  bool viewportEvent(QEvent* event) override;
  void timerEvent(QTimerEvent* event) override;
  void paintEvent(QPaintEvent* event) override;
  void drawRow(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
  [[nodiscard]] QItemSelectionModel::SelectionFlags selectionCommand(const QModelIndex& index,
                                                                     const QEvent* event) const override;
  void startDrag(Qt::DropActions supportedActions) override;
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dragMoveEvent(QDragMoveEvent* event) override;
  void dragLeaveEvent(QDragLeaveEvent* event) override;
  void dropEvent(QDropEvent* event) override;

 private:
  /// Where a drop would put what is dragged, and how that is shown.
  struct DropPlace {
    QModelIndex item;
    /// -1: on the item.
    int childIndex = -1;
    /// A row for a drop on it, otherwise a line between rows.
    QRect mark;
  };

  // The document's state.
  void follow(const DocumentChanges& changes);
  void keepTypedName();
  void showSelection();
  void showExpansion(const QModelIndex& folder);
  void showAllExpansions();
  void selectionChosen();
  void expansionChosen(const QModelIndex& index, bool isExpanded);

  /// The rows' backgrounds where the scroll bar lies over them.
  void paintRowsBeside(QPainter& painter) const;

  // The pointer.
  bool pressButton(const QModelIndex& index, LayerRowPart part);
  void sweepTo(const QPoint& point);
  void endPress(const QPoint& point);
  void setPointer(const QModelIndex& row, LayerRowPart part, bool isPressed);
  bool showHelp(const QPoint& point, const QPoint& globalPoint);
  /// The ring around the row that the open menu is about; an invalid index takes it away.
  void markMenuRow(const QModelIndex& row);
  /// Left and Right close and open folders and walk between levels; true if the key was consumed.
  bool walkLevels(int key, const QModelIndex& current);

  // Drag and drop.
  [[nodiscard]] QPixmap pictureOf(const QModelIndex& row) const;
  [[nodiscard]] std::optional<DropPlace> dropPlaceAt(const QPoint& point, const QMimeData& dragged) const;
  [[nodiscard]] DropPlace placeBetween(const QModelIndex& item, int gap, int y,
                                       const QModelIndex& dragged) const;
  [[nodiscard]] DropPlace placeBelow(QModelIndex row, const QPoint& point, const QModelIndex& dragged) const;
  void showDrop(const std::optional<DropPlace>& place);
  void endDropping();

  LayerTreeModel model_;
  LayerOutlineCoordinator coordinator_{model_};
  LayerRowPointer pointer_;
  LayerRowDelegate delegate_;
  QPersistentModelIndex lastSwept_;
  QPersistentModelIndex menuRow_;
  bool isShowing_ = false;
  /// The ring around the active row is for those who work with keys.
  bool isUsedByKeys_ = false;
  /// The left button was pressed where a drag may begin.
  bool isDraggable_ = false;

  std::optional<QRect> dropMark_;
  QPersistentModelIndex springFolder_;
  QBasicTimer springTimer_;
};

}  // namespace orvanel
