#include "panels/channels/ChannelListView.h"

#include <QHelpEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>
#include <QStyledItemDelegate>
#include <QToolTip>
#include <algorithm>
#include <utility>

#include "look/Look.h"
#include "panels/controls/RowPainting.h"

namespace orvanel {

namespace {

constexpr int eyeLeft = look::space::tight;
constexpr int thumbnailLeft = eyeLeft + look::size::control + look::space::tight;

QRect centeredIn(const QRect& row, int left, int edge) {
  return {row.left() + left, row.top() + (row.height() - edge) / 2, edge, edge};
}

}  // namespace

class ChannelListView::RowDelegate : public QStyledItemDelegate {
 public:
  explicit RowDelegate(ChannelListView& list) : QStyledItemDelegate(&list), list_(list) {}

  void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override {
    list_.paintRow(*painter, option, index.row());
  }
  [[nodiscard]] QSize sizeHint(const QStyleOptionViewItem& /*option*/,
                               const QModelIndex& /*index*/) const override {
    return {0, list_.rowHeight()};
  }

 private:
  ChannelListView& list_;
};

ChannelListView::ChannelListView(QWidget* parent) : QListView(parent) {
  setObjectName(QStringLiteral("channels"));
  setAccessibleName(tr("Channels"));
  verticalScrollBar()->setAccessibleName(accessibleName());
  setModel(&model_);
  // Other rows, or those of another document: what the pointer was on has gone.
  connect(&model_, &QAbstractItemModel::modelReset, this, [this] {
    endSweep();
    setHoveredRow(-1, false);
  });
  setItemDelegate(new RowDelegate(*this));
  setSelectionMode(NoSelection);
  setEditTriggers(NoEditTriggers);
  setUniformItemSizes(true);
  setVerticalScrollMode(ScrollPerPixel);
  setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  setFrameShape(NoFrame);
  setMouseTracking(true);
  QPalette colors = palette();
  colors.setColor(QPalette::Base, look::color::pane);
  setPalette(colors);
}

void ChannelListView::setDocument(const DocumentPtr& document) {
  model_.setDocument(document);
}

void ChannelListView::setThumbnailSize(int viewPoints) {
  thumbnailSize_ = viewPoints;
  doItemsLayout();
}

// Places.

int ChannelListView::rowHeight() const {
  return std::max(thumbnailSize_, look::size::control) + 2 * look::space::tight;
}

QRect ChannelListView::eyeOf(int row) const {
  return centeredIn(visualRect(model_.index(row)), eyeLeft, look::size::control);
}

QRect ChannelListView::thumbnailOf(int row) const {
  return centeredIn(visualRect(model_.index(row)), thumbnailLeft, thumbnailSize_);
}

bool ChannelListView::isOnThumbnail(int row, const QPoint& point) const {
  return model_.thumbnailOf(row) != nullptr && thumbnailOf(row).contains(point);
}

// Drawing.

void ChannelListView::paintRow(QPainter& painter, const QStyleOptionViewItem& option, int row) {
  QStyle::State state = QStyle::State_None;
  state.setFlag(QStyle::State_MouseOver, row == hoveredRow_);
  painter.save();
  painter.setRenderHint(QPainter::Antialiasing);
  paintRowBackground(painter, option.rect, state);

  painter.setOpacity(model_.isVisible(row) ? 1.0 : hiddenEyeOpacity);
  RowButtonState eye = RowButtonState::plain;
  if (row == hoveredRow_ && isOnEye_) eye = sweep_ ? RowButtonState::pressed : RowButtonState::hovered;
  paintRowButton(painter, eyeOf(row), QStringLiteral("pixel/eye"), look::color::symbol, eye);
  painter.setOpacity(1.0);
  const QRect box = thumbnailOf(row);
  if (const Thumbnail picture = model_.thumbnailOf(row)) {
    thumbnails_.paint(painter, picture, ThumbnailPainter::fitted(picture, box));
  }
  QRect name = option.rect;
  name.setLeft(box.left() + box.width() + look::space::normal);
  painter.setFont(look::font());
  painter.setPen(model_.isVisible(row) ? look::color::text : look::color::secondaryText);
  painter.drawText(name, Qt::AlignVCenter | Qt::AlignLeft | Qt::TextSingleLine,
                   model_.index(row).data().toString());
  if (isUsedByKeys_ && hasFocus() && currentIndex().row() == row) paintRowFocus(painter, option.rect);
  painter.restore();
}

// The pointer.

void ChannelListView::mousePressEvent(QMouseEvent* event) {
  if (std::exchange(isUsedByKeys_, false)) update(currentIndex());
  const QPoint point = event->position().toPoint();
  const QModelIndex index = indexAt(point);
  if (event->button() != Qt::LeftButton || !index.isValid()) return;
  const int row = index.row();
  setCurrentIndex(index);
  if (eyeOf(row).contains(point)) {
    sweep_ = Sweep{.isVisible = model_.toggled(row), .lastRow = row};
    sweepOver(row);
  } else if (isOnThumbnail(row, point) && event->modifiers().testFlag(Qt::ControlModifier)) {
    model_.loadAsSelection(row);
  } else {
    model_.showAlone(row);
  }
}

void ChannelListView::mouseMoveEvent(QMouseEvent* event) {
  const QPoint point = event->position().toPoint();
  // The release may have gone elsewhere.
  if (sweep_ && !event->buttons().testFlag(Qt::LeftButton)) endSweep();
  if (sweep_) return sweepTo(point);
  const int row = indexAt(point).row();
  setHoveredRow(row, row >= 0 && eyeOf(row).contains(point));
}

void ChannelListView::mouseReleaseEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton) return;
  endSweep();
  mouseMoveEvent(event);
}

