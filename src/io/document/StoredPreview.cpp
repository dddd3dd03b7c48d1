#include "io/document/StoredPreview.h"

#include <QBuffer>
#include <QFile>
#include <QImageReader>
#include <algorithm>

#include "io/archive/ZipReader.h"

namespace orvanel {
namespace {

Described<QImage> decoded(const ByteBuffer& png) {
  QByteArray bytes =
      QByteArray::fromRawData(reinterpret_cast<const char*>(png.data()), static_cast<qsizetype>(png.size()));
  QBuffer source(&bytes);
  source.open(QIODevice::ReadOnly);
  QImageReader reader(&source, "png");
  reader.setDecideFormatFromContent(false);
  // Told by the header alone, before any memory is spent on pixels.
  const QSize size = reader.size();
  if (size.isEmpty()) return because(QStringLiteral("The preview is not a PNG image."));
  if (size.width() > maximumPreviewSide || size.height() > maximumPreviewSide) {
    return because(QStringLiteral("The preview is too large."));
  }
  QImage image;
  if (!reader.read(&image)) return because(QStringLiteral("The preview is damaged."));
  return image;
}

Described<QImage> previewIn(const Described<ZipReader>& archive) {
  if (!archive) return because(archive.error());
  return readStoredPreview(*archive);
}

}  // namespace

Described<QImage> readStoredPreview(const ZipReader& archive) {
  const auto entry = archive.find(previewEntryPath);
  if (!entry) return because(QStringLiteral("The document has no preview."));
  const auto png = archive.readAll(*entry, maximumPreviewBytes);
  if (!png) return because(png.error());
  return decoded(*png);
}

Described<QImage> readStoredPreview(const QString& path) {
  return previewIn(ZipReader::open(QFile::encodeName(path).toStdString()));
}

Described<QImage> readStoredPreview(std::span<const std::byte> archive) {
  return previewIn(ZipReader::openBytes(archive));
}

QImage fittedPreview(const QImage& preview, int side) {
  if (preview.width() <= side && preview.height() <= side) return preview;
  // Beside a very long side, the other would round to nothing.
  const QSize size = preview.size().scaled(side, side, Qt::KeepAspectRatio).expandedTo({1, 1});
  return preview.convertToFormat(QImage::Format_ARGB32_Premultiplied)
      .scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

}  // namespace orvanel
