#include "canvas/NoDocumentView.h"

#include <QAbstractButton>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QVBoxLayout>

#include "canvas/FileDrop.h"
#include "canvas/LinkButton.h"
#include "look/Look.h"
#include "look/Symbol.h"

namespace orvanel {
namespace {

constexpr int symbolSide = 64;

/// A symbol drawn at the native resolution of whichever screen the window is on.
class SymbolView : public QWidget {
 public:
  SymbolView() { setFixedHeight(symbolSide); }

 protected:
  void paintEvent(QPaintEvent* /*event*/) override {
    QPainter painter(this);
    QRectF box(0, 0, symbolSide, symbolSide);
    box.moveCenter(QRectF(rect()).center());
    look::paintSymbol(painter, QStringLiteral("doc.badge.plus.large"), box, look::color::secondaryText);
  }
};

QLabel* makeLabel(const QString& text, const QFont& font, const QColor& color) {
  auto* label = new QLabel(text);
  label->setFont(font);
  label->setAlignment(Qt::AlignCenter);
  look::setTextColor(*label, color);
  return label;
}

}  // namespace

NoDocumentView::NoDocumentView(QWidget* parent)
    : QWidget(parent),
      message_(new QWidget(this)),
      newLink_(new LinkButton(tr("Create a new document"))),
      openLink_(new LinkButton(tr("open an existing one"))),
      recentFiles_(new RecentFilesView(this)) {
  setAcceptDrops(true);
  const auto words = [](const QString& text) {
    return makeLabel(text, look::font(look::type::heading), look::color::secondaryText);
  };
  auto* sentence = new QHBoxLayout;
  sentence->setSpacing(0);
  sentence->addStretch();
  sentence->addWidget(newLink_);
  sentence->addWidget(words(tr(" or ")));
  sentence->addWidget(openLink_);
  sentence->addWidget(words(tr(".")));
  sentence->addStretch();

  auto* column = new QVBoxLayout(message_);
  column->setContentsMargins(0, 0, 0, 0);
  column->setSpacing(look::space::normal);
  column->addWidget(new SymbolView);
  column->addWidget(makeLabel(tr("No Document Open"), look::font(look::type::title), look::color::text));
  column->addLayout(sentence);

  connect(newLink_, &QAbstractButton::clicked, this, [this] {
    if (onNew) onNew();
  });
  connect(openLink_, &QAbstractButton::clicked, this, [this] {
    if (onOpen) onOpen();
  });
  recentFiles_->onOpen = [this](const QString& path) {
    if (onOpenRecent) onOpenRecent(path);
  };
}

void NoDocumentView::setRecentEntries(const std::vector<RecentEntry>& entries) {
  recentFiles_->setEntries(entries);
  arrange();
}

void NoDocumentView::arrange() {
  const QSize message(width(), message_->sizeHint().height());
  constexpr int gap = 2 * look::space::section;
  const QSize room(width() - 2 * look::space::section,
                   height() - message.height() - gap - 2 * look::space::section);
  recentFiles_->fitInto(room.expandedTo({0, 0}));
  const QSize files = recentFiles_->size();
  const int whole = message.height() + (files.isEmpty() ? 0 : gap + files.height());
  const int top = std::max(0, (height() - whole) / 2);
  message_->setGeometry(QRect(QPoint(0, top), message));
  recentFiles_->move((width() - files.width()) / 2, top + message.height() + gap);
}

void NoDocumentView::resizeEvent(QResizeEvent* /*event*/) {
  arrange();
}

void NoDocumentView::showEvent(QShowEvent* event) {
  QWidget::showEvent(event);
  // The arrow keys lead from the first link to everything else.
  newLink_->setFocus(Qt::OtherFocusReason);
  if (onShown) onShown();
}

void NoDocumentView::paintEvent(QPaintEvent* /*event*/) {
  QPainter(this).fillRect(rect(), look::color::pane);
}

void NoDocumentView::dragEnterEvent(QDragEnterEvent* event) {
  if (!fileDrop::localFiles(*event->mimeData()).isEmpty()) fileDrop::acceptAsCopy(*event);
}

void NoDocumentView::dropEvent(QDropEvent* event) {
  const QStringList files = fileDrop::localFiles(*event->mimeData());
  if (files.isEmpty()) return;
  fileDrop::acceptAsCopy(*event);
  if (openFiles) openFiles(files);
}

}  // namespace orvanel
