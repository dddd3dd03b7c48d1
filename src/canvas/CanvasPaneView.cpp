#include "canvas/CanvasPaneView.h"

namespace orvanel {

CanvasPaneView::CanvasPaneView(MetalContext& context, ToolState& toolState, QWidget* parent)
    : QWidget(parent), canvasView_(context, toolState, this), noDocumentView_(new NoDocumentView(this)) {
  const auto open = [this](const QStringList& files) {
    if (openFiles) openFiles(files);
  };
  canvasView_.container().mtkView().openFiles = open;
  noDocumentView_->openFiles = open;
  setDocument(nullptr);
}

void CanvasPaneView::setDocument(const std::shared_ptr<Document>& document) {
  // The canvas has its document before it shows, so that it never shows an old one.
  canvasView_.update(document);
  const bool comesUp = document != nullptr && canvasView_.container().isHidden();
  canvasView_.container().setVisible(document != nullptr);
  noDocumentView_->setVisible(document == nullptr);
  // A document that has just opened takes keys at once, without a click on it first.
  if (comesUp) canvasView_.container().mtkView().takeFocus();
}

// Both fill the pane at all times, so that a canvas that comes up has its final size at once.
void CanvasPaneView::resizeEvent(QResizeEvent* event) {
  QWidget::resizeEvent(event);
  canvasView_.container().setGeometry(rect());
  noDocumentView_->setGeometry(rect());
}

}  // namespace orvanel
