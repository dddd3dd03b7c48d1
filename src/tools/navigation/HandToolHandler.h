// The hand: drags the document in the view. Owned by the canvas view; main thread only.
#pragma once

#include <memory>
#include <optional>

#include "tools/CanvasToolHandler.h"

namespace orvanel {

class HandToolHandler : public CanvasToolHandler {
 public:
  [[nodiscard]] std::set<Tool> supportedTools() const override { return {Tool::hand}; }
  void toolDeactivated(const ToolContext& context) override;
  [[nodiscard]] CursorShape cursor(std::uint32_t modifiers, const ToolContext& context) const override;
  void mouseDown(const EventRecord& event, const ToolContext& context, QPointF viewPoint) override;
  void mouseDragged(const EventRecord& event, const ToolContext& context, QPointF viewPoint) override;
  void mouseUp(const EventRecord& event, const ToolContext& context, QPointF viewPoint) override;

 private:
  struct Drag {
    std::weak_ptr<Document> document;
    QPointF start;        ///< view points
    QPointF offsetStart;  ///< document pixels
    QPointF pointer;      ///< the last position, in view points
    /// Where the last step left the view.
    double zoom = 1.0;
    QPointF offset;
  };

  std::optional<Drag> drag_;
};

}  // namespace orvanel
