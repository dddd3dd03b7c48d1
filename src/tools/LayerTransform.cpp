#include "tools/LayerTransform.h"

#include <array>
#include <cassert>
#include <utility>

#include "undo/records/PixelOperations.h"

namespace orvanel {

std::unique_ptr<LayerTransform> LayerTransform::begin(const DocumentPtr& document,
                                                      const QString& actionName) {
  std::shared_ptr<Layer> layer = document->activeLayer();
  if (layer == nullptr || layer->isLocked.value()) return nullptr;
  const Texture target = layer->activeEditTexture();
  if (target == nullptr) return nullptr;
  const bool useMask = target != layer->texture.value();
  const std::optional<PixelRect> content =
      document->context().layerContentBounds(*target, document->colorMode.value(), useMask);
  if (!content) return nullptr;
  std::shared_ptr<MoveLayerOperation> record = MoveLayerOperation::create(document, *layer, useMask);
  if (record != nullptr) record->setActionName(actionName);
  return std::unique_ptr<LayerTransform>(
      new LayerTransform(document, std::move(layer), *content, std::move(record)));
}

LayerTransform::LayerTransform(const DocumentPtr& document, std::shared_ptr<Layer> layer,
                               PixelRect contentRect, std::shared_ptr<MoveLayerOperation> record)
    : document_(document),
      layer_(std::move(layer)),
      target_(layer_->activeEditTexture()),
      originalTexture_(*target_),
      contentRect_(contentRect),
      undoOp_(std::move(record)) {}

LayerTransform::~LayerTransform() = default;

void LayerTransform::translate(int dx, int dy) {
  document_->context().translateLayerPixels(originalTexture_, live(), dx, dy, document_->colorMode.value());
  document_->needsCompositing = true;
}

void LayerTransform::scaleTo(const QRectF& box) {
  const std::array from{static_cast<float>(contentRect_.x), static_cast<float>(contentRect_.y),
                        static_cast<float>(contentRect_.width), static_cast<float>(contentRect_.height)};
  const std::array to{static_cast<float>(box.x()), static_cast<float>(box.y()),
                      static_cast<float>(box.width()), static_cast<float>(box.height())};
  document_->context().scaleLayerRegion(originalTexture_, live(), from, to, document_->colorMode.value());
  document_->needsCompositing = true;
}

void LayerTransform::rotate(float angle) {
  const float centerX = static_cast<float>(contentRect_.x) + static_cast<float>(contentRect_.width) * 0.5F;
  const float centerY = static_cast<float>(contentRect_.y) + static_cast<float>(contentRect_.height) * 0.5F;
  document_->context().rotateLayerPixels(originalTexture_, live(), centerX, centerY, angle,
                                         document_->colorMode.value());
  document_->needsCompositing = true;
}

void LayerTransform::transform(const QTransform& matrix) {
  assert(matrix.isInvertible());
  const QTransform inverse = matrix.inverted();
  const std::array record{static_cast<float>(inverse.m11()), static_cast<float>(inverse.m12()),
                          static_cast<float>(inverse.m21()), static_cast<float>(inverse.m22()),
                          static_cast<float>(inverse.dx()),  static_cast<float>(inverse.dy())};
  document_->context().affineTransformLayerPixels(originalTexture_, live(), record,
                                                  document_->colorMode.value());
  document_->needsCompositing = true;
}

void LayerTransform::commit() {
  if (undoOp_ != nullptr) {
    undoOp_->setSnapshotAfter(TextureSnapshot::captureReady(live(), document_->context()));
    document_->undoStack.push(std::exchange(undoOp_, nullptr));
  }
  layer_->markThumbnailsDirty();
  document_->isDirty = true;
  document_->needsCompositing = true;
}

void LayerTransform::cancel() {
  live() = originalTexture_;
  undoOp_ = nullptr;
  document_->needsCompositing = true;
}

}  // namespace orvanel
