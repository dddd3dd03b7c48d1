// Drags a box from corner to corner and selects the shape in it: the part that the rectangle and the ellipse
// have in common. The command modifier makes the box a square; the space bar moves it. Owned by the canvas
// view; main thread only.
#pragma once

#include <QRectF>

#include "tools/ToolState.h"
#include "tools/selection/SelectionToolHandler.h"

namespace orvanel {

class BoxSelectToolHandler : public SelectionToolHandler {
 public:
  /// `toolState` must outlive the handler.
  BoxSelectToolHandler(std::shared_ptr<SelectionToolState> state, const ToolState& toolState)
      : SelectionToolHandler(std::move(state)), toolState_(toolState) {}

  void flagsChanged(const EventRecord& event, const ToolContext& context) override;

 protected:
  [[nodiscard]] virtual QString actionName() const = 0;
  [[nodiscard]] virtual SelectionPath pathOf(const QRectF& box) const = 0;
  /// The most memory that the shape's mask takes.
  [[nodiscard]] virtual std::uint64_t cost(const Document& document, const PixelRect& box,
                                           float feather) const = 0;
  /// Selects the shape; `box` covers whole pixels and may extend beyond the canvas. `feather` is in pixels.
  virtual void fill(Selection& selection, const PixelRect& box, float feather,
                    const MetalContext& context) const = 0;

  void begin(const EventRecord& event, const ToolContext& context, QPointF viewPoint) override;
  void drag(const EventRecord& event, const ToolContext& context, QPointF viewPoint) override;
  void release(const EventRecord& event, const ToolContext& context) override;

 private:
  /// In document pixels, with both corners exact.
  struct Box {
    QPointF topLeft;
    QPointF bottomRight;
    /// The whole pixels that it covers or touches.
    [[nodiscard]] PixelRect pixels() const;
  };
  [[nodiscard]] Box box(std::uint32_t modifiers) const;
  void refresh(std::uint32_t modifiers, const Document& document) const;

  const ToolState& toolState_;
  // Document pixels.
  QPointF start_;
  QPointF current_;
};

}  // namespace orvanel
