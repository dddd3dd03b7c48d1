// Dragging rows of the layer panel and dropping them between others or on folders.
#include <QDragMoveEvent>
#include <QPainter>

#include "look/Look.h"
#include "panels/layers/LayerNSOutlineView.h"

namespace orvanel {

void LayerNSOutlineView::startDrag(Qt::DropActions /*supportedActions*/) {
  const QModelIndex row = currentIndex();
  if (!row.isValid()) return;
  auto* drag = new QDrag(this);  // owned by the toolkit
  drag->setMimeData(model_.mimeData({row}));
  drag->setPixmap(pictureOf(row));
  drag->setHotSpot(viewport()->mapFromGlobal(QCursor::pos()) - QTreeView::visualRect(row).topLeft());
  setState(DraggingState);
  runDrag(*drag);
  endDropping();
}

QPixmap LayerNSOutlineView::pictureOf(const QModelIndex& row) const {
  QStyleOptionViewItem option;
  initViewItemOption(&option);
  option.rect = QRect({}, QTreeView::visualRect(row).size());
  option.state.setFlag(QStyle::State_MouseOver);
  option.state.setFlag(QStyle::State_HasFocus, false);
  QPixmap picture(option.rect.size() * devicePixelRatioF());
  picture.setDevicePixelRatio(devicePixelRatioF());
  picture.fill(Qt::transparent);
  QPainter painter(&picture);
  delegate_.paint(&painter, option, row);
  painter.setCompositionMode(QPainter::CompositionMode_DestinationIn);
  painter.fillRect(option.rect, look::color::draggedRow);
  return picture;
}

void LayerNSOutlineView::dragEnterEvent(QDragEnterEvent* event) {
  if (!model_.draggedNode(*event->mimeData())) return event->ignore();
  setState(DraggingState);
  event->setDropAction(Qt::MoveAction);
  event->accept();
}

void LayerNSOutlineView::dragMoveEvent(QDragMoveEvent* event) {
  // Scrolls when the pointer comes near the edges.
  QTreeView::dragMoveEvent(event);
  const std::optional<DropPlace> place = dropPlaceAt(event->position().toPoint(), *event->mimeData());
  showDrop(place);
  event->setDropAction(Qt::MoveAction);
  event->setAccepted(place.has_value());
}

void LayerNSOutlineView::dragLeaveEvent(QDragLeaveEvent* event) {
  QTreeView::dragLeaveEvent(event);
  endDropping();
}

void LayerNSOutlineView::dropEvent(QDropEvent* event) {
  const std::optional<DropPlace> place = dropPlaceAt(event->position().toPoint(), *event->mimeData());
  endDropping();
  event->setDropAction(Qt::MoveAction);
  event->setAccepted(place && model_.acceptDrop(*event->mimeData(), place->item, place->childIndex));
}

void LayerNSOutlineView::endDropping() {
  showDrop(std::nullopt);
  stopAutoScroll();
  if (state() == DraggingState) setState(NoState);
}

// Where a drop goes.

std::optional<LayerNSOutlineView::DropPlace> LayerNSOutlineView::dropPlaceAt(const QPoint& point,
                                                                             const QMimeData& dragged) const {
  const std::optional<QUuid> node = model_.draggedNode(dragged);
  if (!node) return std::nullopt;
  const QModelIndex source = model_.indexOf(*node);
  const QModelIndex row = indexAt(point);
  const QRect rect = QTreeView::visualRect(row);
  const int quarters = row.isValid() ? 4 * (point.y() - rect.top()) / rect.height() : 0;

  DropPlace place;
  if (!row.isValid()) {
    // Below the last row.
    const QModelIndex last = model_.index(model_.rowCount() - 1, LayerTreeModel::nodeColumn);
    QModelIndex lowest = last;
    while (isExpanded(lowest) && model_.rowCount(lowest) > 0) {
      lowest = model_.index(model_.rowCount(lowest) - 1, LayerTreeModel::nodeColumn, lowest);
    }
    const QRect lowestRect = QTreeView::visualRect(lowest);
    place = placeBetween({}, model_.rowCount(), lowestRect.top() + lowestRect.height(), source);
  } else if (model_.layerOf(row) != nullptr) {
    place = quarters < 2 ? placeBetween(row.parent(), row.row(), rect.top(), source)
                         : placeBelow(row, point, source);
  } else if (quarters == 0) {
    place = placeBetween(row.parent(), row.row(), rect.top(), source);
  } else if (quarters < 3) {
    place = {.item = row, .childIndex = -1, .mark = rect};
  } else if (isExpanded(row) && model_.rowCount(row) > 0) {
    place = placeBetween(row, 0, rect.top() + rect.height(), source);
  } else {
    place = placeBelow(row, point, source);
  }
  return model_.validateDrop(dragged, place.item, place.childIndex) ? std::optional(place) : std::nullopt;
}

LayerNSOutlineView::DropPlace LayerNSOutlineView::placeBetween(const QModelIndex& item, int gap, int y,
                                                               const QModelIndex& dragged) const {
  // A row that leaves the same list from above moves the gap up by one.
  const bool leavesFromAbove = dragged.parent() == item && dragged.row() < gap;
  const int depth = item.isValid() ? LayerTreeModel::depthOf(item) + 1 : 0;
  const int left = LayerRowLayout::contentLeft(depth);
  constexpr int thickness = look::size::focusRing;
  // The first gap lies wholly in sight.
  const int top = std::max(y - thickness / 2, 0);
  return {.item = item,
          .childIndex = leavesFromAbove ? gap - 1 : gap,
          .mark = QRect(left, top, viewport()->width() - left, thickness)};
}

LayerNSOutlineView::DropPlace LayerNSOutlineView::placeBelow(QModelIndex row, const QPoint& point,
                                                             const QModelIndex& dragged) const {
  const QRect rect = QTreeView::visualRect(row);
  // Below the last row of a folder, further to the left means further out.
  const auto isLast = [this](const QModelIndex& index) {
    return index.row() == model_.rowCount(index.parent()) - 1;
  };
  while (isLast(row) && row.parent().isValid() &&
         point.x() < LayerRowLayout::contentLeft(LayerTreeModel::depthOf(row))) {
    row = row.parent();
  }
  return placeBetween(row.parent(), row.row() + 1, rect.top() + rect.height(), dragged);
}

void LayerNSOutlineView::showDrop(const std::optional<DropPlace>& place) {
  const std::optional<QRect> mark = place ? std::optional(place->mark) : std::nullopt;
  if (mark != dropMark_) {
    for (const std::optional<QRect>& changed : {std::exchange(dropMark_, mark), mark}) {
      if (changed) viewport()->update(*changed);
    }
  }
  const bool isOnClosedFolder = place && place->childIndex < 0 && !isExpanded(place->item);
  const QModelIndex folder = isOnClosedFolder ? place->item : QModelIndex();
  if (folder == springFolder_) return;
  springFolder_ = folder;
  springTimer_.stop();
  if (folder.isValid()) springTimer_.start(static_cast<int>(springDelay.count()), this);
}

void LayerNSOutlineView::timerEvent(QTimerEvent* event) {
  if (event->timerId() != springTimer_.timerId()) return QTreeView::timerEvent(event);
  springTimer_.stop();
  if (springFolder_.isValid()) coordinator_.setExpanded(springFolder_, true);
}

}  // namespace orvanel
