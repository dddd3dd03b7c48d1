#include "io/image/FlatImage.h"

#include <tbb/parallel_for.h>

#include <QBuffer>
#include <QFileInfo>
#include <QImageWriter>
#include <QPainter>
#include <QStringList>
#include <algorithm>
#include <span>
#include <utility>
#include <vector>

#include "io/files/AtomicFile.h"
#include "io/files/FileName.h"
#include "io/files/KnownFile.h"
#include "io/image/GifEncoder.h"
#include "io/image/ImageDecoder.h"
#include "io/image/ImageLimits.h"
#include "io/image/ImageMetadata.h"
#include "io/image/LibraryMessages.h"
#include "io/image/PngWriter.h"
#include "model/DocumentCompositor.h"
#include "raster/MemoryBudget.h"

namespace orvanel {
namespace {

using Format = Document::ImageFileFormat;

FileError loadFailed(QString reason, const Progress& progress = {}) {
  return {DocumentIOError::loadFailed, std::move(reason), progress.isCancelled()};
}

/// QRgb holds blue in its lowest byte, a surface red.
std::uint32_t surfacePixel(QRgb pixel) {
  return (pixel & 0xFF00FF00U) | (pixel >> 16U & 0xFFU) | (pixel & 0xFFU) << 16U;
}

/// Copies the image into an `rgba8Unorm` surface and marks the tiles of an image without alpha as opaque.
/// Works on a row of tiles at a time, and on whole rows of pixels, so that the image is read sequentially.
void fillSurface(const QImage& image, Surface& surface, const Progress& progress) {
  const bool hasAlpha = image.hasAlphaChannel();
  const std::uint32_t opaque = hasAlpha ? 0U : 0xFF000000U;
  tbb::parallel_for(0, surface.tilesDown(), [&](int tileY) {
    if (progress.isCancelled()) return;
    std::vector<std::uint32_t*> tiles;
    for (int tileX = 0; tileX < surface.tilesAcross(); ++tileX) {
      tiles.push_back(
          reinterpret_cast<std::uint32_t*>(surface.overwriteTile(surface.tileIndex(tileX, tileY))));
    }
    const int firstRow = tileY * tileSide;
    const int rows = std::min(tileSide, surface.height() - firstRow);
    for (int y = 0; y < rows; ++y) {
      const auto* in = reinterpret_cast<const QRgb*>(image.constScanLine(firstRow + y));
      int left = surface.width();
      for (std::uint32_t* tile : tiles) {
        const int columns = std::min(tileSide, left);
        std::uint32_t* out = tile + static_cast<std::ptrdiff_t>(y) * tileSide;
        for (int x = 0; x < columns; ++x) out[x] = surfacePixel(in[x] | opaque);
        in += columns;
        left -= columns;
      }
    }
    for (int tileX = 0; tileX < surface.tilesAcross(); ++tileX) {
      const int index = surface.tileIndex(tileX, tileY);
      if (!hasAlpha) surface.setTrait(index, TileTrait::opaque);
      surface.collapseIfUniform(index);
    }
  });
}

/// The composite as straight RGBA8888.
QImage imageOf(const Surface& composite, ColorMode mode, const MetalContext& context) {
  const Surface* bytes = &composite;
  Texture converted;
  if (composite.format() != PixelFormat::rgba8Unorm) {
    converted = context.makeTexture(PixelFormat::rgba8Unorm, composite.width(), composite.height());
    if (converted == nullptr) return {};
    context.convertTexture(composite, *converted, folderColorMode(mode), ColorMode::rgb8);
    bytes = converted.get();
  }
  QImage image(composite.width(), composite.height(), QImage::Format_RGBA8888);
  if (image.isNull()) return image;
  std::byte* const pixels = reinterpret_cast<std::byte*>(image.bits());
  const auto stride = static_cast<std::size_t>(image.bytesPerLine());
  tbb::parallel_for(0, bytes->tilesDown(), [&](int tileY) {
    const PixelRect band =
        PixelRect{0, tileY * tileSide, bytes->width(), tileSide}.intersected(bytes->bounds());
    bytes->readRect(band, pixels + static_cast<std::size_t>(band.y) * stride, stride);
  });
  return image;
}

bool isOpaque(const QImage& image) {
  for (int y = 0; y < image.height(); ++y) {
    const auto* row = reinterpret_cast<const std::uint32_t*>(image.constScanLine(y));
    std::uint32_t together = 0xFF000000U;
    for (int x = 0; x < image.width(); ++x) together &= row[x];
    if (together != 0xFF000000U) return false;
  }
  return true;
}

QImage overWhite(const QImage& image) {
  QImage flat(image.size(), QImage::Format_RGB32);
  flat.setDotsPerMeterX(image.dotsPerMeterX());
  flat.setDotsPerMeterY(image.dotsPerMeterY());
  flat.fill(Qt::white);
  QPainter(&flat).drawImage(0, 0, image);
  return flat;
}

/// Memory that encoders write to until the work is cancelled.
class OutputBuffer final : public QBuffer {
 public:
  explicit OutputBuffer(const Progress& progress) : progress_(progress) {}

