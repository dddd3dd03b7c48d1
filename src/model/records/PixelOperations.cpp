#include "model/records/PixelOperations.h"

#include <algorithm>
#include <utility>

#include "model/edit/DocumentEdit.h"
#include "undo/HeldBytes.h"

namespace orvanel {
PixelOperation::PixelOperation(PixelEdit edit, SurfaceKind kind)
    : DocumentOperation(std::move(edit.actionName), edit.document),
      layerID_(edit.layerID),
      snapshotBefore_(std::move(edit.snapshotBefore)),
      kind_(kind) {}

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
  if (layer == nullptr || layer->surface(kind_) == nullptr) return;
  DocumentEdit edit(*target, editKind::record);
  (this->*step)({.document = *target, .surface = edit.surface(*layer, kind_)});
}

void PixelOperation::undoOn(Target target) {
  restoreBefore(target);
}

void PixelOperation::restoreBefore(Target target) const {
  snapshotBefore_->restore(target.surface, target.document.context());
}

FillLayerOperation::FillLayerOperation(PixelEdit edit, const Color4& fillColor, ColorMode colorMode)
    : PixelOperation(std::move(edit), SurfaceKind::pixels), fillColor_(fillColor), colorMode_(colorMode) {}

FillLayerOperation::FillLayerOperation(PixelEdit edit, float maskFillValue)
    : PixelOperation(std::move(edit), SurfaceKind::mask), maskFillValue_(maskFillValue) {}

void FillLayerOperation::redoOn(Target target) {
  const MetalContext& context = target.document.context();
  if (useMask()) {
    context.fillMask(target.surface, maskFillValue_);
  } else {
    context.clearTexture(target.surface, colorMode_, fillColor_);
  }
}

ClearLayerOperation::ClearLayerOperation(PixelEdit edit, ColorMode colorMode)
    : PixelOperation(std::move(edit), SurfaceKind::pixels), colorMode_(colorMode) {}

void ClearLayerOperation::redoOn(Target target) {
  target.document.context().clearTexture(target.surface, colorMode_, {});
}

InvertLayerOperation::InvertLayerOperation(PixelEdit edit, ColorMode colorMode, Texture selectionTexture,
                                           SurfaceKind kind)
    : PixelOperation(std::move(edit), kind),
      colorMode_(colorMode),
      selectionTexture_(std::move(selectionTexture)) {}

std::int64_t InvertLayerOperation::memoryCost() const {
  return PixelOperation::memoryCost() + (selectionTexture_ != nullptr ? heldBytes(*selectionTexture_) : 0);
}

void InvertLayerOperation::redoOn(Target target) {
  // Inverting twice would cancel out, so start from the original pixels whatever the surface holds now.
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

std::uint64_t StoredResultOperation::bytesToStep() const {
  const std::uint64_t before = PixelOperation::bytesToStep();
  return snapshotAfter_ != nullptr ? std::max(before, snapshotAfter_->dataBytes()) : before;
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
                                                               const Layer& layer, SurfaceKind kind) {
  const ConstTexture surface = layer.surface(kind);
  if (surface == nullptr) return nullptr;
  std::shared_ptr<TextureSnapshot> before = TextureSnapshot::captureReady(*surface, document->context());
  if (before == nullptr) return nullptr;
  return std::make_shared<MoveLayerOperation>(PixelEdit{.actionName = QStringLiteral("Move"),
                                                        .document = document,
                                                        .layerID = layer.id,
                                                        .snapshotBefore = std::move(before)},
                                              kind);
}

}  // namespace orvanel
