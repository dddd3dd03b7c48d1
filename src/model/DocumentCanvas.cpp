// Commands that replace every surface of a document: its size and its colour mode.
#include <functional>
#include <utility>
#include <vector>

#include "model/Document.h"
#include "model/edit/DocumentEdit.h"
#include "model/edit/EditCost.h"
#include "model/records/CanvasOperations.h"

namespace orvanel {
namespace {

const QString canvasSizeName = QStringLiteral("Canvas Size");

/// Transfers old pixels to a surface of the new size.
using Transfer = std::function<void(const Surface& from, Surface& to)>;

/// Offset of the old canvas on the new one for an anchor direction; halves truncate toward zero.
int anchorOffset(int anchor, int growth) {
  if (anchor == -1) return 0;
  return anchor == 1 ? growth : growth / 2;
}

/// The mask at another size, with the same identity; null if its surface can't be made. Pixels that aren't
/// transferred are shown.
std::shared_ptr<LayerMask> maskAtSize(const LayerMask& old, int width, int height, const Transfer& transfer,
                                      const MetalContext& context) {
  std::shared_ptr<MaskTexture> contents = MaskTexture::create(width, height, context);
  if (contents == nullptr) return nullptr;
  context.fillMask(contents->pixels(), 1.0F);
  transfer(*old.maskTexture->texture, contents->pixels());
  return std::make_shared<LayerMask>(old.id, std::move(contents), old.isEnabled.value());
}

/// The common part of the size commands. `transfer` moves the pixels of both layers and masks.
template <typename Record>
void changeSize(DocumentEdit& edit, const DocumentPtr& document, int width, int height,
                const QString& actionName, const Transfer& transfer) {
  if (!edit.admits(editCost::ofCanvas(*document, width, height, document->colorMode.value()))) return;
  CanvasState before = CanvasState::of(*document);
  const ColorMode mode = document->colorMode.value();
  edit.setCanvasSize(width, height);
  for (const std::shared_ptr<Layer>& layer : document->allLayers()) {
    if (const ConstTexture old = layer->texture.value()) {
      const Texture pixels = document->makeLayerTexture(mode, width, height);
      transfer(*old, *pixels);
      edit.setTexture(*layer, pixels);
    }
    if (const std::shared_ptr<LayerMask> old = layer->mask.value()) {
      if (const auto mask = maskAtSize(*old, width, height, transfer, document->context())) {
        edit.setMask(*layer, mask);
      }
    }
    edit.renewThumbnails(*layer);
  }
  edit.rebuildDisplayTextures();
  edit.resetSelection();
  edit.record(std::make_shared<Record>(actionName, document, std::move(before), CanvasState::of(*document)));
}

}  // namespace

void Document::resizeImage(int width, int height, ResampleMethod method) {
  DocumentEdit edit(*this, editKind::contents);
  changeSize<CanvasSizeOperation>(
      edit, shared_from_this(), width, height, canvasSizeName,
      [&](const Surface& from, Surface& to) { context_.resampleTexture(from, to, method); });
}

void Document::resizeCanvas(int width, int height, int anchorX, int anchorY) {
  DocumentEdit edit(*this, editKind::contents);
  const int offsetX = anchorOffset(anchorX, width - canvasWidth.value());
  const int offsetY = anchorOffset(anchorY, height - canvasHeight.value());
  changeSize<CanvasSizeOperation>(edit, shared_from_this(), width, height, canvasSizeName,
                                  [&](const Surface& from, Surface& to) {
                                    orvanel::copyPixels(from, from.bounds(), to, offsetX, offsetY);
                                  });
}

void Document::crop(const PixelRect& rect, const QString& actionName) {
  DocumentEdit edit(*this, editKind::contents);
  changeSize<CropOperation>(
      edit, shared_from_this(), rect.width, rect.height, actionName,
      [&](const Surface& from, Surface& to) { orvanel::copyPixels(from, rect, to, 0, 0); });
}

void Document::cropToSelection() {
  DocumentEdit edit(*this, editKind::contents);
  const std::shared_ptr<const Selection> selected = activeSelection();
  if (selected == nullptr) return;
  if (const std::optional<PixelRect> bounds = context_.selectionBounds(*selected->maskTexture->texture)) {
    crop(*bounds, QStringLiteral("Crop"));
  }
}

bool Document::trim() {
  DocumentEdit edit(*this, editKind::contents);
  const ConstTexture flattened = composite();
  if (flattened == nullptr) return false;
  const std::optional<PixelRect> bounds = context_.trimBounds(*flattened);
  if (!bounds || *bounds == flattened->bounds()) return false;
  crop(*bounds, QStringLiteral("Trim"));
  return true;
}

void Document::changeColorMode(ColorMode newMode) {
  DocumentEdit edit(*this, editKind::contents);
  const ColorMode oldMode = colorMode.value();
  if (newMode == oldMode) return;
  if (!edit.admits(editCost::ofCanvas(*this, canvasWidth.value(), canvasHeight.value(), newMode))) return;
  auto before = ChangeColorModeOperation::State::of(*this);
  edit.setColorMode(newMode);
  for (const std::shared_ptr<Layer>& layer : allLayers()) {
    const ConstTexture old = layer->texture.value();
    if (old == nullptr) continue;
    const Texture pixels = makeLayerTexture(newMode, canvasWidth.value(), canvasHeight.value());
    context_.convertTexture(*old, *pixels, oldMode, newMode);
    edit.setTexture(*layer, pixels);
    edit.renewThumbnails(*layer);
  }
  edit.rebuildDisplayTextures();
  edit.record(std::make_shared<ChangeColorModeOperation>(shared_from_this(), std::move(before),
                                                         ChangeColorModeOperation::State::of(*this)));
}

}  // namespace orvanel
