#include "panels/bars/LoadingTab.h"

#include <QPainter>

#include "look/Look.h"
#include "panels/bars/DocumentTab.h"
#include "panels/controls/SymbolButton.h"

namespace orvanel {

namespace {

constexpr int sidePadding = look::space::normal;
constexpr int gap = look::space::tight;
constexpr int closeBoxEdge = 18;

}  // namespace

LoadingTab::LoadingTab(QWidget* parent) : QAbstractButton(parent) {
  QFont font = look::font(look::type::small);
  font.setItalic(true);
  setFont(font);
  setCheckable(true);
  setFocusPolicy(Qt::NoFocus);
  setAttribute(Qt::WA_Hover);
  closeButton_ = new SymbolButton(QStringLiteral("xmark"), DocumentTab::closeButtonSize, this);
  closeButton_->setToolTip(tr("Cancel opening this file"));
  // Until the content names the file.
  setAccessibleName(tr("A file that is being opened"));
  closeButton_->setAccessibleName(closeButton_->toolTip());
}

void LoadingTab::setContent(const LoadingTabContent& content) {
  content_ = content;
  setChecked(content.isSelected);
  setAccessibleName(tr("%1, opening").arg(content.name));
  setAccessibleDescription(content.path);
  // Tooltips interpret markup, and names may contain anything.
  setToolTip(QStringLiteral("<span>%1</span>").arg(tr("Opening %1").arg(content.path).toHtmlEscaped()));
  closeButton_->setAccessibleName(tr("Cancel opening %1").arg(content.name));
  update();
}

QSize LoadingTab::sizeHint() const {
  const int name = fontMetrics().horizontalAdvance(content_.name);
  const int around = 2 * (sidePadding + gap) + static_cast<int>(DocumentTab::dirtyDotSize) + closeBoxEdge;
  return {qBound(DocumentTab::narrowest, name + around, DocumentTab::widest), look::size::bar};
}

void LoadingTab::resizeEvent(QResizeEvent* /*event*/) {
  closeButton_->setGeometry(width() - sidePadding + 2 - closeBoxEdge, (height() - closeBoxEdge) / 2,
                            closeBoxEdge, closeBoxEdge);
}

void LoadingTab::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  const double line = look::hairline(*this);
  if (content_.isSelected) {
    painter.fillRect(rect(), look::color::pane);
  } else if (underMouse()) {
    painter.fillRect(rect(), look::color::hover);
  }
  painter.fillRect(QRectF(width() - line, 0, line, height()), look::color::divider);
  if (!content_.isSelected) painter.fillRect(QRectF(0, height() - line, width(), line), look::color::divider);
  painter.setPen(look::color::secondaryText);
  const double nameLeft = sidePadding + DocumentTab::dirtyDotSize + gap;
  const double nameRight = width() - sidePadding - closeBoxEdge - gap + 2;
  const QRectF nameBox(nameLeft, 0, nameRight - nameLeft, height());
  const QString name =
      fontMetrics().elidedText(content_.name, Qt::ElideMiddle, static_cast<int>(nameBox.width()));
  painter.drawText(nameBox, Qt::AlignVCenter | Qt::AlignHCenter | Qt::TextSingleLine, name);
}

}  // namespace orvanel