void ChannelListView::endSweep() {
  sweep_.reset();
  viewport()->update();
}

void ChannelListView::sweepTo(const QPoint& point) {
  // The pointer may leave the eyes sideways, and skip rows when it is fast.
  const QModelIndex index = indexAt({viewport()->width() / 2, point.y()});
  if (!index.isValid()) return;
  const int step = index.row() > sweep_->lastRow ? 1 : -1;
  while (sweep_->lastRow != index.row()) sweepOver(sweep_->lastRow += step);
}

void ChannelListView::sweepOver(int row) {
  setHoveredRow(row, true);
  if (sweep_->swept.insert(row).second) model_.setVisible(row, sweep_->isVisible);
}

void ChannelListView::setHoveredRow(int row, bool isOnEye) {
  if (row == hoveredRow_ && isOnEye == isOnEye_) return;
  for (const int changed : {std::exchange(hoveredRow_, row), row}) update(model_.index(changed));
  isOnEye_ = isOnEye;
}

bool ChannelListView::viewportEvent(QEvent* event) {
  if (event->type() == QEvent::Leave && !sweep_) setHoveredRow(-1, false);
  if (event->type() == QEvent::ToolTip) {
    const auto* help = static_cast<QHelpEvent*>(event);
    return showHelp(help->pos(), help->globalPos());
  }
  return QListView::viewportEvent(event);
}

bool ChannelListView::showHelp(const QPoint& point, const QPoint& globalPoint) {
  const int row = indexAt(point).row();
  QString text;
  if (row < 0) {
    text.clear();
  } else if (eyeOf(row).contains(point)) {
    text = model_.isVisible(row) ? tr("Hide (Space)\nDrag to hide several.")
                                 : tr("Show (Space)\nDrag to show several.");
  } else if (isOnThumbnail(row, point)) {
    text = tr("Ctrl-click to load the channel as the selection (Ctrl+Return).");
  } else {
    text = tr("Click to show this channel alone (Return).");
  }
  QToolTip::showText(globalPoint, text, viewport());
  return true;
}

// Keys.

void ChannelListView::focusInEvent(QFocusEvent* event) {
  const Qt::FocusReason reason = event->reason();
  if (reason == Qt::TabFocusReason || reason == Qt::BacktabFocusReason) isUsedByKeys_ = true;
  QListView::focusInEvent(event);
}

void ChannelListView::keyPressEvent(QKeyEvent* event) {
  isUsedByKeys_ = true;
  update(currentIndex());
  const int row = currentIndex().row();
  const Qt::KeyboardModifiers modifiers = event->modifiers() & ~Qt::KeypadModifier;
  const bool isReturn = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
  if (row >= 0 && event->key() == Qt::Key_Space && modifiers == Qt::NoModifier) {
    model_.toggleVisibility(row);
  } else if (row >= 0 && isReturn && modifiers == Qt::NoModifier) {
    model_.showAlone(row);
  } else if (row >= 0 && isReturn && modifiers == Qt::ControlModifier) {
    model_.loadAsSelection(row);
  } else {
    QListView::keyPressEvent(event);
  }
}

}  // namespace orvanel
