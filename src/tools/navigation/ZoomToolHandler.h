// The zoom tool: a click zooms one step about the pointer, and a drag either zooms to the rectangle it draws
// or, with scrubby zoom, continuously. Owned by the canvas view; main thread only.
#pragma once

#include <memory>
#include <optional>

#include "tools/CanvasToolHandler.h"
#include "tools/ToolState.h"
#include "tools/overlays/DragPathOverlayLayer.h"

namespace orvanel {

class ZoomToolHandler : public CanvasToolHandler {
 public:
  /// A shorter drag is a click. In view points.
  static constexpr double dragThreshold = 3.0;
  /// The zoom's factor for one view point of scrubbing to the right.
  static constexpr double scrubFactor = 1.005;

  /// `toolState` must outlive the handler.
  ZoomToolHandler(const MetalContext& context, const ToolState& toolState);

  [[nodiscard]] std::set<Tool> supportedTools() const override { return {Tool::zoom}; }
  [[nodiscard]] std::shared_ptr<CanvasViewLayer> overlayLayer() const override { return dragPathLayer_; }
  void toolDeactivated(const ToolContext& context) override;
  [[nodiscard]] CursorShape cursor(std::uint32_t modifiers, const ToolContext& context) const override;
  void mouseDown(const EventRecord& event, const ToolContext& context, QPointF viewPoint) override;
  void mouseDragged(const EventRecord& event, const ToolContext& context, QPointF viewPoint) override;
  void mouseUp(const EventRecord& event, const ToolContext& context, QPointF viewPoint) override;
  bool keyDown(const EventRecord& event, const ToolContext& context) override;

 private:
  struct Drag {
    std::weak_ptr<Document> document;
    bool isScrubby = false;
    QPointF screenOrigin;     ///< view points
    QPointF start;            ///< document pixels
    QPointF current;          ///< document pixels
    QPointF lastScreenPoint;  ///< view points
    bool thresholdMet = false;
  };

  /// The drag if it belongs to the document shown, otherwise null.
  [[nodiscard]] DocumentPtr draggedDocument(const ToolContext& context) const;
  void scrub(Document& document, ToolCanvas& view, QPointF viewPoint);
  void drawRectangle(ToolCanvas& view, QPointF viewPoint);
  void zoomToRectangle(Document& document, ToolCanvas& view) const;
  void endDrag(const ToolContext& context);

  const ToolState& toolState_;
  std::shared_ptr<DragPathOverlayLayer> dragPathLayer_;
  std::optional<Drag> drag_;
};

}  // namespace orvanel
