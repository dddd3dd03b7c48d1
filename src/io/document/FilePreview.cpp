#include "io/document/FilePreview.h"

#include "io/document/StoredPreview.h"
#include "io/files/FileName.h"
#include "io/image/ImageDecoder.h"

namespace orvanel {

QImage filePreview(const QString& path, int side, const Progress& progress) {
  if (!isDocumentName(path)) return decodeReduced(path, side, progress);
  const auto preview = readStoredPreview(path);
  return preview ? fittedPreview(*preview, side) : QImage();
}

}  // namespace orvanel
