#include "io/ImageDecoder.h"

#include <QColorSpace>
#include <QImageReader>
#include <algorithm>
#include <mutex>

#include "io/HeifDecoder.h"
#include "io/ImageHeader.h"
#include "io/MemoryLimit.h"
#include "raster/ColorMode.h"

namespace orvanel {
namespace {

constexpr int largestImageMebibytes = maximumCanvasSide / 1024 * (maximumCanvasSide / 1024) * 8;

/// The reader's own limit is far below the largest canvas.
void raiseReaderLimit() {
  static std::once_flag once;
  std::call_once(once, [] { QImageReader::setAllocationLimit(largestImageMebibytes); });
}

QString tooLarge() {
  return QStringLiteral("The image is larger than %1 pixels on a side.").arg(maximumCanvasSide);
}

ImageTraits traitsOf(const QImage& image) {
  switch (image.format()) {
    case QImage::Format_Mono:
    case QImage::Format_MonoLSB:
    case QImage::Format_Grayscale8:
      return {.isMonochrome = true, .bitsPerComponent = 8, .bitsPerPixel = 8};
    case QImage::Format_Grayscale16:
      return {.isMonochrome = true, .bitsPerComponent = 16, .bitsPerPixel = 16};
    default:
      break;
  }
  const QPixelFormat format = image.pixelFormat();
  // Palettes hold colours of 8 bits a component, whatever their indexes take.
  const bool deep = format.colorModel() != QPixelFormat::Indexed && format.redSize() > 8;
  return {.isMonochrome = false, .bitsPerComponent = deep ? 16 : 8, .bitsPerPixel = deep ? 64 : 32};
}

/// Straight 8-bit colour in sRGB.
QImage displayReady(QImage image) {
  const QImage::Format wanted = image.hasAlphaChannel() ? QImage::Format_ARGB32 : QImage::Format_RGB32;
  const QColorSpace profile = image.colorSpace();
  const QColorSpace display(QColorSpace::SRgb);
  const bool isGreyFormat = traitsOf(image).isMonochrome;
  if (profile.isValid() && profile != display && !isGreyFormat) image.convertToColorSpace(display);
  image.convertTo(wanted);
  return image;
}

bool isHeif(const QString& path) {
  const QString name = path.toLower();
  return name.endsWith(QLatin1String(".heic")) || name.endsWith(QLatin1String(".heif"));
}

}  // namespace

Described<DecodedImage> decodeImageFile(const QString& path) {
  raiseReaderLimit();
  QImageReader reader(path);
  reader.setDecideFormatFromContent(true);
  reader.setAutoTransform(true);
  if (!reader.canRead() && isHeif(path)) {
    auto heif = decodeHeif(path);
    if (!heif) return because(heif.error());
    ImageTraits traits = traitsOf(heif->image);
    traits.bitsPerComponent = heif->bitsPerComponent;
    return DecodedImage{displayReady(std::move(heif->image)), traits};
  }
  const QSize announced = reader.size();
  if (announced.width() > maximumCanvasSide || announced.height() > maximumCanvasSide)
    return because(tooLarge());
  // The decoded image, the bytes it is copied to, the layer and the composite.
  constexpr std::uint64_t bytesPerImagePixel = 8 + 4 + 8 + 8;
  const auto pixels = static_cast<std::uint64_t>(std::max(0, announced.width())) *
                      static_cast<std::uint64_t>(std::max(0, announced.height()));
  if (!pixelsFitInMemory(pixels * bytesPerImagePixel)) {
    return because(QStringLiteral("The image needs more memory than there is."));
  }
  QImage image = reader.read();
  if (image.isNull()) return because(QStringLiteral("%1.").arg(reader.errorString()));
  if (image.width() > maximumCanvasSide || image.height() > maximumCanvasSide) return because(tooLarge());
  const ImageTraits traits = traitsOfHeader(path).value_or(traitsOf(image));
  return DecodedImage{displayReady(std::move(image)), traits};
}

}  // namespace orvanel
