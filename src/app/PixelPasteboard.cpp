#include "app/PixelPasteboard.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QImage>
#include <QTemporaryFile>
#include <QUuid>
#include <algorithm>
#include <cmath>
#include <memory>
#include <utility>

#include "app/PixelMimeData.h"
#include "io/image/FlatImage.h"

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
  const Texture pixels = context.makeTexture(copied.pixelFormat, width, height);
  const Texture image = context.makeTexture(PixelFormat::rgba8Unorm, width, height);
  if (pixels == nullptr || image == nullptr) return {};
  copied.snapshot->restore(*pixels, context);
  context.convertTexture(*pixels, *image, modeOfFormat(copied.pixelFormat), ColorMode::rgb8);
  return exportImage(*image, ColorMode::rgb8, Document::ImageFileFormat::png, context).value_or(QByteArray());
}

/// The type under which the data holds an encoded image, those without losses first; empty if none.
QString imageTypeIn(const QMimeData& data) {
  const QStringList formats = data.formats();
  for (const char* lossless : {"image/png", "image/tiff", "image/bmp"}) {
    if (formats.contains(QLatin1String(lossless))) return QLatin1String(lossless);
  }
  const auto encoded = std::ranges::find_if(
      formats, [](const QString& type) { return type.startsWith(QLatin1String("image/")); });
  return encoded != formats.end() ? *encoded : QString();
}

/// The file of an image in the clipboard, so that it is read with the same care as one on disk.
std::unique_ptr<QTemporaryFile> imageFile(const QMimeData& data) {
  auto file = std::make_unique<QTemporaryFile>();
  if (!file->open()) return nullptr;
  const QString type = imageTypeIn(data);
  const bool isWritten = type.isEmpty() ? qvariant_cast<QImage>(data.imageData()).save(file.get(), "PNG")
                                        : file->write(data.data(type)) > 0;
  return isWritten && file->flush() ? std::move(file) : nullptr;
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
  desktop_ = data != nullptr && data->hasImage() ? DesktopContents::image : DesktopContents::nothing;
}

void PixelPasteboard::paste(const DocumentPtr& document, QPointF viewCentre) {
  const QMimeData* data = QGuiApplication::clipboard()->mimeData();
  const bool isImage =
      data != nullptr && !holdsOurPixels(*data) && (data->hasImage() || !imageTypeIn(*data).isEmpty());
  if (!isImage) {
    if (const auto& copied = appState_.pixelClipboard.value()) document->pastePixels(*copied);
    return;
  }
  Described<PixelClipboard> image = readImage(*data);
  if (!image) {
    dialogs_.showWarning(QStringLiteral("Failed to Paste"), image.error());
    return;
  }
  image->originX = originOf(viewCentre.x(), image->width, document->canvasWidth.value());
  image->originY = originOf(viewCentre.y(), image->height, document->canvasHeight.value());
  document->pastePixels(*image);
}

Described<PixelClipboard> PixelPasteboard::readImage(const QMimeData& data) const {
  const std::unique_ptr<QTemporaryFile> file = imageFile(data);
  if (file == nullptr) return because(QStringLiteral("The image in the clipboard can't be read."));
  const FileResult<FlatImage> image = readFlatImage(file->fileName(), appState_.metalContext);
  if (!image) return because(image.error().message);
  if (!image->warning.isEmpty()) dialogs_.showWarning(QStringLiteral("Pasted in Part"), image->warning);
  const Surface& pixels = *image->pixels;
  auto snapshot = TextureSnapshot::capture(pixels, appState_.metalContext);
  if (snapshot == nullptr) return because(QStringLiteral("There is not enough memory for this image."));
  return PixelClipboard{.snapshot = std::move(snapshot),
                        .width = pixels.width(),
                        .height = pixels.height(),
                        .pixelFormat = pixels.format()};
}

}  // namespace orvanel
