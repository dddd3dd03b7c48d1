// A full-HD canvas without a window, for tool handlers: shows a document, at first its upper left corner, and
// draws its frames.
#pragma once

#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "BenchView.h"
#include "tools/CanvasToolHandler.h"

namespace orvanel {

class BenchCanvas : public ToolCanvas {
 public:
  BenchCanvas(DocumentPtr document, bool isFit) : document_(std::move(document)) {
    if (isFit) {
      document_->zoomFitOnScreen(viewWidth, viewHeight);
    } else {
      document_->zoomActualSize();
    }
    zoom_ = document_->zoom();
    scrollTo({0.0, 0.0});
    renderer_.document = document_;
    static_cast<void>(document_->composite());
    draw();
  }

  void showOverlay(std::shared_ptr<CanvasViewLayer> overlay) {
    renderer_.toolOverlayLayers = {std::move(overlay)};
  }
  void draw() { renderer_.drawInMTKView(view_); }
  /// Flattens some more of the document and gathers ahead; true once nothing is left to do.
  bool catchUp() { return renderer_.catchUp(); }
  [[nodiscard]] const DocumentPtr& document() const { return document_; }
  [[nodiscard]] ToolContext context() { return {this, document_}; }
  /// View points for a share of the view's height.
  [[nodiscard]] QPointF at(double x, double y) const { return QPointF(x, y) * viewHeight; }
  [[nodiscard]] double zoom() const { return zoom_; }

  [[nodiscard]] QSizeF viewSize() const override { return {viewWidth, viewHeight}; }
  [[nodiscard]] std::optional<QPointF> viewToDocument(QPointF viewPoint) const override {
    return viewPoint / zoom_ + document_->viewportOffset.value();
  }
  [[nodiscard]] std::optional<QPointF> documentToView(QPointF documentPoint) const override {
    return (documentPoint - document_->viewportOffset.value()) * zoom_;
  }
  void scrollTo(QPointF documentOffset) final { document_->setViewportOffset(documentOffset); }
  [[nodiscard]] std::uint32_t currentModifiers() const override { return 0; }
  void showCursor(CursorShape /*cursor*/) override {}
  void requestRedraw() override {}

 private:
  DocumentPtr document_;
  double zoom_ = 1.0;
  BenchView view_;
  CanvasRenderer renderer_{MetalContext::shared()};
};

}  // namespace orvanel
