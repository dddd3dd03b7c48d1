#include "model/LevelsAdjustment.h"

#include <utility>

#include "undo/records/PixelOperations.h"

namespace orvanel {
namespace {

/// The points are set on the scale of 8 bits in every colour mode.
constexpr float pointScale = 255.0F;

}  // namespace

std::optional<LevelsAdjustment> LevelsAdjustment::begin(const DocumentPtr& document) {
  const std::shared_ptr<Layer> layer = document->activeLayer();
  if (layer == nullptr || layer->texture.value() == nullptr) return std::nullopt;
  auto before = TextureSnapshot::capture(*layer->texture.value(), document->context());
  if (before == nullptr) return std::nullopt;
  return LevelsAdjustment(document, *layer, std::move(before));
}

LevelsAdjustment::LevelsAdjustment(const DocumentPtr& document, const Layer& layer,
                                   std::shared_ptr<TextureSnapshot> snapshotBefore)
    : document_(document), layerID_(layer.id), snapshotBefore_(std::move(snapshotBefore)) {}

std::shared_ptr<Layer> LevelsAdjustment::layer(const Document& document) const {
  const std::optional<LayerNode> node = document.findNode(layerID_);
  const std::shared_ptr<Layer> found = node ? node->layer() : nullptr;
  return found != nullptr && found->texture.value() != nullptr ? found : nullptr;
}

void LevelsAdjustment::apply(const Levels& levels) {
  const DocumentPtr document = document_.lock();
  const std::shared_ptr<Layer> target = document != nullptr ? layer(*document) : nullptr;
  if (target == nullptr) return;
  const MetalContext& context = document->context();
  Surface& pixels = *target->texture.value();
  snapshotBefore_->restore(pixels, context);
  const std::shared_ptr<Selection> selected = document->activeSelection();
  context.levelsAdjust(pixels, document->colorMode.value(),
                       selected != nullptr ? selected->maskTexture->texture.get() : nullptr,
                       levels.blackPoint / pointScale, levels.whitePoint / pointScale, levels.gamma);
  document->needsCompositing = true;
}

void LevelsAdjustment::commit() {
  const DocumentPtr document = document_.lock();
  const std::shared_ptr<Layer> target = document != nullptr ? layer(*document) : nullptr;
  if (target == nullptr) return;
  auto record = std::make_shared<LevelsOperation>(PixelEdit{.actionName = QStringLiteral("Levels"),
                                                            .document = document,
                                                            .layerID = layerID_,
                                                            .snapshotBefore = snapshotBefore_});
  record->setSnapshotAfter(TextureSnapshot::capture(*target->texture.value(), document->context()));
  document->undoStack.push(std::move(record));
  document->isDirty = true;
  document->needsCompositing = true;
  target->markThumbnailsDirty();
}

void LevelsAdjustment::cancel() {
  const DocumentPtr document = document_.lock();
  const std::shared_ptr<Layer> target = document != nullptr ? layer(*document) : nullptr;
  if (target == nullptr) return;
  snapshotBefore_->restore(*target->texture.value(), document->context());
  document->needsCompositing = true;
  target->markThumbnailsDirty();
}

}  // namespace orvanel
