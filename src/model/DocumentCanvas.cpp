// The commands that replace every surface of a document: its size and its colour mode.
#include <functional>
#include <utility>
#include <vector>

#include "model/Document.h"
#include "model/records/CanvasOperations.h"

namespace orvanel {
namespace {

const QString canvasSizeName = QStringLiteral("Canvas Size");

/// Puts old pixels into a surface of the new size.
using Transfer = std::function<void(const Surface& from, Surface& to)>;

/// Where the old canvas begins on the new one, by the anchor's direction; halves truncate toward zero.
int anchorOffset(int anchor, int growth) {
  if (anchor == -1) return 0;
  return anchor == 1 ? growth : growth / 2;
}

/// The mask at another size, with the same identity; null when its surface can't be made. Where nothing is
/// transferred the new mask shows.
std::shared_ptr<LayerMask> maskAtSize(const LayerMask& old, int width, int height, const Transfer& transfer,
                                      const MetalContext& context) {
  std::shared_ptr<MaskTexture> contents = MaskTexture::create(width, height, context);
  if (contents == nullptr) return nullptr;
  context.fillMask(*contents->texture, 1.0F);
  transfer(*old.maskTexture->texture, *contents->texture);
  auto mask = std::make_shared<LayerMask>(old.id, std::move(contents));
  mask->isEnabled = old.isEnabled.value();
  return mask;
}

void markAllThumbnailsDirty(const Document& document) {
  for (const std::shared_ptr<Layer>& layer : document.allLayers()) layer->markThumbnailsDirty();
}

/// The size commands' common shape. `transfer` moves the pixels of layers and masks alike.
template <typename Record>
void changeSize(const DocumentPtr& document, int width, int height, const QString& actionName,
                const Transfer& transfer) {
  CanvasState before = CanvasState::of(*document);
  const ColorMode mode = document->colorMode.value();
  for (const std::shared_ptr<Layer>& layer : document->allLayers()) {
    if (const Texture old = layer->texture.value()) {
      const Texture pixels = document->makeLayerTexture(mode, width, height);
      transfer(*old, *pixels);
      layer->texture = pixels;
    }
    if (const std::shared_ptr<LayerMask> old = layer->mask.value()) {
      if (auto mask = maskAtSize(*old, width, height, transfer, document->context())) layer->mask = mask;
    }
  }
  document->canvasWidth = width;
  document->canvasHeight = height;
  document->rebuildDisplayTextures();
  document->resetSelection();
  document->undoStack.push(
      std::make_shared<Record>(actionName, document, std::move(before), CanvasState::of(*document)));
  markAllThumbnailsDirty(*document);
}

}  // namespace

void Document::resizeImage(int width, int height, ResampleMethod method) {
  changeSize<CanvasSizeOperation>(
      shared_from_this(), width, height, canvasSizeName,
      [&](const Surface& from, Surface& to) { context_.resampleTexture(from, to, method); });
  markEdited();
}

void Document::resizeCanvas(int width, int height, int anchorX, int anchorY) {
  const int offsetX = anchorOffset(anchorX, width - canvasWidth.value());
  const int offsetY = anchorOffset(anchorY, height - canvasHeight.value());
  changeSize<CanvasSizeOperation>(shared_from_this(), width, height, canvasSizeName,
                                  [&](const Surface& from, Surface& to) {
                                    orvanel::copyPixels(from, from.bounds(), to, offsetX, offsetY);
                                  });
  markEdited();
}

void Document::crop(const PixelRect& rect, const QString& actionName) {
  changeSize<CropOperation>(
      shared_from_this(), rect.width, rect.height, actionName,
      [&](const Surface& from, Surface& to) { orvanel::copyPixels(from, rect, to, 0, 0); });
  markEdited();
}

void Document::cropToSelection() {
  const std::shared_ptr<Selection> selected = activeSelection();
  if (selected == nullptr) return;
  if (const std::optional<PixelRect> bounds = context_.selectionBounds(*selected->maskTexture->texture)) {
    crop(*bounds, QStringLiteral("Crop"));
  }
}

bool Document::trim() {
  const Texture composited = compositedTexture.value();
  if (composited == nullptr) return false;
  const std::optional<PixelRect> bounds = context_.trimBounds(*composited);
  if (!bounds || *bounds == composited->bounds()) return false;
  crop(*bounds, QStringLiteral("Trim"));
  return true;
}

void Document::changeColorMode(ColorMode newMode) {
  const ColorMode oldMode = colorMode.value();
  if (newMode == oldMode) return;
  auto before = ChangeColorModeOperation::State::of(*this);
  std::vector<std::pair<std::shared_ptr<Layer>, Texture>> converted;
  for (const std::shared_ptr<Layer>& layer : allLayers()) {
    const Texture& old = layer->texture.value();
    if (old == nullptr) continue;
    const Texture pixels = makeLayerTexture(newMode, canvasWidth.value(), canvasHeight.value());
    context_.convertTexture(*old, *pixels, oldMode, newMode);
    converted.emplace_back(layer, pixels);
  }
  for (const auto& [layer, pixels] : converted) layer->texture = pixels;
  colorMode = newMode;
  rebuildDisplayTextures();
  undoStack.push(std::make_shared<ChangeColorModeOperation>(shared_from_this(), std::move(before),
                                                            ChangeColorModeOperation::State::of(*this)));
  markAllThumbnailsDirty(*this);
  markEdited();
}

}  // namespace orvanel
