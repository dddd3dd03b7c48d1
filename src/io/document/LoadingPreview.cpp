#include "io/document/LoadingPreview.h"

#include <QFile>

#include "io/document/DocumentIO.h"
#include "io/document/DocumentReader.h"
#include "io/document/StoredPreview.h"
#include "io/image/ImageDecoder.h"

namespace orvanel {
namespace {

LoadingPreview previewOfDocument(const QString& path, const Progress& progress) {
  const auto archive = ZipReader::open(QFile::encodeName(path).toStdString());
  if (!archive || progress.isCancelled()) return {};
  const auto manifest = readManifest(*archive, progress);
  if (!manifest) return {};
  return {QSize(static_cast<int>(manifest->document.canvasWidth),
                static_cast<int>(manifest->document.canvasHeight)),
          readStoredPreview(*archive).value_or(QImage())};
}

}  // namespace

LoadingPreview readLoadingPreview(const QString& path, int side, const Progress& progress) {
  if (DocumentIO::isDocumentPath(path)) return previewOfDocument(path, progress);
  ImageGlimpse glimpse = glimpseImage(path, side, progress);
  return {glimpse.size, std::move(glimpse.picture)};
}

}  // namespace orvanel
