#include "panels/bars/DocumentTabBar.h"

#include <QCursor>
#include <QMenu>
#include <QPainter>
#include <QWheelEvent>
#include <algorithm>
#include <map>
#include <numeric>
#include <utility>

#include "look/Look.h"
#include "panels/bars/TabAccessibility.h"
#include "panels/controls/SymbolButton.h"

namespace orvanel {

namespace {

constexpr double plusSize = 10.0;
constexpr double chevronSize = 12.0;

int sum(const std::vector<int>& widths) {
  return std::accumulate(widths.begin(), widths.end(), 0);
}

int widthOfButtons(bool overflows) {
  const int count = overflows ? 4 : 2;
  return count * look::size::control + 3 * look::space::tight;
}

}  // namespace

DocumentTabBar::DocumentTabBar(QWidget* parent) : QWidget(parent) {
  describeTabsToScreenReaders();
  setObjectName(QStringLiteral("tabBar"));
  setFixedHeight(look::size::bar);
  strip_ = new TabStrip(this);
  strip_->setAccessibleName(tr("Open documents"));
  loadingTab_ = new LoadingTab(this);
  loadingTab_->hide();
  newTabButton_ = makeButton(QStringLiteral("plus"), plusSize, tr("New document"));
  newTabButton_->setToolTip(tr("New document with the size and color mode of the active one"));
  scrollBackButton_ = makeButton(QStringLiteral("chevron.left"), chevronSize, tr("Scroll tabs left"));
  scrollForwardButton_ = makeButton(QStringLiteral("chevron.right"), chevronSize, tr("Scroll tabs right"));
  listButton_ = makeButton(QStringLiteral("chevron.down"), chevronSize, tr("List all documents"));
  for (SymbolButton* button : {scrollBackButton_, scrollForwardButton_}) button->setAutoRepeat(true);

  connect(loadingTab_, &QAbstractButton::clicked, this, [this] {
    if (onSelectLoading) onSelectLoading();
  });
  connect(loadingTab_->closeButton(), &QAbstractButton::clicked, this, [this] {
    if (onCancelLoading) onCancelLoading();
  });
  connect(newTabButton_, &QAbstractButton::clicked, this, [this] {
    if (onNewDocument) onNewDocument();
  });
  connect(scrollBackButton_, &QAbstractButton::clicked, this, [this] { scrollBy(-DocumentTab::narrowest); });
  connect(scrollForwardButton_, &QAbstractButton::clicked, this,
          [this] { scrollBy(DocumentTab::narrowest); });
  connect(listButton_, &QAbstractButton::clicked, this, &DocumentTabBar::showList);
}

SymbolButton* DocumentTabBar::makeButton(const QString& symbol, double symbolSize, const QString& name) {
  auto* button = new SymbolButton(symbol, symbolSize, this);
  button->setAccessibleName(name);
  button->setToolTip(name);
  button->resize(look::size::control, look::size::control);
  return button;
}

QAbstractButton* DocumentTabBar::newTabButton() const {
  return newTabButton_;
}

QAbstractButton* DocumentTabBar::listButton() const {
  return listButton_;
}

QAbstractButton* DocumentTabBar::scrollBackButton() const {
  return scrollBackButton_;
}

QAbstractButton* DocumentTabBar::scrollForwardButton() const {
  return scrollForwardButton_;
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
  holdPlaces(documents);
  std::map<QUuid, DocumentTab*> before;
  for (DocumentTab* tab : tabs_) before.emplace(tab->documentID, tab);
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
    tab->setSelected(activeDocumentID && tab->documentID == *activeDocumentID);
    tab->setHasOtherDocuments(tabs_.size() > 1);
  }
  layOutTabs();
  if (!isHoldingPlaces_) revealSelectedTab();
}

void DocumentTabBar::setLoading(const std::optional<LoadingTabContent>& content) {
  loadingTab_->setVisible(content.has_value());
  if (content) loadingTab_->setContent(*content);
  layOutTabs();
}

int DocumentTabBar::loadingWidth() const {
  return loadingTab_->isHidden() ? 0 : loadingTab_->sizeHint().width();
}

void DocumentTabBar::holdPlaces(const std::vector<DocumentPtr>& documents) {
  const auto isOpen = [&](const DocumentTab* tab) {
    return std::ranges::any_of(documents,
                               [&](const DocumentPtr& document) { return document->id == tab->documentID; });
  };
  const auto kept = static_cast<std::size_t>(std::ranges::count_if(tabs_, isOpen));
  const bool areSame = kept == tabs_.size() && kept == documents.size();
  if (areSame) return;
  isHoldingPlaces_ = isPointerInside_ && kept == documents.size() && kept > 0;
  if (!isHoldingPlaces_) return;
  // The next tab takes the place of the closed one; after the last, the one before it reaches to its end.
  for (std::size_t index = tabs_.size(); index-- > 0;) {
    if (isOpen(tabs_[index])) continue;
    const int freed = widths_.back();
    const bool wasLast = index + 1 == widths_.size();
    widths_.pop_back();
    if (wasLast && !widths_.empty()) widths_.back() += freed;
  }
}

std::vector<int> DocumentTabBar::wishedWidths() const {
  std::vector<int> widths;
  widths.reserve(tabs_.size());
  for (const DocumentTab* tab : tabs_) widths.push_back(tab->sizeHint().width());
  return widths;
}

