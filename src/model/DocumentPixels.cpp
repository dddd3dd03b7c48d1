// The commands on the active node's pixels, and on masks as a layer's part.
#include <utility>

#include "model/Document.h"
#include "model/NotificationCenter.h"
#include "model/records/LayerMaskOperations.h"
#include "model/records/PixelOperations.h"

namespace orvanel {
namespace {

bool editsMask(const Layer& layer) {
  return layer.isMaskSelected.value() && layer.mask.value() != nullptr;
}

/// The colour mode whose layers have this format.
ColorMode modeOfLayers(PixelFormat format) {
  for (const ColorMode mode : allColorModes) {
    if (layerPixelFormat(mode) == format) return mode;
  }
  fatalFault("No color mode has layers of this format");
}

/// Copied pixels in the layer format of the mode; null when a surface can't be made.
Texture pixelsInMode(const PixelClipboard& clipboard, ColorMode mode, const MetalContext& context) {
  const auto width = static_cast<int>(clipboard.width);
  const auto height = static_cast<int>(clipboard.height);
  Texture copied = context.makeTexture(clipboard.pixelFormat, width, height);
  if (copied == nullptr) return nullptr;
  clipboard.snapshot->restore(*copied, context);
  if (clipboard.pixelFormat == layerPixelFormat(mode)) return copied;
  Texture converted = context.makeTexture(layerPixelFormat(mode), width, height);
  if (converted == nullptr) return nullptr;
  context.convertTexture(*copied, *converted, modeOfLayers(clipboard.pixelFormat), mode);
  return converted;
}

/// Takes the mask off; edits go to the pixels again, which posts `activeLayerChanged` if they didn't.
void dropMask(Layer& layer) {
  layer.mask = nullptr;
  layer.maskThumbnailImage = nullptr;
  layer.isMaskSelected = false;
  NotificationCenter::standard().post(notification::thumbnailsDidUpdate);
}

}  // namespace

void Document::fillSelection(const DisplayColor& color, const QString& actionName) {
  const std::shared_ptr<Layer> layer = activeLayer();
  if (layer == nullptr || layer->texture.value() == nullptr) return;
  const Texture target = layer->activeEditTexture();
  PixelEdit edit{.actionName = actionName,
                 .document = shared_from_this(),
                 .layerID = layer->id,
                 .snapshotBefore = TextureSnapshot::captureReady(*target, context_)};
  if (edit.snapshotBefore == nullptr) return;

  const ColorMode mode = colorMode.value();
  const bool useMask = editsMask(*layer);
  const Color4 channels = channelValues(color, mode);
  if (const std::shared_ptr<Selection> selected = activeSelection()) {
    const Surface& weight = *selected->maskTexture->texture;
    if (useMask) {
      context_.fillMaskWithSelection(*target, weight, channels[0]);
    } else {
      context_.fillWithSelection(*target, weight, mode, channels);
    }
    undoStack.push(std::make_shared<FillSelectionOperation>(std::move(edit), useMask));
    layer->markThumbnailsDirty();
  } else {
    undoStack.pushAndRedo(useMask ? std::make_shared<FillLayerOperation>(std::move(edit), channels[0])
                                  : std::make_shared<FillLayerOperation>(std::move(edit), channels, mode));
  }
  markEdited();
}

void Document::clearActive() {
  const std::shared_ptr<Layer> layer = activeLayer();
  if (layer == nullptr) return;
  constexpr DisplayColor transparent{0.0F, 0.0F, 0.0F, 0.0F};
  // A cleared mask hides nothing.
  fillSelection(editsMask(*layer) ? DisplayColor::white() : transparent, QStringLiteral("Clear"));
}

void Document::invertActive() {
  const std::shared_ptr<Layer> layer = activeLayer();
  if (layer == nullptr || layer->texture.value() == nullptr) return;
  const Texture target = layer->activeEditTexture();
  PixelEdit edit{.actionName = QStringLiteral("Invert"),
                 .document = shared_from_this(),
                 .layerID = layer->id,
                 .snapshotBefore = TextureSnapshot::captureReady(*target, context_)};
  if (edit.snapshotBefore == nullptr) return;

  const ColorMode mode = colorMode.value();
  const bool useMask = editsMask(*layer);
  Texture weight;
  if (useMask) {
    context_.invertMask(*target);
  } else {
    // A copy, which shares the tiles: the selection's own surface is rewritten by later commands.
    if (const std::shared_ptr<Selection> selected = activeSelection()) {
      weight = std::make_shared<Surface>(*selected->maskTexture->texture);
    }
    context_.invertColors(*target, mode, weight.get());
  }
  undoStack.push(std::make_shared<InvertLayerOperation>(std::move(edit), mode, std::move(weight), useMask));
  layer->markThumbnailsDirty();
  markEdited();
}

std::optional<PixelClipboard> Document::copyPixels() const {
  const std::shared_ptr<Layer> layer = activeLayer();
  const std::shared_ptr<Selection> selected = activeSelection();
  if (layer == nullptr || layer->texture.value() == nullptr || selected == nullptr) return std::nullopt;
  const Surface& weight = *selected->maskTexture->texture;
  const std::optional<PixelRect> bounds = context_.selectionBounds(weight);
  if (!bounds) return std::nullopt;

  const PixelFormat format = layerPixelFormat(colorMode.value());
  const Texture copy = context_.makeTexture(format, bounds->width, bounds->height);
  if (copy == nullptr) fatalFault("Failed to create layer texture");
  context_.extractMaskedPixels(*layer->texture.value(), *copy, weight, bounds->x, bounds->y,
                               colorMode.value());
  std::shared_ptr<TextureSnapshot> snapshot = TextureSnapshot::capture(*copy, context_);
  if (snapshot == nullptr) return std::nullopt;
  return PixelClipboard{.snapshot = std::move(snapshot),
                        .originX = bounds->x,
                        .originY = bounds->y,
                        .width = bounds->width,
                        .height = bounds->height,
                        .pixelFormat = format};
}

std::optional<PixelClipboard> Document::cutPixels() {
  std::optional<PixelClipboard> copied = copyPixels();
  if (copied) fillSelection({0.0F, 0.0F, 0.0F, 0.0F});
  return copied;
}

void Document::pastePixels(const PixelClipboard& clipboard) {
  auto layer = std::make_shared<Layer>(uniqueNodeName(QStringLiteral("Pasted Layer")));
  const Texture pixels = makeLayerTexture();
  const Texture copied = pixelsInMode(clipboard, colorMode.value(), context_);
  if (copied == nullptr) return;
  orvanel::copyPixels(*copied, copied->bounds(), *pixels, static_cast<int>(clipboard.originX),
                      static_cast<int>(clipboard.originY));
  layer->texture = pixels;
  addNewLayer(layer);
}

void Document::addLayerMask(const std::shared_ptr<Layer>& layer) {
  if (layer->mask.value() != nullptr) return;
  const std::shared_ptr<Selection> selected = activeSelection();
  const std::shared_ptr<MaskTexture> contents =
      selected != nullptr
          ? MaskTexture::create(selected->maskTexture->width, selected->maskTexture->height, context_)
          : MaskTexture::create(canvasWidth.value(), canvasHeight.value(), context_);
  if (contents == nullptr) return;
  context_.fillMask(*contents->texture, 1.0F);
  if (selected != nullptr) contents->copyContents(*selected->maskTexture);

  const auto mask = std::make_shared<LayerMask>(QUuid::createUuid(), contents);
  layer->mask = mask;
  layer->maskThumbnailDirty = true;
  NotificationCenter::standard().post(notification::thumbnailsDidUpdate);
  undoStack.push(std::make_shared<AddLayerMaskOperation>(shared_from_this(), layer, mask));
  markEdited();
}

void Document::applyLayerMask(const std::shared_ptr<Layer>& layer) {
  const std::shared_ptr<LayerMask> mask = layer->mask.value();
  const Texture& pixels = layer->texture.value();
  if (mask == nullptr || pixels == nullptr) return;
  std::shared_ptr<TextureSnapshot> before = TextureSnapshot::captureReady(*pixels, context_);
  if (before == nullptr) return;
  context_.applyLayerMask(*pixels, *mask->maskTexture->texture, colorMode.value());
  dropMask(*layer);
  layer->markThumbnailsDirty();
  undoStack.push(std::make_shared<ApplyLayerMaskOperation>(shared_from_this(), layer, mask, std::move(before),
                                                           colorMode.value()));
  markEdited();
}

void Document::removeLayerMask(const std::shared_ptr<Layer>& layer) {
  const std::shared_ptr<LayerMask> mask = layer->mask.value();
  if (mask == nullptr) return;
  dropMask(*layer);
  undoStack.push(std::make_shared<RemoveLayerMaskOperation>(shared_from_this(), layer, mask));
  markEdited();
}

}  // namespace orvanel
