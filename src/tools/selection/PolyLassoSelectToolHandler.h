// Selects a polygon whose corners are clicked one after the other. It stays open across clicks until it is
// closed or cancelled. Owned by the canvas view; main thread only.
#pragma once

#include <vector>

#include "tools/selection/SelectionToolHandler.h"

namespace orvanel {

class PolyLassoSelectToolHandler final : public SelectionToolHandler {
 public:
  using SelectionToolHandler::SelectionToolHandler;
  [[nodiscard]] std::set<Tool> supportedTools() const override { return {Tool::polygonalLassoSelect}; }
  void mouseDown(const EventRecord& event, const ToolContext& context, QPointF viewPoint) override;
  void mouseMoved(const EventRecord& event, const ToolContext& context, QPointF viewPoint) override;
  bool keyDown(const EventRecord& event, const ToolContext& context) override;
  void flagsChanged(const EventRecord& event, const ToolContext& context) override;
  /// The corners so far, in document pixels.
  [[nodiscard]] const std::vector<QPointF>& polyPoints() const { return polyPoints_; }

 protected:
  void begin(const EventRecord& event, const ToolContext& context, QPointF viewPoint) override;
  void drag(const EventRecord& event, const ToolContext& context, QPointF viewPoint) override;
  /// Corners are made by presses alone.
  void release(const EventRecord& /*event*/, const ToolContext& /*context*/) override {}
  void abandon() override;

 private:
  void placeCorner(const EventRecord& event, const ToolContext& context, QPointF viewPoint);
  void close(std::uint32_t modifiers, const ToolContext& context);
  void removeLastCorner();
  void refresh();

  std::vector<QPointF> polyPoints_;
  QPointF pointer_;  ///< view points
};

}  // namespace orvanel
