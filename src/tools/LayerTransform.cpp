#include "tools/LayerTransform.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cmath>
#include <utility>

#include "model/records/PixelOperations.h"

namespace orvanel {
namespace {

/// a, b, c, d, tx and ty of the way back; some are not finite where there is none. Qt's own inverse gives up
/// on determinants below 1e-12, which two strong reductions reach.
std::array<float, 6> inverseOf(const QTransform& m) {
  const double determinant = m.m11() * m.m22() - m.m12() * m.m21();
  const auto entry = [determinant](double cofactor) { return static_cast<float>(cofactor / determinant); };
  return {entry(m.m22()),
          entry(-m.m12()),
          entry(-m.m21()),
          entry(m.m11()),
          entry(m.m21() * m.dy() - m.m22() * m.dx()),
          entry(m.m12() * m.dx() - m.m11() * m.dy())};
}

}  // namespace

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

bool LayerTransform::canInvert(const QTransform& matrix) {
  return std::ranges::all_of(inverseOf(matrix), [](float entry) { return std::isfinite(entry); });
}

void LayerTransform::transform(const QTransform& matrix) {
  assert(canInvert(matrix));
  document_->context().affineTransformLayerPixels(originalTexture_, live(), inverseOf(matrix),
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
