#include "canvas/CanvasPaneView.h"

namespace orvanel {

CanvasPaneView::CanvasPaneView(MetalContext& context, ToolState& toolState, QWidget* parent)
    : QWidget(parent),
      canvasView_(context, toolState, this),
      loadingView_(new LoadingView(context, this)),
      noDocumentView_(new NoDocumentView(this)) {
  const auto open = [this](const QStringList& files) {
    if (openFiles) openFiles(files);
  };
  canvasView_.container().mtkView().openFiles = open;
  loadingView_->openFiles = open;
  noDocumentView_->openFiles = open;
  setDocument(nullptr);
}

void CanvasPaneView::setDocument(const std::shared_ptr<Document>& document, Instead instead) {
  // Set the document before showing the canvas, so that it never shows the old one.
  canvasView_.update(document);
  const bool comesUp = document != nullptr && canvasView_.container().isHidden();
  canvasView_.container().setVisible(document != nullptr);
  const bool isLoading = document == nullptr && instead == Instead::loadingView;
  const bool loadingComesUp = isLoading && loadingView_->isHidden();
  loadingView_->setVisible(isLoading);
  noDocumentView_->setVisible(document == nullptr && !isLoading);
  // A newly opened document takes keyboard input at once, without a click.
  if (comesUp) canvasView_.container().mtkView().takeFocus();
  if (loadingComesUp) loadingView_->setFocus(Qt::OtherFocusReason);
}

// All fill the pane at all times, so that the canvas already has its final size when it is shown.
void CanvasPaneView::resizeEvent(QResizeEvent* event) {
  QWidget::resizeEvent(event);
  canvasView_.container().setGeometry(rect());
  loadingView_->setGeometry(rect());
  noDocumentView_->setGeometry(rect());
}

}  // namespace orvanel
