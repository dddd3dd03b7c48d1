// Records of adding, removing and applying a layer's mask. They hold layer and mask, so that a removed mask
// keeps its pixels through any number of steps. Pushed after the change; each step leaves the document dirty.
// Owned by the history; main thread only.
#pragma once

#include <memory>

#include "model/edit/DocumentEdit.h"
#include "model/records/DocumentOperation.h"
#include "undo/TextureSnapshot.h"

namespace orvanel {

class LayerMaskOperation : public DocumentOperation {
 protected:
  LayerMaskOperation(QString actionName, const DocumentPtr& document, std::shared_ptr<Layer> layer,
                     std::shared_ptr<LayerMask> mask);

  /// The effects of a step over such a record.
  static constexpr EditKind stepKind{.isUnsavedChange = true, .renewsThumbnails = true};

  void attachMask(DocumentEdit& edit) const;
  /// Detaches and keeps the layer's current mask, and makes the pixels the target of edits.
  void detachMask(DocumentEdit& edit);

  [[nodiscard]] Layer& layer() const { return *layer_; }
  /// The record's share of the mask's tiles while the mask is detached.
  [[nodiscard]] std::int64_t heldMaskBytes() const;
  /// What attaching or detaching the mask changes.
  [[nodiscard]] StepCost costToToggle() const;

 private:
  std::shared_ptr<Layer> layer_;
  std::shared_ptr<LayerMask> mask_;
};

class AddLayerMaskOperation final : public LayerMaskOperation {
 public:
  AddLayerMaskOperation(const DocumentPtr& document, std::shared_ptr<Layer> layer,
                        std::shared_ptr<LayerMask> mask);
  void redo() override;
  void undo() override;
  [[nodiscard]] std::int64_t memoryCost() const override { return isApplied() ? 0 : heldMaskBytes(); }
  [[nodiscard]] StepCost costToStep() const override { return costToToggle(); }
};

class RemoveLayerMaskOperation final : public LayerMaskOperation {
 public:
  RemoveLayerMaskOperation(const DocumentPtr& document, std::shared_ptr<Layer> layer,
                           std::shared_ptr<LayerMask> mask);
  void redo() override;
  void undo() override;
  [[nodiscard]] std::int64_t memoryCost() const override { return isApplied() ? heldMaskBytes() : 0; }
  [[nodiscard]] StepCost costToStep() const override { return costToToggle(); }
};

/// A mask that was multiplied into the layer's alpha and removed.
class ApplyLayerMaskOperation final : public LayerMaskOperation {
 public:
  /// `beforeSnapshot` holds the layer's whole surface before the change.
  ApplyLayerMaskOperation(const DocumentPtr& document, std::shared_ptr<Layer> layer,
                          std::shared_ptr<LayerMask> mask, std::shared_ptr<TextureSnapshot> beforeSnapshot,
                          ColorMode colorMode);
  void redo() override;
  void undo() override;
  [[nodiscard]] std::int64_t memoryCost() const override;
  [[nodiscard]] StepCost costToStep() const override;
  void setReady(bool isReady) override { beforeSnapshot_->setReady(isReady); }

 private:
  std::shared_ptr<TextureSnapshot> beforeSnapshot_;
  ColorMode colorMode_;
};

}  // namespace orvanel
