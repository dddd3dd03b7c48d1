// Selects like colours around the pixel that is pressed; dragging changes the tolerance for the length of
// the gesture. Owned by the canvas view; main thread only.
#pragma once

#include <memory>
#include <optional>

#include "tools/ToolState.h"
#include "tools/selection/MagicWand.h"
#include "tools/selection/SelectionToolHandler.h"

namespace orvanel {

class MagicWandToolHandler final : public SelectionToolHandler {
 public:
  /// `toolState` must outlive the handler.
  MagicWandToolHandler(std::shared_ptr<SelectionToolState> state, ToolState& toolState)
      : SelectionToolHandler(std::move(state)), toolState_(toolState) {}
  [[nodiscard]] std::set<Tool> supportedTools() const override { return {Tool::magicWand}; }

 protected:
  void begin(const EventRecord& event, const ToolContext& context, QPointF viewPoint) override;
  void drag(const EventRecord& event, const ToolContext& context, QPointF viewPoint) override;
  void release(const EventRecord& event, const ToolContext& context) override;
  [[nodiscard]] bool isOpen(const ToolContext& context) override;
  void abandon() override;
  void cancel() override;

 private:
  void setTolerance(float tolerance);

  ToolState& toolState_;
  std::unique_ptr<MagicWand> wand_;
  std::weak_ptr<Document> wandDocument_;
  QPointF wandDragScreenOrigin_;  ///< view points
  /// Set while a scrub may have changed it.
  std::optional<float> wandDragOriginalTolerance_;
};

}  // namespace orvanel
