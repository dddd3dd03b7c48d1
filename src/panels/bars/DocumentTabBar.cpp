#include "panels/bars/DocumentTabBar.h"

#include <QPainter>
#include <QWheelEvent>
#include <algorithm>
#include <map>
#include <numeric>

#include "look/Look.h"
#include "panels/controls/SymbolButton.h"

namespace orvanel {

namespace {

constexpr int barHeight = 30;
constexpr int newTabButtonEdge = 22;
constexpr int newTabMargin = 5;
/// Tabs shrink to this width before the row starts to scroll.
constexpr int squeezedTab = 72;
constexpr double newTabSymbolSize = 10.0;

}  // namespace

DocumentTabBar::DocumentTabBar(QWidget* parent) : QWidget(parent) {
  setObjectName(QStringLiteral("tabBar"));
  setAccessibleName(QStringLiteral("Open documents"));
  setFixedHeight(barHeight);
  strip_ = new QWidget(this);
  newTabButton_ = new SymbolButton(QStringLiteral("plus"), newTabSymbolSize, this);
  newTabButton_->setAccessibleName(QStringLiteral("New document"));
  newTabButton_->setToolTip(QStringLiteral("New document"));
  connect(newTabButton_, &QAbstractButton::clicked, this, [this] {
    if (onNewDocument) onNewDocument();
  });
}

QAbstractButton* DocumentTabBar::newTabButton() const {
  return newTabButton_;
}

DocumentTab* DocumentTabBar::makeTab(const DocumentPtr& document) {
  auto* tab = new DocumentTab(document, strip_);
  const QUuid id = document->id;
  // The callbacks must not capture the tab, because it may be deleted by what they call.
  tab->onSelect = [this, id] {
    if (onSelect) onSelect(id);
  };
  tab->onClose = [this, id] {
    if (onClose) onClose(id);
  };
  tab->onCloseOthers = [this, id] {
    if (onCloseOthers) onCloseOthers(id);
  };
  tab->onCloseAll = [this] {
    if (onCloseAll) onCloseAll();
  };
  tab->onWidthChanged = [this] { layOutTabs(); };
  tab->show();
  return tab;
}

void DocumentTabBar::setDocuments(const std::vector<DocumentPtr>& documents,
                                  const std::optional<QUuid>& activeDocumentID) {
  std::map<QUuid, DocumentTab*> before;
  for (DocumentTab* tab : tabs_) before.emplace(tab->document->id, tab);
  tabs_.clear();
  for (const DocumentPtr& document : documents) {
    const auto known = before.find(document->id);
    tabs_.push_back(known != before.end() ? known->second : makeTab(document));
    if (known != before.end()) before.erase(known);
  }
  for (const auto& [id, tab] : before) {
    tab->hide();
    // The tab may still be handling the click that closed it.
    tab->deleteLater();
  }
  for (DocumentTab* tab : tabs_) {
    tab->setSelected(activeDocumentID && tab->document->id == *activeDocumentID);
    tab->setHasOtherDocuments(tabs_.size() > 1);
  }
  layOutTabs();
  revealSelectedTab();
}

int DocumentTabBar::roomForTabs() const {
  return std::max(0, width() - newTabButtonEdge - 2 * newTabMargin);
}

void DocumentTabBar::layOutTabs() {
  std::vector<int> widths;
  widths.reserve(tabs_.size());
  for (const DocumentTab* tab : tabs_) widths.push_back(tab->sizeHint().width());
  const int room = roomForTabs();
  const int wished = std::accumulate(widths.begin(), widths.end(), 0);
  if (wished > room && !widths.empty()) {
    const int fairShare = std::max(squeezedTab, room / static_cast<int>(widths.size()));
    for (int& tabWidth : widths) tabWidth = std::min(tabWidth, fairShare);
  }
  tabsWidth_ = std::accumulate(widths.begin(), widths.end(), 0);
  scrollOffset_ = std::clamp(scrollOffset_, 0, std::max(0, tabsWidth_ - room));

  const int stripWidth = std::min(tabsWidth_, room);
  strip_->setGeometry(0, 0, stripWidth, height());
  int left = -scrollOffset_;
  for (std::size_t index = 0; index < tabs_.size(); ++index) {
    tabs_[index]->setGeometry(left, 0, widths[index], height());
    left += widths[index];
  }
  newTabButton_->setGeometry(stripWidth + newTabMargin, (height() - newTabButtonEdge) / 2, newTabButtonEdge,
                             newTabButtonEdge);
  update();
}

void DocumentTabBar::revealSelectedTab() {
  const auto selected =
      std::find_if(tabs_.begin(), tabs_.end(), [](const DocumentTab* tab) { return tab->isSelected(); });
  if (selected == tabs_.end()) return;
  const QRect place = (*selected)->geometry();
  if (place.left() < 0) scrollOffset_ += place.left();
  if (place.right() >= strip_->width()) scrollOffset_ += place.right() + 1 - strip_->width();
  layOutTabs();
}

QSize DocumentTabBar::sizeHint() const {
  return {tabsWidth_ + newTabButtonEdge + 2 * newTabMargin, barHeight};
}

QSize DocumentTabBar::minimumSizeHint() const {
  return {squeezedTab + newTabButtonEdge + 2 * newTabMargin, barHeight};
}

void DocumentTabBar::resizeEvent(QResizeEvent* /*event*/) {
  layOutTabs();
  revealSelectedTab();
}

void DocumentTabBar::wheelEvent(QWheelEvent* event) {
  const QPoint pixels = event->pixelDelta().isNull() ? event->angleDelta() / 2 : event->pixelDelta();
  scrollOffset_ -= pixels.x() != 0 ? pixels.x() : pixels.y();
  layOutTabs();
  event->accept();
}

void DocumentTabBar::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  const double line = look::hairline(*this);
  painter.fillRect(rect(), look::color::bar);
  painter.fillRect(QRectF(strip_->width(), height() - line, width() - strip_->width(), line),
                   look::color::divider);
}

}  // namespace orvanel
