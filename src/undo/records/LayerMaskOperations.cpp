#include "undo/records/LayerMaskOperations.h"

#include <utility>

#include "model/NotificationCenter.h"
#include "undo/HeldBytes.h"

namespace orvanel {

LayerMaskOperation::LayerMaskOperation(QString actionName, const DocumentPtr& document,
                                       std::shared_ptr<Layer> layer, std::shared_ptr<LayerMask> mask)
    : DocumentOperation(std::move(actionName), document), layer_(std::move(layer)), mask_(std::move(mask)) {}

std::int64_t LayerMaskOperation::heldMaskBytes() const {
  return heldBytes(*mask_->maskTexture->texture);
}

void LayerMaskOperation::attachMask(Document& document) const {
  layer_->mask = mask_;
  layer_->maskThumbnailDirty = true;
  NotificationCenter::standard().post(notification::thumbnailsDidUpdate);
  document.isDirty = true;
}

void LayerMaskOperation::detachMask(Document& document) {
  // A change of the canvas gives a layer another mask object: the one that goes now is the one to bring back.
  if (const std::shared_ptr<LayerMask>& current = layer_->mask.value()) mask_ = current;
  layer_->mask = nullptr;
  layer_->maskThumbnailImage = nullptr;
  layer_->maskThumbnailDirty = true;
  layer_->isMaskSelected = false;
  NotificationCenter::standard().post(notification::thumbnailsDidUpdate);
  document.isDirty = true;
}

AddLayerMaskOperation::AddLayerMaskOperation(const DocumentPtr& document, std::shared_ptr<Layer> layer,
                                             std::shared_ptr<LayerMask> mask)
    : LayerMaskOperation(QStringLiteral("Add Layer Mask"), document, std::move(layer), std::move(mask)) {}

void AddLayerMaskOperation::redo() {
  if (const DocumentPtr target = document()) attachMask(*target);
}

void AddLayerMaskOperation::undo() {
  if (const DocumentPtr target = document()) detachMask(*target);
}

RemoveLayerMaskOperation::RemoveLayerMaskOperation(const DocumentPtr& document, std::shared_ptr<Layer> layer,
                                                   std::shared_ptr<LayerMask> mask)
    : LayerMaskOperation(QStringLiteral("Remove Layer Mask"), document, std::move(layer), std::move(mask)) {}

void RemoveLayerMaskOperation::redo() {
  if (const DocumentPtr target = document()) detachMask(*target);
}

void RemoveLayerMaskOperation::undo() {
  if (const DocumentPtr target = document()) attachMask(*target);
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
  if (target == nullptr) return;
  const Texture& pixels = layer().texture.value();
  if (pixels == nullptr) return;
  const std::shared_ptr<LayerMask> mask = layer().mask.value();
  if (mask != nullptr) target->context().applyLayerMask(*pixels, *mask->maskTexture->texture, colorMode_);
  detachMask(*target);
  layer().markThumbnailsDirty();
}

void ApplyLayerMaskOperation::undo() {
  const DocumentPtr target = document();
  if (target == nullptr) return;
  if (const Texture& pixels = layer().texture.value()) beforeSnapshot_->restore(*pixels, target->context());
  attachMask(*target);
  layer().markThumbnailsDirty();
}

std::int64_t ApplyLayerMaskOperation::memoryCost() const {
  return beforeSnapshot_->compressedSize() + (isApplied() ? heldMaskBytes() : 0);
}

}  // namespace orvanel
