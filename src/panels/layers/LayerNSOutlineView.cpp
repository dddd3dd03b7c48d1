#include "panels/layers/LayerNSOutlineView.h"

#include <QContextMenuEvent>
#include <QHeaderView>
#include <QLineEdit>
#include <QMenu>
#include <QMouseEvent>
#include <QPainter>
#include <QScopedValueRollback>
#include <QToolTip>
#include <utility>

#include "look/Look.h"
#include "panels/controls/RowPainting.h"
#include "panels/controls/RowScrollBar.h"
#include "tools/NotificationCenter.h"

namespace orvanel {

namespace {

bool isButton(LayerRowPart part) {
  return part == LayerRowPart::visibility || part == LayerRowPart::lock || part == LayerRowPart::chain ||
         part == LayerRowPart::disclosure;
}

bool isThumbnail(LayerRowPart part) {
  return part == LayerRowPart::thumbnail || part == LayerRowPart::maskThumbnail;
}

}  // namespace

LayerNSOutlineView::LayerNSOutlineView(QWidget* parent)
    : QTreeView(parent), delegate_(model_, pointer_, this) {
  setObjectName(QStringLiteral("layers"));
  setAccessibleName(tr("Layers"));
  setModel(&model_);
  setItemDelegate(&delegate_);
  header()->hide();
  header()->setSectionResizeMode(LayerTreeModel::nodeColumn, QHeaderView::Stretch);
  for (int column = LayerTreeModel::visibilityColumn; column < LayerTreeModel::columnCountOfAll; ++column) {
    setColumnHidden(column, true);
  }
  setIndentation(0);
  setRootIsDecorated(false);
  setExpandsOnDoubleClick(false);
  setUniformRowHeights(true);
  setEditTriggers(NoEditTriggers);
  setSelectionMode(SingleSelection);
  setSelectionBehavior(SelectRows);
  setVerticalScrollMode(ScrollPerPixel);
  setVerticalScrollBar(new RowScrollBar([this](QPainter& painter) { paintRowsBeside(painter); }, this));
  setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  setFrameShape(NoFrame);
  setMouseTracking(true);
  setDragDropMode(DragDrop);
  setDropIndicatorShown(false);
  QPalette colors = palette();
  colors.setColor(QPalette::Base, look::color::pane);
  setPalette(colors);

  runDrag = [](QDrag& drag) { drag.exec(Qt::MoveAction); };
  coordinator_.onRename = [this](const QModelIndex& index) { beginRename(index); };
  coordinator_.onDeleteNode = [this](const QUuid& nodeID) {
    if (onDeleteNode) onDeleteNode(nodeID);
  };
  connect(&model_, &LayerTreeModel::followed, this, &LayerNSOutlineView::follow);
  connect(selectionModel(), &QItemSelectionModel::selectionChanged, this,
          &LayerNSOutlineView::selectionChosen);
  connect(this, &QTreeView::expanded, this,
          [this](const QModelIndex& index) { expansionChosen(index, true); });
  connect(this, &QTreeView::collapsed, this,
          [this](const QModelIndex& index) { expansionChosen(index, false); });
}

LayerNSOutlineView::~LayerNSOutlineView() = default;

void LayerNSOutlineView::setDocument(const DocumentPtr& document) {
  if (document != nullptr && document == model_.document()) return;
  keepTypedName();
  coordinator_.endSweep();
  setPointer({}, LayerRowPart::none, false);
  model_.setDocument(document);
  showAllExpansions();
  showSelection();
}

void LayerNSOutlineView::setThumbnailSize(int viewPoints) {
  delegate_.setThumbnailSize(viewPoints);
  doItemsLayout();
}

// The document's state.

void LayerNSOutlineView::follow(const DocumentChanges& changes) {
  bool isSelectionConcerned = contains<change::ActiveNodeChanged>(changes);
  for (const DocumentChange& change : changes) {
    if (const auto* inserted = std::get_if<change::NodeInserted>(&change)) {
      showExpansion(model_.indexOf(inserted->nodeID));
      isSelectionConcerned = true;
    } else if (const auto* changed = std::get_if<change::NodePropertyChanged>(&change)) {
      if (changed->property == NodeProperty::isExpanded) showExpansion(model_.indexOf(changed->nodeID));
    } else if (std::holds_alternative<change::NodeRemoved>(change) ||
               std::holds_alternative<change::NodeMoved>(change)) {
      isSelectionConcerned = true;
    }
  }
  if (isSelectionConcerned) showSelection();
}

void LayerNSOutlineView::showSelection() {
  const QScopedValueRollback showing(isShowing_, true);
  const DocumentPtr document = model_.document();
  const std::optional<QUuid> id = document != nullptr ? document->selectedNodeID.value() : std::nullopt;
  const QModelIndex index = id ? model_.indexOf(*id) : QModelIndex();
  if (!index.isValid()) return selectionModel()->clear();
  if (index == currentIndex() && selectionModel()->isSelected(index)) return;
  selectionModel()->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
  scrollTo(index);
}

void LayerNSOutlineView::showExpansion(const QModelIndex& folder) {
  const QScopedValueRollback showing(isShowing_, true);
  const std::optional<LayerNode> node = folder.isValid() ? model_.nodeOf(folder) : std::nullopt;
  if (node && node->folder() != nullptr) QTreeView::setExpanded(folder, node->folder()->isExpanded.value());
}

void LayerNSOutlineView::showAllExpansions() {
  std::vector<QModelIndex> lists{{}};
  while (!lists.empty()) {
    const QModelIndex list = lists.back();
    lists.pop_back();
    for (int row = 0; row < model_.rowCount(list); ++row) {
      const QModelIndex index = model_.index(row, LayerTreeModel::nodeColumn, list);
      showExpansion(index);
      if (model_.rowCount(index) > 0) lists.push_back(index);
    }
  }
}

void LayerNSOutlineView::selectionChosen() {
  const DocumentPtr document = model_.document();
  const QModelIndexList rows = selectionModel()->selectedRows();
  if (document == nullptr || rows.isEmpty() || isShowing_ || model_.isFollowing()) return;
  document->selectNode(model_.idOf(rows.front()));
}

void LayerNSOutlineView::expansionChosen(const QModelIndex& index, bool isExpanded) {
  if (!isShowing_ && !model_.isFollowing()) coordinator_.setExpanded(index, isExpanded);
}

// Rows.

QRect LayerNSOutlineView::visualRect(const QModelIndex& index) const {
  switch (index.column()) {
    case LayerTreeModel::visibilityColumn:
      return rectOf(index, LayerRowPart::visibility);
    case LayerTreeModel::linkColumn:
      return rectOf(index, LayerRowPart::chain);
    case LayerTreeModel::lockColumn:
      return rectOf(index, LayerRowPart::lock);
    default:
      return QTreeView::visualRect(index);
  }
}

QRect LayerNSOutlineView::rectOf(const QModelIndex& index, LayerRowPart part) const {
  const QModelIndex row = index.siblingAtColumn(LayerTreeModel::nodeColumn);
  const QRect place = QTreeView::visualRect(row);
  if (place.isEmpty()) return {};
  const std::optional<LayerRowLayout> layout = delegate_.layoutOf(row, place);
  return layout ? layout->rectOf(part) : QRect();
}

LayerRowPart LayerNSOutlineView::partAt(const QPoint& point) const {
  const QModelIndex index = indexAt(point);
  if (!index.isValid()) return LayerRowPart::none;
  const std::optional<LayerRowLayout> layout = delegate_.layoutOf(index, QTreeView::visualRect(index));
  return layout ? layout->partAt(point) : LayerRowPart::none;
}

void LayerNSOutlineView::scrollTo(const QModelIndex& index, ScrollHint hint) {
  for (QModelIndex folder = index.parent(); folder.isValid(); folder = folder.parent()) {
    if (!isExpanded(folder)) return;
  }
  QTreeView::scrollTo(index, hint);
}

QItemSelectionModel::SelectionFlags LayerNSOutlineView::selectionCommand(const QModelIndex& index,
                                                                         const QEvent* event) const {
  // There is always at most one row, and no way to have none by clicking.
  const bool isDrag = event != nullptr && event->type() == QEvent::MouseMove;
  if (!index.isValid() || isDrag) return QItemSelectionModel::NoUpdate;
  return QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows;
}

void LayerNSOutlineView::drawRow(QPainter* painter, const QStyleOptionViewItem& option,
                                 const QModelIndex& index) const {
  const QModelIndex node = index.siblingAtColumn(LayerTreeModel::nodeColumn);
  QStyleOptionViewItem row = option;
  row.rect = QTreeView::visualRect(node);
  row.state.setFlag(QStyle::State_Selected, selectionModel()->isSelected(node));
  row.state.setFlag(QStyle::State_MouseOver, pointer_.row == node);
  const bool showsKeyboard = isUsedByKeys_ && hasFocus() && !isEditing();
  const QModelIndex ringed = menuRow_.isValid() ? QModelIndex(menuRow_) : currentIndex();
  row.state.setFlag(QStyle::State_HasFocus, (menuRow_.isValid() || showsKeyboard) && ringed == node);
  delegate_.paint(painter, row, node);
}

void LayerNSOutlineView::paintRowsBeside(QPainter& painter) const {
  const int width = verticalScrollBar()->width();
  for (QModelIndex index = indexAt({0, 0}); index.isValid(); index = indexBelow(index)) {
    const QRect row = QTreeView::visualRect(index);
    if (row.top() > viewport()->height()) return;
    QStyle::State state;
    state.setFlag(QStyle::State_Selected, selectionModel()->isSelected(index));
    state.setFlag(QStyle::State_MouseOver, pointer_.row == index);
    paintRowBackground(painter, {0, row.top(), width, row.height()}, state);
  }
}

void LayerNSOutlineView::paintEvent(QPaintEvent* event) {
  // The rows go on below the scroll bar.
  verticalScrollBar()->update();

  QTreeView::paintEvent(event);
  if (!dropMark_) return;
  QPainter painter(viewport());
  painter.setRenderHint(QPainter::Antialiasing);
  if (dropMark_->height() > look::size::focusRing) return paintRowFocus(painter, *dropMark_);
  painter.fillRect(*dropMark_, look::color::accent);
}

// Renaming.

/// A name that is being typed is meant for the document that is shown.
void LayerNSOutlineView::keepTypedName() {
  QWidget* field = isEditing() ? indexWidget(currentIndex()) : nullptr;
  if (field == nullptr) return;
  commitData(field);
  closeEditor(field, QAbstractItemDelegate::NoHint);
}

void LayerNSOutlineView::beginRename(const QModelIndex& index) {
  const DocumentPtr document = model_.document();
  if (document == nullptr || !index.isValid()) return;
  const QPersistentModelIndex row = index.siblingAtColumn(LayerTreeModel::nodeColumn);
  document->selectNode(model_.idOf(row));
  // A row in a closed folder has no place for a field.
  if (!row.isValid() || QTreeView::visualRect(row).isEmpty()) return;
  edit(row);
  if (auto* field = qobject_cast<QLineEdit*>(indexWidget(row))) {
    // All of the name, with its beginning in sight.
    const int length = static_cast<int>(field->text().size());
    field->setSelection(length, -length);
  }
}

void LayerNSOutlineView::closeEditor(QWidget* editor, QAbstractItemDelegate::EndEditHint hint) {
  // Nobody has the keyboard after it has been taken from the field.
  const QWidget* focus = window()->focusWidget();
  const bool hadFocus = editor != nullptr && (focus == editor || focus == nullptr);
  QTreeView::closeEditor(editor, hint);
  // The next name may have its field already.
  if (!hadFocus || isEditing()) return;
  // Who works with keys stays in the list; a double click has only borrowed the canvas's keyboard.
  if (isUsedByKeys_) return setFocus();
  NotificationCenter::standard().post(notification::focusCanvas);
}

// The pointer.

void LayerNSOutlineView::mousePressEvent(QMouseEvent* event) {
  isDraggable_ = false;
  if (std::exchange(isUsedByKeys_, false)) update(currentIndex());
  const QPoint point = event->position().toPoint();
  const QModelIndex index = indexAt(point);
  const LayerRowPart part = partAt(point);
  // The other buttons choose no row: a menu is about the row under the pointer, whichever is active.
  if (event->button() != Qt::LeftButton) return;
  if (index.isValid()) {
    if (pressButton(index, part)) return;
    const bool isUsed = coordinator_.clickThumbnail(index, part, event->modifiers());
    // Loading the selection is no way to begin a drag.
    if (isUsed && event->modifiers() != Qt::NoModifier) return setCurrentIndex(index);
  }
  isDraggable_ = true;
  QTreeView::mousePressEvent(event);
}

bool LayerNSOutlineView::pressButton(const QModelIndex& index, LayerRowPart part) {
  if (!isButton(part)) return false;
  // A name that is being edited is kept, as by any other click.
  if (isEditing()) setFocus();
  setPointer(index, part, true);
  if (part == LayerRowPart::visibility) {
    lastSwept_ = index;
    coordinator_.beginSweep(index);
  }
  return true;
}

void LayerNSOutlineView::mouseMoveEvent(QMouseEvent* event) {
  const QPoint point = event->position().toPoint();
  // The release may have gone to a message that the press brought up.
  if (pointer_.isPressed && !event->buttons().testFlag(Qt::LeftButton)) endPress(point);
  if (coordinator_.isSweeping()) return sweepTo(point);
  if (pointer_.isPressed) return;
  setPointer(indexAt(point), partAt(point), false);
  // The toolkit would drag the row that was pressed last, with whichever button is held now.
  const bool isDrag = event->buttons() == Qt::LeftButton && isDraggable_;
  if (isDrag || event->buttons() == Qt::NoButton) QTreeView::mouseMoveEvent(event);
}

void LayerNSOutlineView::mouseReleaseEvent(QMouseEvent* event) {
  const QPoint point = event->position().toPoint();
  if (!pointer_.isPressed || event->button() != Qt::LeftButton) return QTreeView::mouseReleaseEvent(event);
  const bool isOnButton = indexAt(point) == pointer_.row && partAt(point) == pointer_.part;
  if (!coordinator_.isSweeping() && isOnButton) coordinator_.pushButton(pointer_.row, pointer_.part);
  endPress(point);
}

void LayerNSOutlineView::endPress(const QPoint& point) {
  coordinator_.endSweep();
  setPointer(indexAt(point), partAt(point), false);
}

void LayerNSOutlineView::mouseDoubleClickEvent(QMouseEvent* event) {
  const QPoint point = event->position().toPoint();
  const QModelIndex index = indexAt(point);
  const LayerRowPart part = partAt(point);
  if (event->button() != Qt::LeftButton || !index.isValid()) return;
  // Two quick clicks on a button are two clicks.
  if (pressButton(index, part)) return;
  if (isThumbnail(part) && coordinator_.clickThumbnail(index, part, event->modifiers())) return;
  beginRename(index);
}

void LayerNSOutlineView::sweepTo(const QPoint& point) {
  // The pointer may leave the eyes sideways, and skip rows when it is fast.
  const QModelIndex index = indexAt({viewport()->width() / 2, point.y()});
  if (!index.isValid()) return;
  // A row that has gone leaves the sweep to go on where the pointer is.
  if (!lastSwept_.isValid()) coordinator_.sweepOver(index);
  QModelIndex row = lastSwept_.isValid() ? QModelIndex(lastSwept_) : index;
  const bool isDown = QTreeView::visualRect(index).top() > QTreeView::visualRect(row).top();
  while (row.isValid() && row != index) {
    row = isDown ? indexBelow(row) : indexAbove(row);
    coordinator_.sweepOver(row);
  }
  lastSwept_ = index;
  setPointer(index, LayerRowPart::visibility, true);
}

void LayerNSOutlineView::setPointer(const QModelIndex& row, LayerRowPart part, bool isPressed) {
  const QModelIndex before = pointer_.row;
  const bool isSame = before == row && pointer_.part == part && pointer_.isPressed == isPressed;
  if (isSame) return;
  pointer_ = {row, part, isPressed};
  if (before.isValid()) update(before);
  if (row.isValid() && row != before) update(row);
}

bool LayerNSOutlineView::viewportEvent(QEvent* event) {
  if (event->type() == QEvent::Leave && !pointer_.isPressed) setPointer({}, LayerRowPart::none, false);
  if (event->type() == QEvent::ToolTip) {
    const auto* help = static_cast<QHelpEvent*>(event);
    return showHelp(help->pos(), help->globalPos());
  }
  return QTreeView::viewportEvent(event);
}

bool LayerNSOutlineView::showHelp(const QPoint& point, const QPoint& globalPoint) {
  const QModelIndex index = indexAt(point);
  const LayerRowPart part = partAt(point);
  const QString text = part == LayerRowPart::name ? delegate_.cutOffName(index, QTreeView::visualRect(index))
                                                  : coordinator_.help(index, part);
  // Tooltips interpret markup, and names may contain anything.
  const QString shown = text.toHtmlEscaped().replace(QChar::LineFeed, QStringLiteral("<br>"));
  QToolTip::showText(globalPoint, text.isEmpty() ? QString() : QStringLiteral("<span>%1</span>").arg(shown),
                     viewport(), rectOf(index, part));
  return true;
}

void LayerNSOutlineView::contextMenuEvent(QContextMenuEvent* event) {
  const bool isByKey = event->reason() == QContextMenuEvent::Keyboard;
  const QModelIndex index = isByKey ? currentIndex() : indexAt(event->pos());
  // A row in a closed folder isn't there to be meant.
  if (isByKey && QTreeView::visualRect(index).isEmpty()) return;
  auto* menu = new QMenu(this);  // deletes itself
  menu->setAttribute(Qt::WA_DeleteOnClose);
  fillContextMenu(*menu, index, isByKey ? LayerRowPart::name : partAt(event->pos()));
  if (menu->isEmpty()) return menu->deleteLater();
  markMenuRow(index);
  connect(menu, &QMenu::aboutToHide, this, [this] { markMenuRow({}); });
  menu->popup(isByKey ? viewport()->mapToGlobal(rectOf(index, LayerRowPart::name).center())
                      : event->globalPos());
}

void LayerNSOutlineView::markMenuRow(const QModelIndex& row) {
  const QModelIndex before = menuRow_;
  menuRow_ = row;
  for (const QModelIndex& changed : {before, row, currentIndex()}) update(changed);
}

void LayerNSOutlineView::fillContextMenu(QMenu& menu, const QModelIndex& index, LayerRowPart part) const {
  coordinator_.fillContextMenu(menu, index, part);
}

// Keys.

void LayerNSOutlineView::focusInEvent(QFocusEvent* event) {
  const Qt::FocusReason reason = event->reason();
  if (reason == Qt::TabFocusReason || reason == Qt::BacktabFocusReason) isUsedByKeys_ = true;
  QTreeView::focusInEvent(event);
}

void LayerNSOutlineView::keyPressEvent(QKeyEvent* event) {
  // Keys that the field of a name leaves come here as well.
  if (isEditing()) return QTreeView::keyPressEvent(event);
  const QModelIndex current = currentIndex();
  isUsedByKeys_ = true;
  update(current);
  const Qt::KeyboardModifiers modifiers = event->modifiers() & ~Qt::KeypadModifier;
  if (!current.isValid()) return QTreeView::keyPressEvent(event);
  if (event->key() == Qt::Key_Space && modifiers == Qt::ShiftModifier) {
    return coordinator_.pushButton(current, LayerRowPart::lock);
  }
  if (event->key() == Qt::Key_Space && modifiers == (Qt::ControlModifier | Qt::ShiftModifier)) {
    return coordinator_.pushButton(current, LayerRowPart::chain);
  }
  if (modifiers != Qt::NoModifier) return QTreeView::keyPressEvent(event);
  switch (event->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_F2:
      return beginRename(current);
    case Qt::Key_Space:
      return coordinator_.toggleVisibility(current);
    case Qt::Key_Left:
    case Qt::Key_Right:
      if (walkLevels(event->key(), current)) return;
      break;
    default:
      break;
  }
  QTreeView::keyPressEvent(event);
}

bool LayerNSOutlineView::walkLevels(int key, const QModelIndex& current) {
  const bool isFolder = model_.layerOf(current) == nullptr;
  if (key == Qt::Key_Left) {
    if (isFolder && isExpanded(current)) {
      coordinator_.setExpanded(current, false);
    } else if (current.parent().isValid()) {
      setCurrentIndex(current.parent());
    }
    return true;
  }
  if (isFolder && !isExpanded(current)) {
    coordinator_.setExpanded(current, true);
  } else if (isFolder && model_.rowCount(current) > 0) {
    setCurrentIndex(model_.index(0, LayerTreeModel::nodeColumn, current));
  }
  return true;
}

}  // namespace orvanel
