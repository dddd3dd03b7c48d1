#include "model/records/CanvasOperations.h"

#include <QHash>
#include <algorithm>
#include <numeric>
#include <utility>

#include "model/edit/DocumentEdit.h"
#include "model/edit/EditCost.h"

namespace orvanel {
namespace {

std::int64_t costOf(const SnapshotList& list) {
  return std::accumulate(
      list.begin(), list.end(), std::int64_t{0},
      [](std::int64_t sum, const LayerSnapshot& entry) { return sum + entry.snapshot->compressedSize(); });
}

/// Bytes of the surfaces made from the snapshots and of what they are flattened into, which is new as well.
std::uint64_t costToMake(const Document& document, int width, int height, ColorMode mode,
                         const std::vector<const SnapshotList*>& lists) {
  std::uint64_t bytes = 0;
  std::uint64_t tiles = 0;
  for (const SnapshotList* list : lists) {
    for (const LayerSnapshot& entry : *list) {
      bytes += entry.snapshot->dataBytes();
      tiles += entry.snapshot->dataTileCount();
    }
  }
  return bytes + editCost::ofNewFlattening(document, width, height, mode, tiles);
}

std::int64_t rawSizeOf(const SnapshotList& list) {
  return std::accumulate(
      list.begin(), list.end(), std::int64_t{0},
      [](std::int64_t sum, const LayerSnapshot& entry) { return sum + entry.snapshot->uncompressedSize(); });
}

void setAllReady(const SnapshotList& list, bool isReady) {
  for (const LayerSnapshot& entry : list) entry.snapshot->setReady(isReady);
}

using Capture = std::shared_ptr<TextureSnapshot> (*)(const Surface& surface, const MetalContext& context);

/// Keeps small documents as a whole ready for the next step.
Capture captureFor(const Document& document) {
  if (document.memoryUsage() <= TextureSnapshot::mostReadyBytes) return &TextureSnapshot::captureReady;
  return &TextureSnapshot::capture;
}

using LayersById = QHash<QUuid, std::shared_ptr<Layer>>;

LayersById layersById(const Document& document) {
  LayersById layers;
  for (const std::shared_ptr<Layer>& layer : document.allLayers()) layers.insert(layer->id, layer);
  return layers;
}

/// Gives every listed layer a new surface of this mode and size with the snapshot's pixels.
void restoreLayers(DocumentEdit& edit, const Document& document, const SnapshotList& list, ColorMode mode,
                   int width, int height) {
  const LayersById layers = layersById(document);
  for (const LayerSnapshot& entry : list) {
    const std::shared_ptr<Layer> layer = layers.value(entry.layerID);
    if (layer == nullptr) continue;
    const Texture pixels = document.makeLayerTexture(mode, width, height);
    entry.snapshot->restore(*pixels, document.context());
    edit.setTexture(*layer, pixels);
  }
}

void restoreMasks(DocumentEdit& edit, const Document& document, const CanvasState& state) {
  const MetalContext& context = document.context();
  const LayersById layers = layersById(document);
  for (const LayerSnapshot& entry : state.masks) {
    const std::shared_ptr<Layer> layer = layers.value(entry.layerID);
    const std::shared_ptr<LayerMask> old = layer != nullptr ? layer->mask.value() : nullptr;
    if (old == nullptr) continue;
    std::shared_ptr<MaskTexture> contents = MaskTexture::create(state.width, state.height, context);
    if (contents == nullptr) continue;
    context.fillMask(contents->pixels(), 1.0F);
    entry.snapshot->restore(contents->pixels(), context);
    edit.setMask(*layer, std::make_shared<LayerMask>(QUuid::createUuid(), std::move(contents),
                                                     old->isEnabled.value()));
  }
}

void renewAllThumbnails(DocumentEdit& edit, const Document& document) {
  for (const std::shared_ptr<Layer>& layer : document.allLayers()) edit.renewThumbnails(*layer);
}

}  // namespace

SnapshotList snapshotsOfLayers(const Document& document) {
  SnapshotList list;
  const Capture capture = captureFor(document);
  for (const std::shared_ptr<Layer>& layer : document.allLayers()) {
    const ConstTexture& pixels = layer->texture.value();
    if (pixels == nullptr) continue;
    if (auto snapshot = capture(*pixels, document.context())) {
      list.push_back({.layerID = layer->id, .snapshot = std::move(snapshot)});
    }
  }
  return list;
}

SnapshotList snapshotsOfMasks(const Document& document) {
  SnapshotList list;
  const Capture capture = captureFor(document);
  for (const std::shared_ptr<Layer>& layer : document.allLayers()) {
    const std::shared_ptr<LayerMask>& mask = layer->mask.value();
    if (mask == nullptr) continue;
    if (auto snapshot = capture(*mask->maskTexture->texture, document.context())) {
      list.push_back({.layerID = layer->id, .snapshot = std::move(snapshot)});
    }
  }
  return list;
}

CanvasState CanvasState::of(const Document& document) {
  return {.width = document.canvasWidth.value(),
          .height = document.canvasHeight.value(),
          .layers = snapshotsOfLayers(document),
          .masks = snapshotsOfMasks(document)};
}

void CanvasState::setReady(bool isReady) const {
  const bool isSmall = rawSizeOf(layers) + rawSizeOf(masks) <= TextureSnapshot::mostReadyBytes;
  setAllReady(layers, isReady && isSmall);
  setAllReady(masks, isReady && isSmall);
}

ResizeOperation::ResizeOperation(QString actionName, const DocumentPtr& document, CanvasState before,
                                 CanvasState after)
    : DocumentOperation(std::move(actionName), document),
      colorMode_(document->colorMode.value()),
      before_(std::move(before)),
      after_(std::move(after)) {}

void ResizeOperation::apply(const CanvasState& state) const {
  const DocumentPtr target = document();
  if (target == nullptr) return;
  DocumentEdit edit(*target, editKind::record);
  edit.setCanvasSize(state.width, state.height);
  restoreLayers(edit, *target, state.layers, colorMode_, state.width, state.height);
  restoreMasks(edit, *target, state);
  edit.rebuildDisplayTextures();
  edit.resetSelection();
  renewAllThumbnails(edit, *target);
}

void ResizeOperation::setReady(bool isReady) {
  before_.setReady(isReady);
  after_.setReady(isReady);
}

std::int64_t ResizeOperation::memoryCost() const {
  return costOf(before_.layers) + costOf(before_.masks) + costOf(after_.layers) + costOf(after_.masks);
}

UndoableOperation::StepCost ResizeOperation::costToStep() const {
  const DocumentPtr target = document();
  if (target == nullptr) return {};
  const CanvasState& made = isApplied() ? before_ : after_;
  return {.bytes = costToMake(*target, made.width, made.height, colorMode_, {&made.layers, &made.masks})};
}

ChangeColorModeOperation::State ChangeColorModeOperation::State::of(const Document& document) {
  return {.colorMode = document.colorMode.value(), .layers = snapshotsOfLayers(document)};
}

void ChangeColorModeOperation::State::setReady(bool isReady) const {
  setAllReady(layers, isReady && rawSizeOf(layers) <= TextureSnapshot::mostReadyBytes);
}

ChangeColorModeOperation::ChangeColorModeOperation(const DocumentPtr& document, State before, State after)
    : DocumentOperation(QStringLiteral("Change Color Mode"), document),
      canvasWidth_(document->canvasWidth.value()),
      canvasHeight_(document->canvasHeight.value()),
      before_(std::move(before)),
      after_(std::move(after)) {}

void ChangeColorModeOperation::apply(const State& state) const {
  const DocumentPtr target = document();
  if (target == nullptr) return;
  DocumentEdit edit(*target, editKind::record);
  edit.setColorMode(state.colorMode);
  restoreLayers(edit, *target, state.layers, state.colorMode, canvasWidth_, canvasHeight_);
  edit.rebuildDisplayTextures();
  renewAllThumbnails(edit, *target);
}

void ChangeColorModeOperation::setReady(bool isReady) {
  before_.setReady(isReady);
  after_.setReady(isReady);
}

UndoableOperation::StepCost ChangeColorModeOperation::costToStep() const {
  const DocumentPtr target = document();
  if (target == nullptr) return {};
  const State& made = isApplied() ? before_ : after_;
  return {.bytes = costToMake(*target, canvasWidth_, canvasHeight_, made.colorMode, {&made.layers})};
}

std::int64_t ChangeColorModeOperation::memoryCost() const {
  return costOf(before_.layers) + costOf(after_.layers);
}

}  // namespace orvanel
