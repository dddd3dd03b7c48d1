// Commands on the active node's pixels, and on layer masks.
#include <QCoreApplication>
#include <utility>
#include <vector>

#include "model/Document.h"
#include "model/edit/DocumentEdit.h"
#include "model/edit/EditCost.h"
#include "model/records/LayerMaskOperations.h"
#include "model/records/PixelOperations.h"

namespace orvanel {
namespace {

/// The colour mode whose layers have this format.
ColorMode modeOfLayers(PixelFormat format) {
  for (const ColorMode mode : allColorModes) {
    if (layerPixelFormat(mode) == format) return mode;
  }
  fatalFault("No color mode has layers of this format");
}

/// Copied pixels in the mode's layer format; null if a surface can't be made.
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

/// Whether this very layer is one of the document's: a caller may still hold one that was removed.
bool isInTree(const Document& document, const Layer& layer) {
  const std::optional<LayerNode> node = document.findNode(layer.id);
  return node && node->layer().get() == &layer;
}

/// Removes the mask and makes the pixels the target of edits.
void dropMask(DocumentEdit& edit, Layer& layer) {
  edit.setMask(layer, nullptr);
  edit.setMaskThumbnail(layer, nullptr, layer.maskThumbnailDirty.value());
  edit.setMaskSelected(layer, false);
}

}  // namespace

void Document::fillSelection(const DisplayColor& color, const QString& actionName) {
  DocumentEdit edit(*this, editKind::contents);
  const std::shared_ptr<Layer> layer = activeLayer();
  if (layer == nullptr || layer->texture.value() == nullptr) return;
  const SurfaceKind kind = layer->editsMask() ? SurfaceKind::mask : SurfaceKind::pixels;
  const std::shared_ptr<const Selection> selected = activeSelection();
  const Surface& standing = *layer->surface(kind);
  const bool isClearing = kind == SurfaceKind::pixels && color.alpha == 0.0F;
  ChangedTiles tiles = isClearing ? editCost::tilesCleared(standing) : editCost::tilesFilled(standing);
  if (selected != nullptr) tiles = editCost::tilesBlended(standing, *selected->maskTexture->texture);
  if (!edit.admits(editCost::ofTiles(*this, standing, {tiles, layer->id}))) return;
  PixelEdit record{.actionName = actionName,
                   .document = shared_from_this(),
                   .layerID = layer->id,
                   .snapshotBefore = TextureSnapshot::captureReady(*layer->surface(kind), context_)};
  if (record.snapshotBefore == nullptr) return;

  const ColorMode mode = colorMode.value();
  const Color4 channels = channelValues(color, mode);
  if (selected != nullptr) {
    const Surface& weight = *selected->maskTexture->texture;
    if (kind == SurfaceKind::mask) {
      context_.fillMaskWithSelection(edit.surface(*layer, kind), weight, channels[0]);
    } else {
      context_.fillWithSelection(edit.surface(*layer, kind), weight, mode, channels);
    }
    edit.record(std::make_shared<FillSelectionOperation>(std::move(record), kind));
  } else if (kind == SurfaceKind::mask) {
    edit.recordAndRedo(std::make_shared<FillLayerOperation>(std::move(record), channels[0]));
  } else {
    edit.recordAndRedo(std::make_shared<FillLayerOperation>(std::move(record), channels, mode));
  }
}

void Document::clearActive() {
  const std::shared_ptr<Layer> layer = activeLayer();
  if (layer == nullptr) return;
  constexpr DisplayColor transparent{0.0F, 0.0F, 0.0F, 0.0F};
  // A cleared mask hides nothing.
  fillSelection(layer->editsMask() ? DisplayColor::white() : transparent, QStringLiteral("Clear"));
}

void Document::invertActive() {
  DocumentEdit edit(*this, editKind::contents);
  const std::shared_ptr<Layer> layer = activeLayer();
  if (layer == nullptr || layer->texture.value() == nullptr) return;
  const SurfaceKind kind = layer->editsMask() ? SurfaceKind::mask : SurfaceKind::pixels;
  const std::shared_ptr<const Selection> selected = kind == SurfaceKind::mask ? nullptr : activeSelection();
  const Surface& standing = *layer->surface(kind);
  const ChangedTiles tiles = editCost::tilesRewritten(
      standing, selected != nullptr ? selected->maskTexture->texture.get() : nullptr);
  if (!edit.admits(editCost::ofTiles(*this, standing, {tiles, layer->id}))) return;
  PixelEdit record{.actionName = QStringLiteral("Invert"),
                   .document = shared_from_this(),
                   .layerID = layer->id,
                   .snapshotBefore = TextureSnapshot::captureReady(*layer->surface(kind), context_)};
  if (record.snapshotBefore == nullptr) return;

  const ColorMode mode = colorMode.value();
  Texture weight;
  if (kind == SurfaceKind::mask) {
    context_.invertMask(edit.surface(*layer, kind));
  } else {
    // A copy that shares the tiles: later commands rewrite the selection's own surface.
    if (selected != nullptr) weight = std::make_shared<Surface>(*selected->maskTexture->texture);
    context_.invertColors(edit.surface(*layer, kind), mode, weight.get());
  }
  edit.record(std::make_shared<InvertLayerOperation>(std::move(record), mode, std::move(weight), kind));
}

std::optional<PixelClipboard> Document::copyPixels() {
  const std::shared_ptr<Layer> layer = activeLayer();
  const std::shared_ptr<const Selection> selected = activeSelection();
  if (layer == nullptr || layer->texture.value() == nullptr || selected == nullptr) return std::nullopt;
  settle();
  const Surface& weight = *selected->maskTexture->texture;
  const std::optional<PixelRect> bounds = context_.selectionBounds(weight);
  if (!bounds || !admitsEdit(editCost::ofCopy(*layer->texture.value(), weight, *bounds))) return std::nullopt;

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

bool Document::pastePixels(const PixelClipboard& clipboard) {
  DocumentEdit edit(*this, editKind::addition);
  if (!edit.admits(editCost::ofPaste(*this, clipboard))) return false;
  const Texture pixels = makeLayerTexture();
  const Texture copied = pixelsInMode(clipboard, colorMode.value(), context_);
  if (copied == nullptr) return false;
  orvanel::copyPixels(*copied, copied->bounds(), *pixels, static_cast<int>(clipboard.originX),
                      static_cast<int>(clipboard.originY));
  addNewLayer(
      edit,
      std::make_shared<Layer>(
          NodeValues{.name = uniqueNodeName(QCoreApplication::translate("names", "Pasted Layer"))}, pixels));
  return true;
}

void Document::addLayerMask(const std::shared_ptr<Layer>& layer) {
  DocumentEdit edit(*this, editKind::addition);
  if (!isInTree(*this, *layer) || layer->mask.value() != nullptr) return;
  const std::shared_ptr<const Selection> selected = activeSelection();
  // The mask shares the selection's tiles, but the layer is flattened under it.
  const ConstTexture pixels = layer->texture.value();
  const ChangedTiles masked = selected != nullptr && pixels != nullptr
                                  ? editCost::tilesHidden(*pixels, *selected->maskTexture->texture)
                                  : ChangedTiles{};
  if (!edit.admits(editCost::ofFlattening(*this, {masked, layer->id}))) return;
  const std::shared_ptr<MaskTexture> contents =
      selected != nullptr
          ? MaskTexture::create(selected->maskTexture->width, selected->maskTexture->height, context_)
          : MaskTexture::create(canvasWidth.value(), canvasHeight.value(), context_);
  if (contents == nullptr) return;
  context_.fillMask(contents->pixels(), 1.0F);
  if (selected != nullptr) contents->copyContents(*selected->maskTexture);

  const auto mask = std::make_shared<LayerMask>(QUuid::createUuid(), contents);
  edit.setMask(*layer, mask);
  edit.makeMaskThumbnail(*layer);
  edit.record(std::make_shared<AddLayerMaskOperation>(shared_from_this(), layer, mask));
}

void Document::applyLayerMask(const std::shared_ptr<Layer>& layer) {
  DocumentEdit edit(*this, editKind::contents);
  const std::shared_ptr<LayerMask> mask = layer->mask.value();
  const ConstTexture pixels = layer->texture.value();
  if (!isInTree(*this, *layer) || mask == nullptr || pixels == nullptr) return;
  const ChangedTiles masked = editCost::tilesMasked(*pixels, *mask->maskTexture->texture);
  if (!edit.admits(editCost::ofTiles(*this, *pixels, {masked, layer->id}))) return;
  std::shared_ptr<TextureSnapshot> before = TextureSnapshot::captureReady(*pixels, context_);
  if (before == nullptr) return;
  context_.applyLayerMask(edit.pixels(*layer), *mask->maskTexture->texture, colorMode.value());
  dropMask(edit, *layer);
  edit.record(std::make_shared<ApplyLayerMaskOperation>(shared_from_this(), layer, mask, std::move(before),
                                                        colorMode.value()));
}

void Document::removeLayerMask(const std::shared_ptr<Layer>& layer) {
  DocumentEdit edit(*this, editKind::contents);
  const std::shared_ptr<LayerMask> mask = layer->mask.value();
  if (!isInTree(*this, *layer) || mask == nullptr) return;
  if (!edit.admits(editCost::ofFlatteningTree(*this, {.masks = {{layer->id, false}}}))) return;
  dropMask(edit, *layer);
  edit.record(std::make_shared<RemoveLayerMaskOperation>(shared_from_this(), layer, mask));
}

}  // namespace orvanel