int DocumentTabBar::roomForTabs(bool overflows) const {
  return std::max(0, width() - widthOfButtons(overflows) - loadingWidth());
}

int DocumentTabBar::furthestOffset() const {
  return std::max(0, sum(widths_) - strip_->width());
}

void DocumentTabBar::layOutTabs() {
  if (!isHoldingPlaces_) {
    widths_ = wishedWidths();
    const int room = roomForTabs(false);
    if (sum(widths_) > room && !widths_.empty()) {
      const int fairShare = std::max<int>(DocumentTab::narrowest, room / static_cast<int>(widths_.size()));
      for (int& tabWidth : widths_) tabWidth = std::min(tabWidth, fairShare);
    }
  }
  const bool overflows = sum(widths_) > roomForTabs(false);
  const int stripWidth = std::min(sum(widths_), roomForTabs(overflows));
  strip_->setGeometry(0, 0, stripWidth, height());
  if (!isHoldingPlaces_) scrollOffset_ = std::clamp(scrollOffset_, 0, furthestOffset());
  placeButtons(stripWidth, overflows);
  placeTabs();
}

void DocumentTabBar::placeTabs() {
  int left = -scrollOffset_;
  for (std::size_t index = 0; index < tabs_.size(); ++index) {
    tabs_[index]->setGeometry(left, 0, widths_[index], height());
    left += widths_[index];
  }
  scrollBackButton_->setEnabled(scrollOffset_ > 0);
  scrollForwardButton_->setEnabled(scrollOffset_ < furthestOffset());
  hoverTabUnderPointer();
  update();
}

void DocumentTabBar::placeButtons(int stripWidth, bool overflows) {
  constexpr int edge = look::size::control;
  const int top = (height() - edge) / 2;
  loadingTab_->setGeometry(stripWidth, 0, loadingWidth(), height());
  newTabButton_->move(stripWidth + loadingWidth() + look::space::tight, top);
  int right = width() - look::space::tight;
  for (SymbolButton* button : {listButton_, scrollForwardButton_, scrollBackButton_}) {
    const bool isShown = overflows || button == listButton_;
    button->setVisible(isShown);
    if (isShown) right -= edge;
    button->move(right, top);
  }
}

// A tab that has moved under a resting pointer shows its close button, as if the pointer had moved.
void DocumentTabBar::hoverTabUnderPointer() {
  if (!isPointerInside_) return;
  const QPoint pointer = strip_->mapFromGlobal(QCursor::pos());
  for (DocumentTab* tab : tabs_) {
    tab->setHovering(strip_->rect().contains(pointer) && tab->geometry().contains(pointer));
  }
}

void DocumentTabBar::revealSelectedTab() {
  const auto selected = std::ranges::find_if(tabs_, [](const DocumentTab* tab) { return tab->isSelected(); });
  if (selected == tabs_.end()) return;
  const QRect place = (*selected)->geometry();
  if (place.right() >= strip_->width()) scrollOffset_ += place.right() + 1 - strip_->width();
  if (place.left() < 0) scrollOffset_ += place.left();
  layOutTabs();
}

void DocumentTabBar::scrollBy(int distance) {
  isHoldingPlaces_ = false;
  scrollOffset_ += distance;
  layOutTabs();
}

void DocumentTabBar::showList() {
  auto* menu = new QMenu(this);
  menu->setAttribute(Qt::WA_DeleteOnClose);
  for (const DocumentTab* tab : tabs_) {
    QString title = tab->shownName();
    // A single ampersand would mark the next letter as a mnemonic.
    QAction* item = menu->addAction(title.replace(u'&', QStringLiteral("&&")));
    item->setCheckable(true);
    item->setChecked(tab->isSelected());
    connect(item, &QAction::triggered, this, [this, id = tab->documentID] {
      if (onSelect) onSelect(id);
    });
  }
  menu->popup(mapToGlobal(QPoint(width() - menu->sizeHint().width(), height())));
}

QSize DocumentTabBar::sizeHint() const {
  return {sum(widths_) + loadingWidth() + widthOfButtons(false), height()};
}

QSize DocumentTabBar::minimumSizeHint() const {
  return {DocumentTab::narrowest + widthOfButtons(true), height()};
}

void DocumentTabBar::resizeEvent(QResizeEvent* /*event*/) {
  isHoldingPlaces_ = false;
  layOutTabs();
  revealSelectedTab();
}

void DocumentTabBar::wheelEvent(QWheelEvent* event) {
  const QPoint pixels = event->pixelDelta().isNull() ? event->angleDelta() / 2 : event->pixelDelta();
  scrollBy(pixels.x() != 0 ? -pixels.x() : -pixels.y());
  event->accept();
}

void DocumentTabBar::enterEvent(QEnterEvent* event) {
  isPointerInside_ = true;
  QWidget::enterEvent(event);
}

void DocumentTabBar::leaveEvent(QEvent* event) {
  isPointerInside_ = false;
  if (std::exchange(isHoldingPlaces_, false)) {
    layOutTabs();
    revealSelectedTab();
  }
  QWidget::leaveEvent(event);
}

void DocumentTabBar::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  const double line = look::hairline(*this);
  painter.fillRect(rect(), look::color::bar);
  painter.fillRect(QRectF(0, height() - line, width(), line), look::color::divider);
}

}  // namespace orvanel
