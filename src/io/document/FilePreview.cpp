#include "io/document/FilePreview.h"

#include <QBuffer>
#include <QByteArray>
#include <QFile>
#include <QImageReader>

#include "io/archive/ZipReader.h"
#include "io/document/Preview.h"
#include "io/files/FileName.h"
#include "io/image/ImageDecoder.h"

namespace orvanel {
namespace {

/// The most bytes that an uncompressed preview takes, with room for the container.
constexpr std::uint64_t mostPreviewBytes = std::uint64_t{previewSide} * previewSide * 4 * 2;

QImage previewInDocument(const QString& path, int side) {
  const auto archive = ZipReader::open(QFile::encodeName(path).toStdString());
  if (!archive) return {};
  const auto entry = archive->find("preview.png");
  if (!entry) return {};
  const auto bytes = archive->readAll(*entry, mostPreviewBytes);
  if (!bytes) return {};
  QByteArray png = QByteArray::fromRawData(reinterpret_cast<const char*>(bytes->data()),
                                           static_cast<qsizetype>(bytes->size()));
  QBuffer buffer(&png);
  QImageReader reader(&buffer, "png");
  const QSize size = reader.size();
  if (size.isEmpty() || size.width() > previewSide || size.height() > previewSide) return {};
  if (size.width() > side || size.height() > side) {
    reader.setScaledSize(size.scaled(side, side, Qt::KeepAspectRatio).expandedTo({1, 1}));
  }
  return reader.read();
}

}  // namespace

QImage filePreview(const QString& path, int side, const Progress& progress) {
  return isDocumentName(path) ? previewInDocument(path, side) : decodeReduced(path, side, progress);
}

}  // namespace orvanel
