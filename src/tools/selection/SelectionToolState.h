// What the five selection tools have in common: hovering, dragging the selection itself, and a shape's
// gesture from press to release with its overlay. Owned by the canvas view and shared by the tools, of which
// one at a time has a gesture; main thread only. If the document ends the gesture's edit, the gesture is over
// at once.
#pragma once

#include <QPoint>
#include <QPointF>
#include <functional>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "tools/CanvasToolHandler.h"
#include "tools/overlays/DragPathOverlayLayer.h"
#include "tools/selection/SelectionGesture.h"
#include "tools/selection/SelectionMove.h"

namespace orvanel {

class SelectionToolState {
 public:
  explicit SelectionToolState(const MetalContext& context);
  SelectionToolState(const SelectionToolState&) = delete;
  SelectionToolState& operator=(const SelectionToolState&) = delete;
  ~SelectionToolState();

  const std::shared_ptr<DragPathOverlayLayer> dragPathLayer;

  // The pointer.
  /// How a shape begun with these modifiers would combine with the selection, or that a drag from the pointer
  /// would move it.
  [[nodiscard]] CursorShape selectionCursor(std::uint32_t modifiers, const ToolContext& context) const;
  /// Shows where a drag would move the selection.
  void selectionMouseMoved(const EventRecord& event, const ToolContext& context, QPointF viewPoint);
  /// Where the pointer is while no gesture is in progress, in view points.
  void rememberPointer(QPointF viewPoint) { hoverPoint_ = viewPoint; }
  /// The pointer may be anywhere; the next movement looks at the selection again.
  void forgetPointer();

  // Moving the selection.
  [[nodiscard]] bool shouldMoveSelection(const EventRecord& event, const ToolContext& context,
                                         QPointF viewPoint) const;
  void beginMoveSelection(const ToolContext& context, QPointF viewPoint);
  void continueMoveSelection(const ToolContext& context, QPointF viewPoint);
  void endMoveSelection();
  [[nodiscard]] bool isMoving() const { return move_ != nullptr && move_->isOpen(); }

  // Drawing a shape.
  /// One step of a drag: either the whole shape shifts, or its end follows the pointer.
  struct ShapeStep {
    std::optional<QPointF> shift;  ///< document pixels, not clamped
    QPointF end;                   ///< document pixels, within the canvas
  };
  void beginShape(const ToolContext& context, QPointF viewPoint, const QString& actionName);
  /// Whether a shape is being drawn in the context's document. Drops one that was begun in another.
  [[nodiscard]] bool isDrawing(const ToolContext& context);
  /// None while the pointer is too close to the press for a drag, or if no shape is being drawn.
  [[nodiscard]] std::optional<ShapeStep> dragShape(const ToolContext& context, QPointF viewPoint);
  /// Whether the shape has been dragged, rather than just clicked.
  [[nodiscard]] bool hasDragged() const { return dragThresholdMet_; }
  /// Selects the shape that `fill` writes, of at most `bytes`, combined as the modifiers say, and ends the
  /// gesture.
  void commitShape(std::uint32_t modifiers, std::uint64_t bytes, const std::function<void(Selection&)>& fill);
  /// Selects nothing and ends the gesture.
  void commitClick();
  /// Ends any gesture as a change of tool does: a shape being drawn is dropped, a moved selection stays.
  void abandon();
  /// Ends any gesture without a record: a shape being drawn is dropped, a moved selection goes back.
  void cancel();

  // The overlay of the shape being drawn.
  void showPath(const SelectionPath& path);
  /// `pointer`, in view points, adds a last segment that follows the pointer.
  void showPolyline(std::vector<QPointF> documentPoints, const std::optional<QPointF>& pointer = {});
  void showDragSize(const Document::DragSize& size);

  // The space bar moves the shape while its key is held.
  void holdSpacebar() { spacebarHeld_ = true; }
  /// False if it wasn't held.
  bool releaseSpacebar() { return std::exchange(spacebarHeld_, false); }

 private:
  void attach(const DocumentPtr& document, ToolCanvas& view);
  /// Clears whatever belongs to a gesture.
  void reset();
  void requestRedraw();
  /// Whether a drag from this pixel would move the selection. Asks the selection once as long as neither
  /// changes.
  [[nodiscard]] bool hits(const DocumentPtr& document, const Selection& selection, QPoint pixel);

  // The gesture in progress.
  std::weak_ptr<Document> document_;
  /// The canvas that owns the tools; set during a gesture.
  ToolCanvas* view_ = nullptr;
  std::unique_ptr<SelectionGesture> gesture_;
  std::unique_ptr<SelectionMove> move_;
  QPointF moveStart_;         ///< document pixels
  QPoint movedTo_;            ///< pixels from the original position
  QPointF dragScreenOrigin_;  ///< view points
  QPointF lastDragPoint_;     ///< document pixels
  bool dragThresholdMet_ = false;
  bool spacebarHeld_ = false;

  // The pointer between gestures.
  std::optional<QPointF> hoverPoint_;  ///< view points
  std::weak_ptr<Document> hitDocument_;
  std::optional<QPoint> lastHitPixel_;
  bool lastHitResult_ = false;
  ChangeStream::Subscription hitChanges_;
};

/// A view point as a document point within the canvas; none without a document or a view.
[[nodiscard]] std::optional<QPointF> clampedDocumentPoint(const ToolContext& context, QPointF viewPoint);
/// The pixel at a view point, possibly outside the canvas; none without a document or a view.
[[nodiscard]] std::optional<QPoint> documentPixel(const ToolContext& context, QPointF viewPoint);

}  // namespace orvanel
