// Binds the model to the canvas: creates the container, owns its renderer, passes on the active document.
// Owned by the canvas pane; main thread only.
#pragma once

#include <memory>

#include "canvas/CanvasContainerView.h"
#include "canvas/CanvasRenderer.h"

namespace orvanel {

class CanvasView {
 public:
  /// `context` and `toolState` must outlive it.
  CanvasView(MetalContext& context, ToolState& toolState, QWidget* parent);

  [[nodiscard]] CanvasContainerView& container() { return *container_; }
  [[nodiscard]] CanvasRenderer& renderer() { return renderer_; }

  /// Shows the document, or nothing for null.
  void update(const std::shared_ptr<Document>& document);

 private:
  CanvasRenderer renderer_;
  /// Destroyed before the renderer it uses.
  std::unique_ptr<CanvasContainerView> container_;
};

}  // namespace orvanel
