#include "undo/records/PixelOperations.h"

#include <utility>

#include "undo/HeldBytes.h"

namespace orvanel {
namespace {

/// The surface that edits of the pixels or of the mask go to; none when the layer has no such surface.
Texture targetSurface(const Layer& layer, bool useMask) {
  if (!useMask) return layer.texture.value();
  const std::shared_ptr<LayerMask>& mask = layer.mask.value();
  return mask != nullptr ? mask->maskTexture->texture : nullptr;
}

}  // namespace

PixelOperation::PixelOperation(PixelEdit edit, bool useMask)
    : DocumentOperation(std::move(edit.actionName), edit.document),
      layerID_(edit.layerID),
      snapshotBefore_(std::move(edit.snapshotBefore)),
      useMask_(useMask) {}

void PixelOperation::redo() {
  perform(&PixelOperation::redoOn);
}

void PixelOperation::undo() {
  perform(&PixelOperation::undoOn);
}

void PixelOperation::perform(void (PixelOperation::*step)(Target)) {
  const DocumentPtr target = document();
  if (target == nullptr) return;
  const std::optional<LayerNode> node = target->findNode(layerID_);
  const std::shared_ptr<Layer> layer = node ? node->layer() : nullptr;
  if (layer == nullptr) return;
  const Texture surface = targetSurface(*layer, useMask_);
  if (surface == nullptr) return;
  (this->*step)({.document = *target, .surface = *surface});
  layer->markThumbnailsDirty();
}

void PixelOperation::undoOn(Target target) {
  restoreBefore(target);
}

void PixelOperation::restoreBefore(Target target) const {
  snapshotBefore_->restore(target.surface, target.document.context());
}

FillLayerOperation::FillLayerOperation(PixelEdit edit, const Color4& fillColor, ColorMode colorMode)
    : PixelOperation(std::move(edit), false), fillColor_(fillColor), colorMode_(colorMode) {}

FillLayerOperation::FillLayerOperation(PixelEdit edit, float maskFillValue)
    : PixelOperation(std::move(edit), true), maskFillValue_(maskFillValue) {}

void FillLayerOperation::redoOn(Target target) {
  const MetalContext& context = target.document.context();
  if (useMask()) {
    context.fillMask(target.surface, maskFillValue_);
  } else {
    context.clearTexture(target.surface, colorMode_, fillColor_);
  }
}

ClearLayerOperation::ClearLayerOperation(PixelEdit edit, ColorMode colorMode)
    : PixelOperation(std::move(edit), false), colorMode_(colorMode) {}

void ClearLayerOperation::redoOn(Target target) {
  target.document.context().clearTexture(target.surface, colorMode_, {});
}

InvertLayerOperation::InvertLayerOperation(PixelEdit edit, ColorMode colorMode, Texture selectionTexture,
                                           bool useMask)
    : PixelOperation(std::move(edit), useMask),
      colorMode_(colorMode),
      selectionTexture_(std::move(selectionTexture)) {}

std::int64_t InvertLayerOperation::memoryCost() const {
  return PixelOperation::memoryCost() + (selectionTexture_ != nullptr ? heldBytes(*selectionTexture_) : 0);
}

void InvertLayerOperation::redoOn(Target target) {
  // Inverting twice is no change: begin from the pixels of the time, whatever stands there now.
  restoreBefore(target);
  const MetalContext& context = target.document.context();
  if (useMask()) {
    context.invertMask(target.surface);
  } else {
    context.invertColors(target.surface, colorMode_, selectionTexture_.get());
  }
}

void StoredResultOperation::redoOn(Target target) {
  if (snapshotAfter_ != nullptr) snapshotAfter_->restore(target.surface, target.document.context());
}

std::int64_t StoredResultOperation::memoryCost() const {
  return PixelOperation::memoryCost() + (snapshotAfter_ != nullptr ? snapshotAfter_->compressedSize() : 0);
}

void StoredResultOperation::setReady(bool isReady) {
  PixelOperation::setReady(isReady);
  if (snapshotAfter_ != nullptr) snapshotAfter_->setReady(isReady);
}

void LazyResultOperation::undoOn(Target target) {
  if (snapshotAfter() == nullptr) {
    setSnapshotAfter(TextureSnapshot::captureReady(target.surface, target.document.context()));
  }
  restoreBefore(target);
}

std::shared_ptr<MoveLayerOperation> MoveLayerOperation::create(const DocumentPtr& document,
                                                               const Layer& layer, bool useMask) {
  const Texture surface = targetSurface(layer, useMask);
  if (surface == nullptr) return nullptr;
  std::shared_ptr<TextureSnapshot> before = TextureSnapshot::captureReady(*surface, document->context());
  if (before == nullptr) return nullptr;
  PixelEdit edit{.actionName = QStringLiteral("Move"),
                 .document = document,
                 .layerID = layer.id,
                 .snapshotBefore = std::move(before)};
  return std::shared_ptr<MoveLayerOperation>(new MoveLayerOperation(std::move(edit), useMask));
}

}  // namespace orvanel
