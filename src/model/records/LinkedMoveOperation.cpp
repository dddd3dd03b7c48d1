#include "model/records/LinkedMoveOperation.h"

#include <utility>

namespace orvanel {

LinkedMoveOperation::LinkedMoveOperation(QString actionName, const DocumentPtr& document,
                                         std::shared_ptr<MoveLayerOperation> pixels,
                                         std::shared_ptr<MoveLayerOperation> mask)
    : DocumentOperation(std::move(actionName), document),
      pixels_(std::move(pixels)),
      mask_(std::move(mask)) {}

void LinkedMoveOperation::redo() {
  pixels_->redo();
  mask_->redo();
}

void LinkedMoveOperation::undo() {
  pixels_->undo();
  mask_->undo();
}

std::int64_t LinkedMoveOperation::memoryCost() const {
  return pixels_->memoryCost() + mask_->memoryCost();
}

UndoableOperation::StepCost LinkedMoveOperation::costToStep() const {
  StepCost cost;
  for (const auto& part : {pixels_, mask_}) {
    // The history tells only this record whether it is applied.
    part->setApplied(isApplied());
    const StepCost step = part->costToStep();
    cost.bytes += step.bytes;
    cost.tiles.data.insert(cost.tiles.data.end(), step.tiles.data.begin(), step.tiles.data.end());
    cost.tiles.uniform.insert(cost.tiles.uniform.end(), step.tiles.uniform.begin(), step.tiles.uniform.end());
  }
  return cost;
}

void LinkedMoveOperation::setReady(bool isReady) {
  pixels_->setReady(isReady);
  mask_->setReady(isReady);
}

}  // namespace orvanel