 protected:
  qint64 writeData(const char* bytes, qint64 count) override {
    return progress_.isCancelled() ? -1 : QBuffer::writeData(bytes, count);
  }

 private:
  const Progress& progress_;
};

std::optional<QByteArray> encode(const QImage& image, const char* format, const Progress& progress) {
  OutputBuffer buffer(progress);
  buffer.open(QIODevice::WriteOnly);
  QImageWriter writer(&buffer, format);
  if (!writer.write(image)) return std::nullopt;
  return buffer.data();
}

QByteArray pngOf(const QImage& image, const Progress& progress, const ImageMetadata* metadata) {
  const bool hasAlpha = image.hasAlphaChannel();
  return encodePng({.width = image.width(),
                    .height = image.height(),
                    .channels = hasAlpha ? PngChannels::rgba : PngChannels::rgb,
                    .readRow =
                        [&](int y, std::uint8_t* row) {
                          const std::uint8_t* pixels = image.constScanLine(y);
                          if (hasAlpha) {
                            std::copy_n(pixels, static_cast<std::ptrdiff_t>(image.width()) * 4, row);
                            return;
                          }
                          for (int x = 0; x < image.width(); ++x, pixels += 4, row += 3)
                            std::copy_n(pixels, 3, row);
                        },
                    .density = metadata != nullptr ? metadata->density() : std::nullopt},
                   progress);
}

/// `image` is straight RGBA8888, or RGBX8888 if every pixel is opaque.
std::optional<QByteArray> encode(const QImage& image, Format fileType, const Progress& progress,
                                 const ImageMetadata* metadata) {
  switch (fileType) {
    case Format::png:
      return pngOf(image, progress, metadata);
    case Format::jpeg:
      return encode(overWhite(image), "jpeg", progress);
    case Format::tiff:
      return encode(image, "tiff", progress);
    case Format::gif:
      return encodeGif(image, progress);
    case Format::bmp:
      return encode(overWhite(image), "bmp", progress);
  }
  return std::nullopt;
}

/// What the user must know before overwriting the file.
QString warningOf(const DecodedImage& decoded) {
  QStringList sentences;
  if (decoded.isIncomplete) {
    sentences << QStringLiteral("The file is damaged or incomplete: part of the image is missing.");
  }
  if (decoded.pictureCount > 1) {
    sentences << QStringLiteral("Only the first of %1 pictures was opened.").arg(decoded.pictureCount);
  }
  return sentences.join(u' ');
}

QString notEnoughMemoryToWrite() {
  return QStringLiteral("There is not enough memory to write this image.");
}

}  // namespace

std::optional<Format> imageFileFormat(const QString& path) {
  const QString extension = QFileInfo(path).suffix().toLower();
  if (extension == QLatin1String("png")) return Format::png;
  if (extension == QLatin1String("jpg") || extension == QLatin1String("jpeg")) return Format::jpeg;
  if (extension == QLatin1String("tiff") || extension == QLatin1String("tif")) return Format::tiff;
  if (extension == QLatin1String("gif")) return Format::gif;
  if (extension == QLatin1String("bmp")) return Format::bmp;
  return std::nullopt;
}

ColorMode colorMode(const ImageTraits& image) {
  const bool isGrey = image.isMonochrome || image.bitsPerPixel == 8 || image.bitsPerPixel == 16;
  const bool isDeep = image.bitsPerComponent > 8;
  if (isGrey) return isDeep ? ColorMode::grayscale16 : ColorMode::grayscale8;
  return isDeep ? ColorMode::rgb16 : ColorMode::rgb8;
}

FileResult<FlatImage> readFlatImage(const QString& path, const MetalContext& context,
                                    const Progress& progress) {
  constexpr double decodedShare = 0.8;
  Described<DecodedImage> decoded = decodeImageFile(path, progress.part(0.0, decodedShare));
  if (!decoded) return tl::unexpected(loadFailed(decoded.error(), progress));
  progress.tell(decodedShare);
  const QImage& image = decoded->image;
  FlatImage result;
  result.warning = warningOf(*decoded);
  result.mode = colorMode(decoded->traits);
  result.metadata = decoded->metadata;
  result.identity = decoded->identity;
  const Texture staging = context.makeTexture(PixelFormat::rgba8Unorm, image.width(), image.height());
  if (staging == nullptr) return tl::unexpected(loadFailed(notEnoughMemory()));
  fillSurface(image, *staging, progress);
  if (progress.isCancelled()) return tl::unexpected(loadFailed(cancelled().value(), progress));
  decoded->image = QImage();
  if (result.mode == ColorMode::rgb8) {
    result.pixels = staging;
    progress.tell(1.0);
    return result;
  }
  result.pixels = context.makeTexture(layerPixelFormat(result.mode), staging->width(), staging->height());
  if (result.pixels == nullptr) fatalFault("Failed to create layer texture");
  context.convertTexture(*staging, *result.pixels, ColorMode::rgb8, result.mode);
  progress.tell(1.0);
  return result;
}

DocumentPtr documentOfFlatImage(const FlatImage& image, const QString& path, MetalContext& context) {
  const QFileInfo file(path);
  const QString name = documentName(path);
  const auto layer =
      std::make_shared<Layer>(NodeValues{.name = name}, std::make_shared<Surface>(*image.pixels));
  DocumentPtr document = Document::create({.name = name,
                                           .width = image.pixels->width(),
                                           .height = image.pixels->height(),
                                           .colorMode = image.mode,
                                           .rootNodes = {layer},
                                           .selectedNodeID = layer->id},
                                          context);
  document->setSource(file.absoluteFilePath(),
                      image.warning.isEmpty() ? imageFileFormat(path) : std::nullopt);
  document->setSourceMetadata(image.metadata);
  if (image.identity) document->setFileMemory(makeKnownFile(file.absoluteFilePath(), *image.identity));
  return document;
}

FileResult<DocumentPtr> openImage(const QString& path, MetalContext& context, const Progress& progress) {
  return readFlatImage(path, context, progress).map([&](const FlatImage& image) {
    return documentOfFlatImage(image, path, context);
  });
}

std::optional<QByteArray> exportImage(const Surface& composite, ColorMode mode, Format fileType,
                                      const MetalContext& context, const Progress& progress,
                                      const ImageMetadata* metadata) {
  QImage image = imageOf(composite, mode, context);
  if (image.isNull() || progress.isCancelled()) return std::nullopt;
  if (isOpaque(image)) image.reinterpretAsFormat(QImage::Format_RGBX8888);
  if (metadata != nullptr && metadata->density()) {
    image.setDotsPerMeterX(metadata->density()->acrossPerMeter);
    image.setDotsPerMeterY(metadata->density()->downPerMeter);
  }
  const LibraryMessages messages;
  if (fileType == Format::tiff) LibraryMessages::catchTiff();
  constexpr double convertedShare = 0.2;
  progress.tell(convertedShare);
  auto bytes = encode(image, fileType, progress.part(convertedShare, 1.0), metadata);
  if (progress.isCancelled()) return std::nullopt;
  if (!bytes) return bytes;
  const bool carriesMetadata =
      fileType == Format::jpeg || fileType == Format::png || fileType == Format::tiff;
  if (metadata != nullptr && carriesMetadata) {
    const QSize size = image.size();
    image = QImage();  // adding metadata needs as much memory again
    bytes = metadata->addedTo(*bytes, size);
  }
  progress.tell(1.0);
  return bytes;
}

FileResult<ReplacedFile> writeFlatImage(const Surface& composite, ColorMode mode, Format fileType,
                                        const QString& path, const MetalContext& context,
                                        const Progress& progress, const ImageMetadata* metadata,
                                        std::optional<FileIdentity> replaced) {
  const auto failed = [&](QString reason) {
    return tl::unexpected(
        FileError{DocumentIOError::exportFailed, std::move(reason), progress.isCancelled()});
  };
  // The image in 8 bits, the encoder's copy of it, and encoded bytes in a growing buffer. Adding metadata to
  // an uncompressed file takes no more: the file, the result and the library's two copies.
  constexpr std::uint64_t bytesPerPixel = 4 + 4 + 2 * 4;
  if (!pixelsFitInMemory(static_cast<std::uint64_t>(composite.width()) *
                         static_cast<std::uint64_t>(composite.height()) * bytesPerPixel)) {
    return failed(notEnoughMemoryToWrite());
  }
  constexpr double encodedShare = 0.9;
  const auto bytes =
      exportImage(composite, mode, fileType, context, progress.part(0.0, encodedShare), metadata);
  if (progress.isCancelled()) return failed(cancelled().value());
  if (!bytes) return failed(QStringLiteral("The image couldn't be encoded in this format."));
  const auto written = replaceFile(
      path, std::as_bytes(std::span(bytes->constData(), static_cast<std::size_t>(bytes->size()))), replaced);
  if (!written) return failed(written.error());
  progress.tell(1.0);
  return *written;
}

FileResult<ReplacedFile> writeFlatImage(FrozenComposite* composite, ColorMode mode, Format fileType,
                                        const QString& path, const MetalContext& context,
                                        const Progress& progress, const ImageMetadata* metadata,
                                        std::optional<FileIdentity> replaced) {
  const auto failed = [&](QString reason) {
    return tl::unexpected(
        FileError{DocumentIOError::exportFailed, std::move(reason), progress.isCancelled()});
  };
  if (composite == nullptr) return failed(QStringLiteral("The image has no pixels to write."));
  if (!pixelsFitInMemory(composite->bytesToFinish())) return failed(notEnoughMemoryToWrite());
  const Surface* const picture = composite->surface([&] { return progress.isCancelled(); });
  if (picture == nullptr) return failed(cancelled().value());
  return writeFlatImage(*picture, mode, fileType, path, context, progress, metadata, replaced);
}

}  // namespace orvanel
