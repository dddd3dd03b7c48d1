#include "model/records/PixelOperations.h"

#include <utility>

#include "model/edit/DocumentEdit.h"
#include "model/edit/EditCost.h"
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

std::shared_ptr<Layer> PixelOperation::layerIn(const Document& document) const {
  const std::optional<LayerNode> node = document.findNode(layerID_);
  const std::shared_ptr<Layer> layer = node ? node->layer() : nullptr;
  return layer != nullptr && layer->surface(kind_) != nullptr ? layer : nullptr;
}

void PixelOperation::perform(void (PixelOperation::*step)(Target)) {
  const DocumentPtr target = document();
  if (target == nullptr) return;
  const std::shared_ptr<Layer> layer = layerIn(*target);
  if (layer == nullptr) return;
  DocumentEdit edit(*target, editKind::record);
  (this->*step)({.document = *target, .surface = edit.surface(*layer, kind_)});
}

UndoableOperation::StepCost PixelOperation::costToStep() const {
  const DocumentPtr target = document();
  const std::shared_ptr<Layer> layer = target != nullptr ? layerIn(*target) : nullptr;
  if (layer == nullptr) return {};
  const Surface& standing = *layer->surface(kind_);
  return isApplied() ? costToRestore(*snapshotBefore_, standing) : costToRedo(standing);
}

UndoableOperation::StepCost PixelOperation::costToRestore(const TextureSnapshot& snapshot,
                                                          const Surface& standing) {
  ChangedTiles tiles = snapshot.tilesUnlike(standing);
  const std::uint64_t bytes = tiles.data.size() * standing.tileBytes();
  return {.bytes = bytes, .tiles = std::move(tiles)};
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

UndoableOperation::StepCost FillLayerOperation::costToRedo(const Surface& standing) const {
  const bool isClearing = !useMask() && fillColor_[3] == 0.0F;
  return {.tiles = isClearing ? editCost::tilesCleared(standing) : editCost::tilesFilled(standing)};
}

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

UndoableOperation::StepCost ClearLayerOperation::costToRedo(const Surface& standing) const {
  return {.tiles = editCost::tilesCleared(standing)};
}

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

UndoableOperation::StepCost InvertLayerOperation::costToRedo(const Surface& standing) const {
  ChangedTiles tiles = editCost::tilesRewritten(standing, selectionTexture_.get());
  const std::uint64_t bytes = tiles.data.size() * standing.tileBytes();
  return {.bytes = bytes, .tiles = std::move(tiles)};
}

void StoredResultOperation::redoOn(Target target) {
  if (snapshotAfter_ != nullptr) snapshotAfter_->restore(target.surface, target.document.context());
}

std::int64_t StoredResultOperation::memoryCost() const {
  return PixelOperation::memoryCost() + (snapshotAfter_ != nullptr ? snapshotAfter_->compressedSize() : 0);
}

UndoableOperation::StepCost StoredResultOperation::costToRedo(const Surface& standing) const {
  return snapshotAfter_ != nullptr ? costToRestore(*snapshotAfter_, standing) : StepCost{};
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
