// The move tool: moves, scales or rotates the content of the active layer, or of its mask if that is
// selected, by the box around it. Each drag is one edit with one record. The arrow keys move by one pixel,
// with Shift by ten; a run of presses is one record. Owned by the canvas view; main thread only.
#pragma once

#include <QPoint>
#include <QTimer>
#include <QUuid>
#include <chrono>
#include <memory>
#include <optional>

#include "tools/CanvasToolHandler.h"
#include "tools/overlays/MoveToolOverlayLayer.h"
#include "tools/transform/BoxHandle.h"
#include "tools/transform/LayerTransform.h"

namespace orvanel {

class MoveToolHandler : public CanvasToolHandler {
 public:
  /// A run of arrow presses ends after a pause of this length. Any other key, a press of the mouse, a change
  /// of tool and every command that ends open edits end it as well.
  static constexpr std::chrono::milliseconds nudgePause{1000};

  explicit MoveToolHandler(const MetalContext& context, std::chrono::milliseconds pause = nudgePause);

  [[nodiscard]] std::set<Tool> supportedTools() const override { return {Tool::move}; }
  [[nodiscard]] std::shared_ptr<CanvasViewLayer> overlayLayer() const override { return moveToolLayer_; }
  void toolActivated(const ToolContext& context) override;
  void toolDeactivated(const ToolContext& context) override;
  [[nodiscard]] CursorShape cursor(std::uint32_t modifiers, const ToolContext& context) const override;
  void mouseDown(const EventRecord& event, const ToolContext& context, QPointF viewPoint) override;
  void mouseDragged(const EventRecord& event, const ToolContext& context, QPointF viewPoint) override;
  void mouseUp(const EventRecord& event, const ToolContext& context, QPointF viewPoint) override;
  void mouseMoved(const EventRecord& event, const ToolContext& context, QPointF viewPoint) override;
  bool keyDown(const EventRecord& event, const ToolContext& context) override;
  void flagsChanged(const EventRecord& event, const ToolContext& context) override;

  /// Finds the box of the active node again, after it or its pixels changed. None for a folder, a locked
  /// layer and empty content. Leaves a running drag alone.
  void updateBox(const ToolContext& context);
  /// The content may have changed by something else than this tool: measures the box, unless it is in use.
  void contentChanged(const ToolContext& context);
  /// Document pixels; follows a running drag.
  [[nodiscard]] const std::optional<PixelRect>& contentRect() const { return contentRect_; }

 private:
  struct Drag {
    std::unique_ptr<LayerTransform> transform;
    std::weak_ptr<Document> document;
    MoveToolHandle handle = MoveToolHandle::inside;
    QPointF start;            ///< document pixels
    float startAngle = 0.0F;  ///< radians, of the pointer about the box's centre
    QPoint lastPixelDelta;    ///< the translation shown
    QPointF pointer;          ///< the last position, in view points
  };
  struct Nudge {
    std::unique_ptr<LayerTransform> transform;
    std::weak_ptr<Document> document;
    QUuid layerID;
    QPoint delta;
  };

  [[nodiscard]] std::optional<MoveToolHandle> hitAt(const ToolCanvas& view, QPointF viewPoint) const;
  void dragTo(const ToolContext& context, QPointF viewPoint);
  void translateTo(QPointF documentPoint);
  void rotateTo(QPointF documentPoint, std::uint32_t modifiers);
  void scaleTo(QPointF documentPoint, std::uint32_t modifiers);
  /// Keeps the drag as it is shown; does nothing without one.
  void release();
  [[nodiscard]] bool nudge(const ToolContext& context, QPoint step);
  void endNudge();
  void measure(const Document* document);
  void showBox();

  std::shared_ptr<MoveToolOverlayLayer> moveToolLayer_;
  std::optional<PixelRect> contentRect_;
  std::optional<Drag> drag_;
  std::optional<Nudge> nudge_;
  QTimer nudgeTimer_;
  CursorShape hoverCursor_ = CursorShape::arrow;
};

}  // namespace orvanel
