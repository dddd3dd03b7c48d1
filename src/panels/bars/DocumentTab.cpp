#include "panels/bars/DocumentTab.h"

#include <QContextMenuEvent>
#include <QIcon>
#include <QMenu>
#include <QMouseEvent>
#include <QPainter>

#include "look/Look.h"
#include "model/DisplayText.h"
#include "panels/controls/SymbolButton.h"

namespace orvanel {

namespace {

constexpr double fontSize = 11.0;
constexpr int sidePadding = 10;
constexpr int gap = 6;
constexpr int closeBoxEdge = 18;
constexpr int tabHeight = 30;
constexpr int narrowestTab = 96;
constexpr int widestTab = 240;

}  // namespace

DocumentTab::DocumentTab(DocumentPtr shownDocument, QWidget* parent)
    : QAbstractButton(parent), document(std::move(shownDocument)) {
  setFont(look::font(fontSize));
  setCheckable(true);
  setFocusPolicy(Qt::NoFocus);
  setAttribute(Qt::WA_Hover);
  closeButton_ = new SymbolButton(QStringLiteral("xmark"), closeButtonSize, this);
  closeButton_->setToolTip(QStringLiteral("Close"));
  closeButton_->hide();

  connect(this, &QAbstractButton::clicked, this, [this] {
    if (onSelect) onSelect();
  });
  connect(closeButton_, &QAbstractButton::clicked, this, [this] {
    if (onClose) onClose();
  });
  changes_ = document->changes().observe([this](const DocumentChanges& changes) {
    if (contains<change::FileStateChanged>(changes)) documentChanged();
  });
  documentChanged();
}

void DocumentTab::setSelected(bool selected) {
  isSelected_ = selected;
  setChecked(selected);
  update();
}

void DocumentTab::documentChanged() {
  const QString name = shownName();
  // Tooltips interpret markup, and names may contain anything.
  setToolTip(
      QStringLiteral("<span>%1</span>").arg(document->sourceFileURL.value().value_or(name).toHtmlEscaped()));
  setAccessibleName(showsDirtyDot() ? QStringLiteral("%1, unsaved changes").arg(name) : name);
  closeButton_->setAccessibleName(QStringLiteral("Close %1").arg(name));
  if (onWidthChanged) onWidthChanged();
  update();
}

QString DocumentTab::shownName() const {
  return displayText(document->name.value());
}

std::vector<std::pair<QString, std::function<void()>>> DocumentTab::contextItems() const {
  std::vector<std::pair<QString, std::function<void()>>> items;
  items.emplace_back(QStringLiteral("Close"), onClose);
  if (hasOtherDocuments_) items.emplace_back(QStringLiteral("Close Others"), onCloseOthers);
  items.emplace_back(QStringLiteral("Close All"), onCloseAll);
  return items;
}

void DocumentTab::contextMenuEvent(QContextMenuEvent* event) {
  QMenu menu(this);
  for (const auto& [title, action] : contextItems()) menu.addAction(title)->setData(title);
  const QAction* chosen = menu.exec(event->globalPos());
  if (chosen == nullptr) return;
  for (const auto& [title, action] : contextItems()) {
    if (title != chosen->data().toString() || !action) continue;
    action();
    return;
  }
}

void DocumentTab::mousePressEvent(QMouseEvent* event) {
  // Taken, so that the release comes here as well.
  if (event->button() == Qt::MiddleButton) return event->accept();
  QAbstractButton::mousePressEvent(event);
}

void DocumentTab::mouseReleaseEvent(QMouseEvent* event) {
  if (event->button() != Qt::MiddleButton) return QAbstractButton::mouseReleaseEvent(event);
  event->accept();
  if (rect().contains(event->position().toPoint()) && onClose) onClose();
}

QSize DocumentTab::sizeHint() const {
  // Space for the dot and the close button is always reserved, so that the name doesn't move.
  const int name = fontMetrics().horizontalAdvance(shownName());
  const int around = 2 * (sidePadding + gap) + static_cast<int>(dirtyDotSize) + closeBoxEdge;
  return {qBound(narrowestTab, name + around, widestTab), tabHeight};
}

bool DocumentTab::event(QEvent* event) {
  if (event->type() == QEvent::Enter) setHovering(true);
  if (event->type() == QEvent::Leave) setHovering(false);
  return QAbstractButton::event(event);
}

void DocumentTab::setHovering(bool hovering) {
  isHovering_ = hovering;
  closeButton_->setVisible(hovering);
  update();
}

void DocumentTab::resizeEvent(QResizeEvent* /*event*/) {
  closeButton_->setGeometry(width() - sidePadding + 2 - closeBoxEdge, (height() - closeBoxEdge) / 2,
                            closeBoxEdge, closeBoxEdge);
}

void DocumentTab::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  const double line = look::hairline(*this);
  if (isSelected_) {
    painter.fillRect(rect(), look::color::pane);
  } else if (isHovering_) {
    painter.fillRect(rect(), look::color::hover);
  }
  painter.fillRect(QRectF(width() - line, 0, line, height()), look::color::divider);
  if (!isSelected_) painter.fillRect(QRectF(0, height() - line, width(), line), look::color::divider);

  const QColor ink = isSelected_ ? look::color::text : look::color::secondaryText;
  const double nameLeft = sidePadding + dirtyDotSize + gap;
  const double nameRight = width() - sidePadding - closeBoxEdge - gap + 2;
  if (showsDirtyDot()) {
    painter.setPen(Qt::NoPen);
    painter.setBrush(look::color::text);
    painter.drawEllipse(QRectF(sidePadding, (height() - dirtyDotSize) / 2, dirtyDotSize, dirtyDotSize));
  }
  painter.setPen(ink);
  const QRectF nameBox(nameLeft, 0, nameRight - nameLeft, height());
  const QString name =
      fontMetrics().elidedText(shownName(), Qt::ElideMiddle, static_cast<int>(nameBox.width()));
  painter.drawText(nameBox, Qt::AlignVCenter | Qt::AlignHCenter | Qt::TextSingleLine, name);
}

}  // namespace orvanel
