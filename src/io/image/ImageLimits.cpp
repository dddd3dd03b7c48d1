#include "io/image/ImageLimits.h"

#include <cstdint>

#include "raster/ColorMode.h"
#include "raster/MemoryBudget.h"

namespace orvanel {

Described<void> judgeImageSize(const QSize& size) {
  if (!size.isValid()) return {};
  if (size.width() > maximumCanvasSide || size.height() > maximumCanvasSide) {
    return because(QStringLiteral("The image is larger than %1 pixels on a side.").arg(maximumCanvasSide));
  }
  return judgePixelCount(static_cast<std::uint64_t>(size.width()) *
                         static_cast<std::uint64_t>(size.height()));
}

Described<void> judgePixelCount(std::uint64_t pixels) {
  // The decoded image, the bytes it is copied to, the layer and the composite.
  constexpr std::uint64_t bytesPerImagePixel = 8 + 4 + 8 + 8;
  if (pixelsFitInMemory(pixels * bytesPerImagePixel)) return {};
  return because(notEnoughMemory());
}

QString notEnoughMemory() {
  return QStringLiteral("There is not enough memory for this image.");
}

}  // namespace orvanel
