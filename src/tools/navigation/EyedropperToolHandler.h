// The eyedropper: takes the foreground colour, or with Alt the background colour, from what is seen under the
// pointer. Owned by the canvas view; main thread only.
#pragma once

#include "tools/CanvasToolHandler.h"

namespace orvanel {

class EyedropperToolHandler : public CanvasToolHandler {
 public:
  [[nodiscard]] std::set<Tool> supportedTools() const override { return {Tool::eyedropper}; }
  [[nodiscard]] CursorShape cursor(std::uint32_t modifiers, const ToolContext& context) const override;
  void mouseDown(const EventRecord& event, const ToolContext& context, QPointF viewPoint) override;
  void mouseDragged(const EventRecord& event, const ToolContext& context, QPointF viewPoint) override;
};

}  // namespace orvanel
