#include "app/dialogs/SizeCommands.h"

#include "app/dialogs/Dialogs.h"
#include "app/dialogs/SizeRule.h"

namespace orvanel {

void askAndResizeCanvas(const DocumentPtr& document, Dialogs& dialogs) {
  const std::optional<CanvasSizeEntry> entry = dialogs.askForCanvasSize(document);
  if (!entry) return;
  const auto side = [&](const QString& typed, int current) {
    std::optional<std::int64_t> number = typedNumber(typed);
    if (number && entry->isRelative) *number += current;
    return number;
  };
  const std::optional<QSize> size = allowedSize(side(entry->width, document->canvasWidth.value()),
                                                side(entry->height, document->canvasHeight.value()));
  if (!size) return dialogs.showInvalidDimensions();
  document->resizeCanvas(size->width(), size->height(), entry->anchorX, entry->anchorY);
}

void askAndResizeImage(const DocumentPtr& document, Dialogs& dialogs) {
  const std::optional<ImageSizeEntry> entry = dialogs.askForImageSize(document);
  if (!entry) return;
  const std::optional<QSize> size = allowedSize(typedNumber(entry->width), typedNumber(entry->height));
  if (!size) return dialogs.showInvalidDimensions();
  document->resizeImage(size->width(), size->height(), static_cast<ResampleMethod>(entry->resampleMethod));
}

}  // namespace orvanel
