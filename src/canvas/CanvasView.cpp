#include "canvas/CanvasView.h"

namespace orvanel {

CanvasView::CanvasView(MetalContext& context, ToolState& toolState, QWidget* parent)
    : renderer_(context), container_(std::make_unique<CanvasContainerView>(renderer_, toolState, parent)) {}

void CanvasView::update(const std::shared_ptr<Document>& document) {
  renderer_.document = document;
  container_->setDocument(document);
  container_->mtkView().setDocument(document);
  container_->refreshIndicators();
}

}  // namespace orvanel
