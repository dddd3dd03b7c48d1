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
  // Set the document before showing the canvas, so that it never shows the old one.
  canvasView_.update(document);
  const bool comesUp = document != nullptr && canvasView_.container().isHidden();
  canvasView_.container().setVisible(document != nullptr);
  noDocumentView_->setVisible(document == nullptr);
  // A newly opened document takes keyboard input at once, without a click.
  if (comesUp) canvasView_.container().mtkView().takeFocus();
}

// Both fill the pane at all times, so that the canvas already has its final size when it is shown.
void CanvasPaneView::resizeEvent(QResizeEvent* event) {
  QWidget::resizeEvent(event);
  canvasView_.container().setGeometry(rect());
  noDocumentView_->setGeometry(rect());
}

}  // namespace orvanel
