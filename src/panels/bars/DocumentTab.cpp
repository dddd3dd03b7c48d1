#include "panels/bars/DocumentTab.h"

#include <QContextMenuEvent>
#include <QDesktopServices>
#include <QFileInfo>
#include <QMenu>
#include <QMouseEvent>
#include <QPainter>
#include <QUrl>

#include "look/Look.h"
#include "model/DisplayText.h"
#include "panels/controls/SymbolButton.h"

namespace orvanel {

namespace {

constexpr int sidePadding = look::space::normal;
constexpr int gap = look::space::tight;
constexpr int closeBoxEdge = 18;

}  // namespace

DocumentTab::DocumentTab(const DocumentPtr& shownDocument, QWidget* parent)
    : QAbstractButton(parent), document(shownDocument), documentID(shownDocument->id) {
  setFont(look::font(look::type::small));
  setCheckable(true);
  setFocusPolicy(Qt::NoFocus);
  setAttribute(Qt::WA_Hover);
  closeButton_ = new SymbolButton(QStringLiteral("xmark"), closeButtonSize, this);
  closeButton_->setToolTip(tr("Close this document"));
  closeButton_->hide();

  connect(this, &QAbstractButton::clicked, this, [this] {
    if (onSelect) onSelect();
  });
  connect(closeButton_, &QAbstractButton::clicked, this, [this] {
    if (onClose) onClose();
  });
  changes_ = shownDocument->changes().observe([this](const DocumentChanges& changes) {
    if (contains<change::FileStateChanged>(changes) || contains<change::OpenEditChanged>(changes)) {
      documentChanged();
    }
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
  const QString path = sourcePath();
  const QString place = path.isEmpty() ? name : path;
  setToolTip(QStringLiteral("<span>%1</span>").arg(place.toHtmlEscaped()));
  setAccessibleDescription(place);
  setAccessibleName(showsDirtyDot() ? tr("%1, unsaved changes").arg(name) : name);
  closeButton_->setAccessibleName(tr("Close %1").arg(name));
  if (onWidthChanged) onWidthChanged();
  update();
}

bool DocumentTab::showsDirtyDot() const {
  const DocumentPtr shown = document.lock();
  return shown != nullptr && (shown->isDirty.value() || shown->hasOpenUnsavedChange());
}

QString DocumentTab::shownName() const {
  const DocumentPtr shown = document.lock();
  return shown != nullptr ? displayText(shown->name.value()) : QString();
}

QString DocumentTab::sourcePath() const {
  const DocumentPtr shown = document.lock();
  return shown != nullptr ? shown->sourceFileURL.value().value_or(QString()) : QString();
}

std::vector<DocumentTab::ContextItem> DocumentTab::contextItems() const {
  std::vector<ContextItem> items;
  items.push_back({tr("Close"), onClose});
  if (hasOtherDocuments_) items.push_back({tr("Close Others"), onCloseOthers});
  items.push_back({tr("Close All"), onCloseAll});
  const QString path = sourcePath();
  const auto openFolder = [path] {
    QDesktopServices::openUrl(QUrl::fromLocalFile(QFileInfo(path).absolutePath()));
  };
  items.push_back({tr("Open Containing Folder"), openFolder, !path.isEmpty(), true});
  return items;
}

void DocumentTab::openMenu(const QPoint& globalPoint) {
  // What is chosen may close this tab.
  auto* menu = new QMenu(window());
  menu->setAttribute(Qt::WA_DeleteOnClose);
  for (const ContextItem& item : contextItems()) {
    if (item.followsSeparator) menu->addSeparator();
    QAction* entry = menu->addAction(item.title);
    entry->setEnabled(item.isEnabled);
    connect(entry, &QAction::triggered, menu, [action = item.action] {
      if (action) action();
    });
  }
  menu->popup(globalPoint);
}

void DocumentTab::contextMenuEvent(QContextMenuEvent* event) {
  openMenu(event->globalPos());
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
  return {qBound(narrowest, name + around, widest), look::size::bar};
}

bool DocumentTab::event(QEvent* event) {
  if (event->type() == QEvent::Enter) setHovering(true);
  if (event->type() == QEvent::Leave) setHovering(false);
  return QAbstractButton::event(event);
}

void DocumentTab::setHovering(bool hovering) {
  if (hovering == isHovering_) return;
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
