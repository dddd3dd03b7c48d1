#include "canvas/NoDocumentView.h"

#include <QDragEnterEvent>
#include <QDropEvent>
#include <QIcon>
#include <QLabel>
#include <QPainter>
#include <QVBoxLayout>

#include "canvas/FileDrop.h"

namespace orvanel {
namespace {

constexpr int symbolSide = 64;

/// A symbol drawn at the native resolution of whichever screen the window is on.
class SymbolView : public QWidget {
 public:
  SymbolView() { setFixedHeight(symbolSide); }

 protected:
  void paintEvent(QPaintEvent* event) override {
    (void)event;
    QPainter painter(this);
    painter.setOpacity(0.55);
    QIcon(QStringLiteral(":/icons/doc.badge.plus.large.svg")).paint(&painter, rect());
  }
};

QLabel* makeLabel(const QString& text, double pointSize, QFont::Weight weight, const QColor& color) {
  auto* label = new QLabel(text);
  QFont font = label->font();
  font.setPointSizeF(pointSize);
  font.setWeight(weight);
  label->setFont(font);
  label->setAlignment(Qt::AlignCenter);
  QPalette palette = label->palette();
  palette.setColor(QPalette::WindowText, color);
  label->setPalette(palette);
  return label;
}

}  // namespace

NoDocumentView::NoDocumentView(QWidget* parent) : QWidget(parent) {
  setAcceptDrops(true);
  auto* column = new QVBoxLayout(this);
  column->setSpacing(6);
  column->addStretch();
  column->addWidget(new SymbolView);
  column->addSpacing(6);
  column->addWidget(makeLabel(QStringLiteral("No Document Open"), 15.0, QFont::Medium, QColor(58, 58, 64)));
  column->addWidget(makeLabel(QStringLiteral("Create a new document or open an existing one."), 10.5,
                              QFont::Normal, QColor(110, 110, 120)));
  column->addStretch();
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
