// The part that the five selection tools have in common: a press inside the selection drags the selection,
// any other begins the tool's own gesture. Owned by the canvas view; main thread only.
#pragma once

#include <memory>

#include "tools/CanvasToolHandler.h"
#include "tools/selection/SelectionToolState.h"

namespace orvanel {

class SelectionToolHandler : public CanvasToolHandler {
 public:
  explicit SelectionToolHandler(std::shared_ptr<SelectionToolState> state) : state_(std::move(state)) {}

  [[nodiscard]] std::shared_ptr<CanvasViewLayer> overlayLayer() const override {
    return state_->dragPathLayer;
  }
  void toolActivated(const ToolContext& context) override;
  void toolDeactivated(const ToolContext& context) override;
  [[nodiscard]] CursorShape cursor(std::uint32_t modifiers, const ToolContext& context) const override;
  void mouseDown(const EventRecord& event, const ToolContext& context, QPointF viewPoint) override;
  void mouseDragged(const EventRecord& event, const ToolContext& context, QPointF viewPoint) override;
  void mouseUp(const EventRecord& event, const ToolContext& context, QPointF viewPoint) override;
  void mouseMoved(const EventRecord& event, const ToolContext& context, QPointF viewPoint) override;
  /// An open gesture hears its keys first: Escape takes it back, the space bar moves the shape, and the keys
  /// that delete do nothing.
  bool keyDown(const EventRecord& event, const ToolContext& context) override;
  bool keyUp(const EventRecord& event, const ToolContext& context) override;
  [[nodiscard]] bool hasOpenGesture(const ToolContext& context) override { return isOpen(context); }

 protected:
  // The tool's own gesture.
  virtual void begin(const EventRecord& event, const ToolContext& context, QPointF viewPoint) = 0;
  virtual void drag(const EventRecord& event, const ToolContext& context, QPointF viewPoint) = 0;
  virtual void release(const EventRecord& event, const ToolContext& context) = 0;
  /// Whether it is in progress.
  [[nodiscard]] virtual bool isOpen(const ToolContext& context) { return state_->isDrawing(context); }
  /// Ends it as a change of tool does.
  virtual void abandon() { state_->abandon(); }
  /// Takes it, or a move of the selection, back to the press.
  virtual void cancel() { state_->cancel(); }

  [[nodiscard]] SelectionToolState& state() const { return *state_; }

 private:
  std::shared_ptr<SelectionToolState> state_;
};

}  // namespace orvanel
