#include "io/image/ImageDecoder.h"

#include <QBuffer>
#include <QColorSpace>
#include <QColorTransform>
#include <QImageReader>
#include <QRgba64>
#include <QTransform>
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <memory>
#include <mutex>
#include <vector>

#include "io/files/FileName.h"
#include "io/files/InputFile.h"
#include "io/image/HeifDecoder.h"
#include "io/image/ImageEnd.h"
#include "io/image/ImageHeader.h"
#include "io/image/ImageLimits.h"
#include "io/image/LibraryMessages.h"
#include "io/image/PictureCount.h"
#include "io/image/SvgSource.h"
#include "raster/ColorMode.h"
#include "raster/MemoryBudget.h"

namespace orvanel {
namespace {

constexpr int largestImageMebibytes = maximumCanvasSide / 1024 * (maximumCanvasSide / 1024) * 8;

/// Beyond this a reduced picture isn't made. JPEG is decoded at a fraction of its size.
constexpr qint64 mostReducedPixels = qint64{40} << 20;
constexpr qint64 mostReducedBytes = qint64{64} << 20;

/// JPEG images up to this size are reduced in less time than an eye notices.
constexpr qint64 mostQuicklyReducedPixels = qint64{16} << 20;

/// The reader's default limit is far below the largest canvas.
void raiseReaderLimit() {
  static std::once_flag once;
  std::call_once(once, [] { QImageReader::setAllocationLimit(largestImageMebibytes); });
}

/// One-bit images are usually black and white, but their palette may hold any two colours.
bool holdsOnlyGreys(const QList<QRgb>& palette) {
  return std::ranges::all_of(palette, qIsGray);
}

ImageTraits traitsOf(const QImage& image) {
  constexpr ImageTraits grey{.isMonochrome = true, .bitsPerComponent = 8, .bitsPerPixel = 8};
  switch (image.format()) {
    case QImage::Format_Mono:
    case QImage::Format_MonoLSB:
      if (holdsOnlyGreys(image.colorTable())) return grey;
      break;
    case QImage::Format_Grayscale8:
      return grey;
    case QImage::Format_Grayscale16:
      return {.isMonochrome = true, .bitsPerComponent = 16, .bitsPerPixel = 16};
    default:
      break;
  }
  const QPixelFormat format = image.pixelFormat();
  // Palettes have 8 bits a component, whatever the depth of their indexes. A palette of more than two colours
  // counts as colour even if all of them are grey: grey images have formats of their own.
  const bool deep = format.colorModel() != QPixelFormat::Indexed && format.redSize() > 8;
  return {.isMonochrome = false, .bitsPerComponent = deep ? 16 : 8, .bitsPerPixel = deep ? 64 : 32};
}

/// `count` evenly spaced greys from black to white, converted with `toDisplay` to 8 bits.
std::vector<uchar> greysOnDisplay(const QColorTransform& toDisplay, int count) {
  constexpr int white = 0xFFFF;
  std::vector<uchar> greys(static_cast<std::size_t>(count));
  for (int i = 0; i < count; ++i) {
    const auto value = static_cast<quint16>(std::int64_t{i} * white / (count - 1));
    greys[static_cast<std::size_t>(i)] =
        toDisplay.map(QRgba64::fromRgba64(value, value, value, white)).green8();
  }
  return greys;
}

template <typename Value>
QImage greyOnDisplay(const QImage& image, const QColorTransform& toDisplay) {
  const std::vector<uchar> greys = greysOnDisplay(toDisplay, std::numeric_limits<Value>::max() + 1);
  QImage result(image.size(), QImage::Format_Grayscale8);
  if (result.isNull()) return result;
  for (int y = 0; y < image.height(); ++y) {
    const auto* in = reinterpret_cast<const Value*>(image.constScanLine(y));
    uchar* out = result.scanLine(y);
    for (int x = 0; x < image.width(); ++x) out[x] = greys[in[x]];
  }
  return result;
}

/// Converts to sRGB. The platform reduces deep grey to 8 bits before converting and uses coarse tables; for
/// grey, a table of every value is exact.
void convertToDisplay(QImage& image) {
  const QColorSpace profile = image.colorSpace();
  const QColorSpace display(QColorSpace::SRgb);
  if (!profile.isValid() || profile == display) return;
  if (image.format() == QImage::Format_Grayscale8) {
    image = greyOnDisplay<std::uint8_t>(image, profile.transformationToColorSpace(display));
  } else if (image.format() == QImage::Format_Grayscale16) {
    image = greyOnDisplay<std::uint16_t>(image, profile.transformationToColorSpace(display));
  } else {
    image.convertToColorSpace(display);
  }
}

/// Converts to 8 bits a channel in sRGB with straight alpha.
Described<DecodedImage> onDisplay(QImage image, const ImageTraits& traits) {
  const QImage::Format wanted = image.hasAlphaChannel() ? QImage::Format_ARGB32 : QImage::Format_RGB32;
  convertToDisplay(image);
  image.convertTo(wanted);
  if (image.isNull()) return because(notEnoughMemory());
  return DecodedImage{.image = std::move(image), .traits = traits};
}

bool isHeif(const QString& path) {
  return hasExtension(path, u"heic") || hasExtension(path, u"heif");
}

/// The file itself, or for a drawing its sanitized source.
Described<std::unique_ptr<QIODevice>> harmlessSource(std::unique_ptr<InputFile> file) {
  file->seek(0);
  const QByteArray format = QImageReader(file.get()).format();
  file->seek(0);
  if (format != "svg" && format != "svgz") return file;
  const auto drawing = selfContainedSvg(*file);
  if (!drawing) return because(drawing.error());
  auto source = std::make_unique<QBuffer>();
  source->setData(*drawing);
  source->open(QIODevice::ReadOnly);
  return source;
}

/// The size that fits into a square of this side; never larger than `size`.
QSize reducedSize(const QSize& size, int side) {
  return size.width() <= side && size.height() <= side
             ? size
             : size.scaled(side, side, Qt::KeepAspectRatio).expandedTo({1, 1});
}

bool swapsSides(QImageIOHandler::Transformations transformation) {
  return transformation.testFlag(QImageIOHandler::TransformationRotate90);
}

/// Turns a picture as the reader turns its image.
QImage turned(QImage picture, QImageIOHandler::Transformations transformation) {
  picture = picture.mirrored(transformation.testFlag(QImageIOHandler::TransformationMirror),
                             transformation.testFlag(QImageIOHandler::TransformationFlip));
  return swapsSides(transformation) ? picture.transformed(QTransform().rotate(90)) : picture;
}

/// Cameras put some pictures into a frame of other proportions, with bars that the image doesn't have.
bool hasProportionsOf(const QSize& picture, const QSize& image) {
  constexpr double tolerance = 0.02;
  const double ratio = static_cast<double>(picture.width()) * image.height() /
                       (static_cast<double>(picture.height()) * image.width());
  return std::abs(ratio - 1.0) <= tolerance;
}

QString reasonOf(const QImageReader& reader, QIODevice& file, const LibraryMessages& messages) {
  if (endsTooEarly(file)) return QStringLiteral("The file ends before the image does.");
  if (reader.error() == QImageReader::InvalidDataError || messages.reportDamage()) {
    return QStringLiteral("The image is damaged.");
  }
  return QStringLiteral("%1.").arg(reader.errorString());
}

}  // namespace

Described<DecodedImage> decodeImageFile(const QString& path, const Progress& progress) {
  constexpr double headerShare = 0.05;
  constexpr double decodedShare = 0.9;
  raiseReaderLimit();
  LibraryMessages messages;
  auto opened = InputFile::open(path, progress);
  if (!opened) return because(opened.error());
  const std::optional<FileIdentity> identity = (*opened)->identity();
  // Some decoders read the whole file into memory, and a sparse file can be far larger than its disk.
  if (!pixelsFitInMemory(static_cast<std::uint64_t>((*opened)->size()))) return because(notEnoughMemory());
  if (isTiff(**opened)) LibraryMessages::catchTiff();
  const auto file = harmlessSource(std::move(*opened));
  if (!file) return because(file.error());
  QImageReader reader(file->get());
  reader.setDecideFormatFromContent(true);
  reader.setAutoTransform(true);
  if (!reader.canRead() && isHeif(path)) {
    (*file)->seek(0);
    auto heif = decodeHeif((*file)->readAll());
    if (progress.isCancelled()) return cancelled();
    if (!heif) return because(heif.error());
    progress.tell(decodedShare);
    ImageTraits traits = traitsOf(heif->image);
    traits.bitsPerComponent = heif->bitsPerComponent;
    auto decoded = onDisplay(std::move(heif->image), traits);
    if (!decoded) return decoded;
    decoded->identity = identity;
    decoded->metadata = ImageMetadata::read(path, **file, ImageMetadata::Orientation::applied);
    return decoded;
  }
  if (const auto judged = judgeImageSize(reader.size()); !judged) return because(judged.error());
  progress.tell(headerShare);
  QImage image = reader.read();
  if (progress.isCancelled()) return cancelled();
  if (image.isNull()) return because(reasonOf(reader, **file, messages));
  // Some files don't announce their size, or announce a wrong one.
  if (const auto judged = judgeImageSize(image.size()); !judged) return because(judged.error());
  progress.tell(decodedShare);
  const bool isIncomplete = messages.reportDamage() || endsTooEarly(**file);
  if (isPngForDisplay(**file)) image.setColorSpace(QColorSpace::SRgb);
  const ImageTraits traits = traitsOfHeader(**file).value_or(traitsOf(image));
  auto decoded = onDisplay(std::move(image), traits);
  if (!decoded) return decoded;
  decoded->identity = identity;
  decoded->isIncomplete = isIncomplete;
  decoded->pictureCount = pictureCount(**file);
  decoded->metadata = ImageMetadata::read(path, **file,
                                          reader.transformation() == QImageIOHandler::TransformationNone
                                              ? ImageMetadata::Orientation::ignored
                                              : ImageMetadata::Orientation::applied);
  return decoded;
}

QImage decodeReduced(const QString& path, int side, const Progress& progress) {
  raiseReaderLimit();
  const LibraryMessages messages;
  auto opened = InputFile::open(path, progress);
  if (!opened || !pixelsFitInMemory(static_cast<std::uint64_t>((*opened)->size()))) return {};
  if (isTiff(**opened)) LibraryMessages::catchTiff();
  const bool isSmallFile = (*opened)->size() <= mostReducedBytes;
  const auto file = harmlessSource(std::move(*opened));
  if (!file) return {};
  QImageReader reader(file->get());
  reader.setDecideFormatFromContent(true);
  reader.setAutoTransform(true);
  QImage image;
  if (reader.canRead()) {
    const QSize size = reader.size();
    const qint64 pixels = qint64{size.width()} * size.height();
    if (size.isEmpty() || !judgeImageSize(size)) return {};
    if (pixels > mostReducedPixels && reader.format() != "jpeg") return {};
    reader.setScaledSize(reducedSize(size, side));
    image = reader.read();
  } else if (isHeif(path) && isSmallFile) {
    (*file)->seek(0);
    if (auto heif = decodeHeif((*file)->readAll())) image = std::move(heif->image);
  }
  if (image.isNull() || progress.isCancelled()) return {};
  image = image.scaled(reducedSize(image.size(), side), Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
  convertToDisplay(image);
  return image.convertToFormat(QImage::Format_ARGB32_Premultiplied);
}

ImageGlimpse glimpseImage(const QString& path, int side, const Progress& progress) {
  raiseReaderLimit();
  const LibraryMessages messages;
  auto opened = InputFile::open(path, progress);
  // Some decoders read the whole file.
  if (!opened || !pixelsFitInMemory(static_cast<std::uint64_t>((*opened)->size()))) return {};
  const bool isTiffFile = isTiff(**opened);
  if (isTiffFile) LibraryMessages::catchTiff();
  const auto file = harmlessSource(std::move(*opened));
  if (!file) return {};
  QImageReader reader(file->get());
  reader.setDecideFormatFromContent(true);
  reader.setAutoTransform(true);
  const QSize stored = reader.size();
  if (stored.isEmpty() || !judgeImageSize(stored)) return {};
  ImageGlimpse glimpse;
  glimpse.size = swapsSides(reader.transformation()) ? stored.transposed() : stored;
  const bool isJpeg = reader.format() == "jpeg";
  const bool isQuick = isJpeg && qint64{stored.width()} * stored.height() <= mostQuicklyReducedPixels;
  if (isQuick) {
    reader.setScaledSize(reducedSize(stored, side));
    glimpse.picture = reader.read();
  } else if (isJpeg || isTiffFile) {
    // Where cameras write thumbnails.
    const QImage thumbnail = ImageMetadata::thumbnailIn(path);
    if (!thumbnail.isNull() && hasProportionsOf(thumbnail.size(), stored)) {
      glimpse.picture = turned(thumbnail, reader.transformation());
    }
  }
  if (glimpse.picture.isNull()) return glimpse;
  convertToDisplay(glimpse.picture);
  glimpse.picture.convertTo(QImage::Format_ARGB32_Premultiplied);
  return glimpse;
}

}  // namespace orvanel
