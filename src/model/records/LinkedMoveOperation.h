// The record of a move or transform of a layer's pixels that carried the linked mask along: one step for both
// surfaces. Owned by the history; main thread only.
#pragma once

#include <memory>

#include "model/records/PixelOperations.h"

namespace orvanel {

class LinkedMoveOperation final : public DocumentOperation {
 public:
  /// Pushed after the change, as the two records that it joins would be.
  LinkedMoveOperation(QString actionName, const DocumentPtr& document,
                      std::shared_ptr<MoveLayerOperation> pixels, std::shared_ptr<MoveLayerOperation> mask);

  void redo() override;
  void undo() override;
  [[nodiscard]] std::int64_t memoryCost() const override;
  [[nodiscard]] StepCost costToStep() const override;
  void setReady(bool isReady) override;

 private:
  std::shared_ptr<MoveLayerOperation> pixels_;
  std::shared_ptr<MoveLayerOperation> mask_;
};

}  // namespace orvanel
