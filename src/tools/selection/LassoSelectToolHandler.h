// Selects what the pointer draws around. Owned by the canvas view; main thread only.
#pragma once

#include <vector>

#include "tools/selection/SelectionToolHandler.h"

namespace orvanel {

class LassoSelectToolHandler final : public SelectionToolHandler {
 public:
  using SelectionToolHandler::SelectionToolHandler;
  [[nodiscard]] std::set<Tool> supportedTools() const override { return {Tool::lassoSelect}; }
  /// The outline is what the pointer draws, not where it was at the last frame.
  [[nodiscard]] bool needsEveryPosition() const override { return true; }
  /// The outline so far, in document pixels.
  [[nodiscard]] const std::vector<QPointF>& lassoPoints() const { return lassoPoints_; }

 protected:
  void begin(const EventRecord& event, const ToolContext& context, QPointF viewPoint) override;
  void drag(const EventRecord& event, const ToolContext& context, QPointF viewPoint) override;
  void release(const EventRecord& event, const ToolContext& context) override;

 private:
  std::vector<QPointF> lassoPoints_;
};

/// An outline as the kernels take it.
[[nodiscard]] std::vector<PolygonPoint> polygonOf(const std::vector<QPointF>& documentPoints);

}  // namespace orvanel
