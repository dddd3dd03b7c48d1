#include "tools/selection/MagicWandToolHandler.h"

#include <algorithm>

namespace orvanel {
namespace {

constexpr float largestTolerance = 255.0F;

}  // namespace

void MagicWandToolHandler::begin(const EventRecord& event, const ToolContext& context, QPointF viewPoint) {
  const std::optional<QPoint> seed = documentPixel(context, viewPoint);
  const DocumentPtr document = context.document.lock();
  if (!seed || document == nullptr) return;
  const MagicWandSettings settings = toolState_.magicWandSettings.value();
  wand_ = MagicWand::press(document, seed->x(), seed->y(), selectionModeOf(event.modifiers), settings);
  if (wand_ == nullptr) return;
  wandDocument_ = document;
  wandDragScreenOrigin_ = viewPoint;
  wandDragOriginalTolerance_ = settings.tolerance;
  context.view->requestRedraw();
}

void MagicWandToolHandler::drag(const EventRecord& /*event*/, const ToolContext& context, QPointF viewPoint) {
  if (!isOpen(context)) return;
  const QPointF dragged = viewPoint - wandDragScreenOrigin_;
  setTolerance(std::clamp(*wandDragOriginalTolerance_ + static_cast<float>(dragged.x() + dragged.y()), 0.0F,
                          largestTolerance));
  wand_->select(toolState_.magicWandSettings.value());
  context.view->requestRedraw();
}

void MagicWandToolHandler::release(const EventRecord& /*event*/, const ToolContext& /*context*/) {
  if (wand_ != nullptr) wand_->release();
  abandon();
}

bool MagicWandToolHandler::isOpen(const ToolContext& context) {
  if (wand_ == nullptr) return false;
  const bool isHere = context.view != nullptr && context.document.lock() == wandDocument_.lock();
  if (isHere && wand_->isOpen()) return true;
  abandon();
  return false;
}

void MagicWandToolHandler::abandon() {
  wand_.reset();
  if (wandDragOriginalTolerance_) setTolerance(*wandDragOriginalTolerance_);
  wandDragOriginalTolerance_ = std::nullopt;
  SelectionToolHandler::abandon();
}

void MagicWandToolHandler::cancel() {
  if (wand_ != nullptr) wand_->takeBack();
  SelectionToolHandler::cancel();
  abandon();
}

void MagicWandToolHandler::setTolerance(float tolerance) {
  MagicWandSettings settings = toolState_.magicWandSettings.value();
  settings.tolerance = tolerance;
  toolState_.magicWandSettings = settings;
}

}  // namespace orvanel
