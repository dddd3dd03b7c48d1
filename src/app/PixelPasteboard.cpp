#include "app/PixelPasteboard.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QImage>
#include <QRegularExpression>
#include <QTemporaryFile>
#include <QUuid>
#include <algorithm>
#include <cmath>
#include <functional>
#include <memory>
#include <optional>
#include <utility>

#include "app/PixelMimeData.h"
#include "io/image/FlatImage.h"
#include "look/TranslatedSentence.h"
#include "raster/MemoryBudget.h"

namespace orvanel {
namespace {

/// The mode whose layers have this format.
ColorMode modeOfFormat(PixelFormat format) {
  const auto* found = std::ranges::find(allColorModes, format, layerPixelFormat);
  return found != allColorModes.end() ? *found : ColorMode::rgb8;
}

/// Copied pixels as an image for other programs; empty if there isn't the memory for it.
QByteArray pngOf(const PixelClipboard& copied, const MetalContext& context) {
  const auto width = static_cast<int>(copied.width);
  const auto height = static_cast<int>(copied.height);
  // The pixels, the image in 8 bits, the encoder's copy of it, and encoded bytes in a growing buffer.
  constexpr std::uint64_t imageBytes = 4 + 4 + 2 * 4;
  const std::uint64_t pixelBytes = static_cast<std::uint64_t>(bytesPerPixel(copied.pixelFormat)) + imageBytes;
  if (!pixelsFitInMemory(static_cast<std::uint64_t>(width) * static_cast<std::uint64_t>(height) *
                         pixelBytes)) {
    return {};
  }
  const Texture pixels = context.makeTexture(copied.pixelFormat, width, height);
  const Texture image = context.makeTexture(PixelFormat::rgba8Unorm, width, height);
  if (pixels == nullptr || image == nullptr) return {};
  copied.snapshot->restore(*pixels, context);
  context.convertTexture(*pixels, *image, modeOfFormat(copied.pixelFormat), ColorMode::rgb8);
  return exportImage(*image, ColorMode::rgb8, Document::ImageFileFormat::png, context).value_or(QByteArray());
}

/// The types under which the data holds encoded images, those without losses first.
QStringList imageTypesIn(const QMimeData& data) {
  QStringList types = data.formats().filter(QRegularExpression(QStringLiteral("^image/")));
  const auto isLossless = [](const QString& type) {
    return type == QLatin1String("image/png") || type == QLatin1String("image/tiff") ||
           type == QLatin1String("image/bmp");
  };
  std::stable_partition(types.begin(), types.end(), isLossless);
  return types;
}

bool holdsImage(const QMimeData& data) {
  return data.hasImage() || !imageTypesIn(data).isEmpty();
}

/// Decodes an image through a file, so that it is read with the same care as one on disk.
Described<FlatImage> decoded(const std::function<bool(QTemporaryFile&)>& write, const MetalContext& context) {
  QTemporaryFile file;
  if (!file.open() || !write(file) || !file.flush()) {
    return because(PixelPasteboard::tr("The image in the clipboard can't be read."));
  }
  FileResult<FlatImage> image = readFlatImage(file.fileName(), context);
  if (!image) return because(look::translatedSentence(image.error().message));
  return *std::move(image);
}

/// The first of the data's images that can be read; what is wrong with the first one if none can.
Described<FlatImage> imageIn(const QMimeData& data, const MetalContext& context) {
  std::optional<Described<FlatImage>> failed;
  for (const QString& type : imageTypesIn(data)) {
    const auto write = [&](QTemporaryFile& file) { return file.write(data.data(type)) > 0; };
    Described<FlatImage> image = decoded(write, context);
    if (image) return image;
    if (!failed) failed = std::move(image);
  }
  const auto write = [&](QTemporaryFile& file) {
    return qvariant_cast<QImage>(data.imageData()).save(&file, "PNG");
  };
  Described<FlatImage> image = decoded(write, context);
  return image || !failed ? image : *std::move(failed);
}

/// Where a length begins that is centred on `centre`, but covers as much of the canvas as it can.
std::int64_t originOf(double centre, std::int64_t length, std::int64_t canvas) {
  const auto wished = static_cast<std::int64_t>(std::floor(centre - static_cast<double>(length) / 2.0));
  const std::int64_t opposite = canvas - length;
  return std::clamp(wished, std::min<std::int64_t>(opposite, 0), std::max<std::int64_t>(opposite, 0));
}

}  // namespace

PixelPasteboard::PixelPasteboard(AppState& appState, Dialogs& dialogs, QObject* parent)
    : QObject(parent), appState_(appState), dialogs_(dialogs) {
  connect(QGuiApplication::clipboard(), &QClipboard::dataChanged, this, [this] {
    desktop_ = DesktopContents::unknown;
    if (onChanged) onChanged();
  });
}

void PixelPasteboard::copy(const DocumentPtr& document) {
  offer(document->copyPixels());
}

void PixelPasteboard::cut(const DocumentPtr& document) {
  offer(document->cutPixels());
}

void PixelPasteboard::offer(const std::optional<PixelClipboard>& copied) {
  if (!copied) return;
  appState_.pixelClipboard = copied;
  identity_ = QUuid::createUuid().toByteArray();
  auto encode = [copied = *copied, &context = appState_.metalContext] { return pngOf(copied, context); };
  auto data = std::make_unique<PixelMimeData>(identity_, std::move(encode));
  QGuiApplication::clipboard()->setMimeData(data.release());
}

bool PixelPasteboard::holdsOurPixels(const QMimeData& data) const {
  // Another instance of the program offers pixels under the same type.
  return !identity_.isEmpty() && data.data(QLatin1String(PixelMimeData::pixelType)) == identity_;
}

bool PixelPasteboard::canPaste() const {
  return appState_.pixelClipboard.value().has_value() || desktop_ != DesktopContents::nothing;
}

void PixelPasteboard::look() {
  if (desktop_ != DesktopContents::unknown) return;
  const QMimeData* data = QGuiApplication::clipboard()->mimeData();
  desktop_ = data != nullptr && holdsImage(*data) ? DesktopContents::image : DesktopContents::nothing;
}

void PixelPasteboard::paste(const DocumentPtr& document, QPointF viewCentre) {
  const QMimeData* data = QGuiApplication::clipboard()->mimeData();
  if (data == nullptr || holdsOurPixels(*data) || !holdsImage(*data)) {
    if (const auto& copied = appState_.pixelClipboard.value()) document->pastePixels(*copied);
    return;
  }
  const Described<FlatImage> image = imageIn(*data, appState_.metalContext);
  Described<PixelClipboard> pixels = image ? pixelsOf(*image->pixels) : because(image.error());
  if (!pixels) {
    dialogs_.showWarning(tr("Failed to Paste"), pixels.error());
    return;
  }
  pixels->originX = originOf(viewCentre.x(), pixels->width, document->canvasWidth.value());
  pixels->originY = originOf(viewCentre.y(), pixels->height, document->canvasHeight.value());
  // A refusal for want of memory has its own message.
  const bool isPasted = document->pastePixels(*pixels);
  if (isPasted && !image->warning.isEmpty()) {
    dialogs_.showWarning(tr("Pasted in Part"), look::translatedSentence(image->warning));
  }
}

Described<PixelClipboard> PixelPasteboard::pixelsOf(const Surface& image) const {
  auto snapshot = TextureSnapshot::capture(image, appState_.metalContext);
  if (snapshot == nullptr) return because(tr("There is not enough memory for this image."));
  return PixelClipboard{.snapshot = std::move(snapshot),
                        .width = image.width(),
                        .height = image.height(),
                        .pixelFormat = image.format()};
}

}  // namespace orvanel
