#include "model/records/LayerMaskOperations.h"

#include <utility>

#include "model/edit/EditCost.h"
#include "undo/HeldBytes.h"

namespace orvanel {

LayerMaskOperation::LayerMaskOperation(QString actionName, const DocumentPtr& document,
                                       std::shared_ptr<Layer> layer, std::shared_ptr<LayerMask> mask)
    : DocumentOperation(std::move(actionName), document), layer_(std::move(layer)), mask_(std::move(mask)) {}

std::int64_t LayerMaskOperation::heldMaskBytes() const {
  return heldBytes(*mask_->maskTexture->texture);
}

UndoableOperation::StepCost LayerMaskOperation::costToToggle() const {
  const DocumentPtr target = document();
  const ConstTexture pixels = layer_->texture.value();
  if (target == nullptr || pixels == nullptr) return {};
  ChangedTiles tiles = editCost::tilesHidden(*pixels, *mask_->maskTexture->texture);
  return {.bytes = editCost::ofFlattening(*target, {.tiles = std::move(tiles), .layerID = layer_->id})};
}

void LayerMaskOperation::attachMask(DocumentEdit& edit) const {
  edit.setMask(*layer_, mask_);
  edit.makeMaskThumbnail(*layer_);
}

void LayerMaskOperation::detachMask(DocumentEdit& edit) {
  // A change of the canvas replaces the mask object: keep the one that is now detached.
  if (const std::shared_ptr<LayerMask>& current = layer_->mask.value()) mask_ = current;
  edit.setMask(*layer_, nullptr);
  edit.setMaskThumbnail(*layer_, nullptr, true);
  edit.setMaskSelected(*layer_, false);
}

AddLayerMaskOperation::AddLayerMaskOperation(const DocumentPtr& document, std::shared_ptr<Layer> layer,
                                             std::shared_ptr<LayerMask> mask)
    : LayerMaskOperation(QStringLiteral("Add Layer Mask"), document, std::move(layer), std::move(mask)) {}

void AddLayerMaskOperation::redo() {
  const DocumentPtr target = document();
  if (target == nullptr) return;
  DocumentEdit edit(*target, stepKind);
  attachMask(edit);
}

void AddLayerMaskOperation::undo() {
  const DocumentPtr target = document();
  if (target == nullptr) return;
  DocumentEdit edit(*target, stepKind);
  detachMask(edit);
}

RemoveLayerMaskOperation::RemoveLayerMaskOperation(const DocumentPtr& document, std::shared_ptr<Layer> layer,
                                                   std::shared_ptr<LayerMask> mask)
    : LayerMaskOperation(QStringLiteral("Remove Layer Mask"), document, std::move(layer), std::move(mask)) {}

void RemoveLayerMaskOperation::redo() {
  const DocumentPtr target = document();
  if (target == nullptr) return;
  DocumentEdit edit(*target, stepKind);
  detachMask(edit);
}

void RemoveLayerMaskOperation::undo() {
  const DocumentPtr target = document();
  if (target == nullptr) return;
  DocumentEdit edit(*target, stepKind);
  attachMask(edit);
}

ApplyLayerMaskOperation::ApplyLayerMaskOperation(const DocumentPtr& document, std::shared_ptr<Layer> layer,
                                                 std::shared_ptr<LayerMask> mask,
                                                 std::shared_ptr<TextureSnapshot> beforeSnapshot,
                                                 ColorMode colorMode)
    : LayerMaskOperation(QStringLiteral("Apply Layer Mask"), document, std::move(layer), std::move(mask)),
      beforeSnapshot_(std::move(beforeSnapshot)),
      colorMode_(colorMode) {}

void ApplyLayerMaskOperation::redo() {
  const DocumentPtr target = document();
  if (target == nullptr || layer().texture.value() == nullptr) return;
  DocumentEdit edit(*target, stepKind);
  const std::shared_ptr<LayerMask> mask = layer().mask.value();
  if (mask != nullptr) {
    target->context().applyLayerMask(edit.pixels(layer()), *mask->maskTexture->texture, colorMode_);
  }
  detachMask(edit);
  edit.renewThumbnails(layer());
}

void ApplyLayerMaskOperation::undo() {
  const DocumentPtr target = document();
  if (target == nullptr) return;
  DocumentEdit edit(*target, stepKind);
  if (layer().texture.value() != nullptr) beforeSnapshot_->restore(edit.pixels(layer()), target->context());
  attachMask(edit);
  edit.renewThumbnails(layer());
}

UndoableOperation::StepCost ApplyLayerMaskOperation::costToStep() const {
  const ConstTexture pixels = layer().texture.value();
  const std::shared_ptr<LayerMask> mask = layer().mask.value();
  if (pixels == nullptr || (!isApplied() && mask == nullptr)) return {};
  ChangedTiles tiles = isApplied() ? beforeSnapshot_->tilesUnlike(*pixels)
                                   : editCost::tilesMasked(*pixels, *mask->maskTexture->texture);
  const std::uint64_t bytes = tiles.data.size() * pixels->tileBytes();
  return {.bytes = bytes, .tiles = std::move(tiles)};
}

std::int64_t ApplyLayerMaskOperation::memoryCost() const {
  return beforeSnapshot_->compressedSize() + (isApplied() ? heldMaskBytes() : 0);
}

}  // namespace orvanel
