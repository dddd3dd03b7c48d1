// The free transform: several drags compose into one matrix, which is applied as a whole or given up. It
// opens when the tool is chosen; Return applies it, Escape cancels it, and leaving the tool in any other way
// applies it. Owned by the canvas view; main thread only.
#pragma once

#include <QTransform>
#include <memory>
#include <optional>

#include "tools/CanvasToolHandler.h"
#include "tools/ToolState.h"
#include "tools/overlays/FreeTransformOverlayLayer.h"
#include "tools/transform/BoxHandle.h"
#include "tools/transform/LayerTransform.h"

namespace orvanel {

class FreeTransformToolHandler : public CanvasToolHandler {
 public:
  /// `toolState` must outlive the handler.
  FreeTransformToolHandler(const MetalContext& context, ToolState& toolState);

  [[nodiscard]] std::set<Tool> supportedTools() const override { return {Tool::freeTransform}; }
  [[nodiscard]] std::shared_ptr<CanvasViewLayer> overlayLayer() const override { return overlay_; }
  void toolActivated(const ToolContext& context) override;
  void toolDeactivated(const ToolContext& context) override;
  [[nodiscard]] CursorShape cursor(std::uint32_t modifiers, const ToolContext& context) const override;
  void mouseDown(const EventRecord& event, const ToolContext& context, QPointF viewPoint) override;
  void mouseDragged(const EventRecord& event, const ToolContext& context, QPointF viewPoint) override;
  void mouseUp(const EventRecord& event, const ToolContext& context, QPointF viewPoint) override;
  void mouseMoved(const EventRecord& event, const ToolContext& context, QPointF viewPoint) override;
  bool keyDown(const EventRecord& event, const ToolContext& context) override;
  void flagsChanged(const EventRecord& event, const ToolContext& context) override;

  /// False as well once the document has ended the transform.
  [[nodiscard]] bool isOpen() const { return transform_ != nullptr && transform_->isOpen(); }
  /// Both end the transform and leave the tool as it is; without one they do nothing.
  void apply(const ToolContext& context);
  void cancel(const ToolContext& context);

 private:
  struct Drag {
    FreeTransformHandle handle = FreeTransformHandle::inside;
    QPointF start;            ///< document pixels
    double startAngle = 0.0;  ///< radians, of the pointer about the box's centre
    QPointF pointer;          ///< the last position, in view points
  };

  [[nodiscard]] QTransform total() const { return baseTransform_ * currentDragTransform_; }
  [[nodiscard]] std::optional<FreeTransformHandle> hitAt(const ToolCanvas& view, QPointF viewPoint) const;
  /// The matrix of the drag in progress; the whole is `baseTransform_` followed by it.
  [[nodiscard]] QTransform dragTransform(QPointF documentPoint, std::uint32_t modifiers) const;
  void dragTo(const ToolContext& context, QPointF viewPoint);
  /// Forgets the transform and returns it.
  [[nodiscard]] std::unique_ptr<LayerTransform> close(const ToolContext& context);
  void refreshOverlay();
  void followDocument();

  ToolState& toolState_;
  std::shared_ptr<FreeTransformOverlayLayer> overlay_;
  std::unique_ptr<LayerTransform> transform_;
  std::weak_ptr<Document> document_;
  QRectF contentRect_;        ///< at the start
  QTransform baseTransform_;  ///< all completed drags
  QTransform currentDragTransform_;
  std::optional<Drag> drag_;
  ChangeStream::Subscription changes_;
  CursorShape hoverCursor_ = CursorShape::arrow;
};

}  // namespace orvanel
